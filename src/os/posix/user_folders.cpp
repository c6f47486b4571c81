#include "os/posix/user_folders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include "os/posix/environment.h"
#include "os/posix/handle.h"

namespace nvk::os::posix {

std::string HomeFolder() {
    if (std::string home = EnvironmentValue("HOME"); !home.empty() && home[0] == '/') {
        return home;
    }
    std::vector<char> scratch(4096);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, scratch.data(), scratch.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr && found->pw_dir[0] == '/') {
        return found->pw_dir;
    }
    return {};
}

bool PrivateFolder(const std::string& path, Others others) {
    if (path.empty() || path[0] != '/') {
        SetErrorCode(ERROR_PATH_NOT_FOUND);
        return false;
    }
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        mkdir(path.substr(0, slash).c_str(), 0700);
    }
    if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
        SetErrorFromErrno(errno);
        return false;
    }
    struct stat info;
    if (lstat(path.c_str(), &info) != 0) {
        SetErrorFromErrno(errno);
        return false;
    }
    const mode_t forbidden = others == Others::NoAccess ? 077 : 022;
    if (!S_ISDIR(info.st_mode) || info.st_uid != geteuid() || (info.st_mode & forbidden) != 0) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return false;
    }
    return true;
}

}  // namespace nvk::os::posix
