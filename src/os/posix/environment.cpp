#include "os/api/environment.h"

#include <strings.h>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <string>

#include "os/posix/environment.h"
#include "os/posix/handle.h"

extern char** environ;

namespace nvk::os {

namespace {

using posix::SetErrorCode;

// Serialises our own reads and changes of the environment.
std::mutex& EnvironmentLock() {
    static std::mutex lock;
    return lock;
}

// Names are found regardless of case, as on Windows, an exact match first.
// Returns the name as the environment spells it.
std::optional<std::string> FindName(std::string_view name) {
    if (name.empty() || name.find('=') != std::string_view::npos) {
        return std::nullopt;
    }
    std::string exact(name);
    if (std::getenv(exact.c_str()) != nullptr) {
        return exact;
    }
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const char* equals = std::strchr(*entry, '=');
        if (equals != nullptr && static_cast<std::size_t>(equals - *entry) == name.size() &&
            strncasecmp(*entry, exact.c_str(), name.size()) == 0) {
            return std::string(*entry, name.size());
        }
    }
    return std::nullopt;
}

std::optional<std::string> Lookup(std::string_view name) {
    std::optional<std::string> found = FindName(name);
    if (!found) {
        return std::nullopt;
    }
    return std::string(std::getenv(found->c_str()));
}

}  // namespace

namespace posix {

std::string EnvironmentValue(const char* name) {
    std::lock_guard guard(EnvironmentLock());
    // A program that runs with more privileges than its caller takes no
    // folder or setting from the caller's environment.
    const char* value = secure_getenv(name);
    return value != nullptr ? value : std::string();
}

}  // namespace posix

DWORD GetEnvironmentVariableA(LPCSTR name, LPSTR buffer, DWORD size) {
    std::optional<std::string> value;
    {
        std::lock_guard guard(EnvironmentLock());
        value = name != nullptr ? Lookup(name) : std::nullopt;
    }
    if (!value) {
        SetErrorCode(ERROR_ENVVAR_NOT_FOUND);
        return 0;
    }
    SetErrorCode(ERROR_SUCCESS);
    if (buffer == nullptr || value->size() >= size) {
        return static_cast<DWORD>(value->size() + 1);
    }
    std::memcpy(buffer, value->c_str(), value->size() + 1);
    return static_cast<DWORD>(value->size());
}

BOOL SetEnvironmentVariableA(LPCSTR name, LPCSTR value) {
    if (name == nullptr || name[0] == '\0' || std::strchr(name, '=') != nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::lock_guard guard(EnvironmentLock());
    std::string spelled = FindName(name).value_or(name);
    int result = value == nullptr ? unsetenv(spelled.c_str()) : setenv(spelled.c_str(), value, 1);
    if (result != 0) {
        SetErrorCode(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    return TRUE;
}

DWORD ExpandEnvironmentStringsA(LPCSTR source, LPSTR destination, DWORD size) {
    if (source == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    std::string out;
    std::string_view rest(source);
    {
        std::lock_guard guard(EnvironmentLock());
        while (!rest.empty()) {
            std::size_t open = rest.find('%');
            out += rest.substr(0, open);
            if (open == std::string_view::npos) {
                break;
            }
            rest.remove_prefix(open);
            std::size_t close = rest.find('%', 1);
            if (close == std::string_view::npos) {
                out += rest;  // an unfinished name stays as written
                break;
            }
            std::optional<std::string> value = Lookup(rest.substr(1, close - 1));
            out += value ? std::string_view(*value) : rest.substr(0, close + 1);
            rest.remove_prefix(close + 1);
        }
    }
    auto needed = static_cast<DWORD>(out.size() + 1);
    if (destination != nullptr && needed <= size) {
        std::memcpy(destination, out.c_str(), needed);
    }
    SetErrorCode(ERROR_SUCCESS);
    return needed;
}

}  // namespace nvk::os
