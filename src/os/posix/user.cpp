#include "os/api/user.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "os/posix/environment.h"
#include "os/posix/handle.h"

namespace nvk::os {

namespace {

// The name of the effective user in the account database, or the login
// name the environment gives when the database has no entry.
std::string UserName() {
    std::vector<char> scratch(4096);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, scratch.data(), scratch.size(), &found) == 0 &&
        found != nullptr && found->pw_name != nullptr) {
        return found->pw_name;
    }
    for (const char* variable : {"USER", "LOGNAME"}) {
        if (std::string value = posix::EnvironmentValue(variable); !value.empty()) {
            return value;
        }
    }
    return std::string();
}

}  // namespace

BOOL GetUserNameA(LPSTR buffer, LPDWORD size) {
    if (size == nullptr) {
        posix::SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const std::string name = UserName();
    if (name.empty()) {
        posix::SetErrorCode(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    const auto needed = static_cast<DWORD>(name.size() + 1);
    if (buffer == nullptr || *size < needed) {
        *size = needed;
        posix::SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memcpy(buffer, name.c_str(), needed);
    *size = needed;
    posix::SetErrorCode(ERROR_SUCCESS);
    return TRUE;
}

}  // namespace nvk::os
