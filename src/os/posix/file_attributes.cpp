#include "os/api/file_attributes.h"

#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "os/api/path_map.h"
#include "os/posix/fs_support.h"
#include "os/posix/names.h"

namespace nvk::os {

namespace {

// The entry a path names: what a link points to, or the link itself when it
// points nowhere; found without regard to case when the exact name is
// missing.
bool StatEntry(std::string& path, struct stat& info) {
    return stat(path.c_str(), &info) == 0 || lstat(path.c_str(), &info) == 0 ||
           (posix::RetryWithoutCase(errno, path) && StatEntry(path, info));
}

}  // namespace

DWORD GetFileAttributesA(LPCSTR fileName) {
    std::string path = ToNativePath(fileName);
    if (path.empty()) {
        posix::SetUnmappedError(fileName);
        return INVALID_FILE_ATTRIBUTES;
    }
    struct stat info;
    if (lstat(path.c_str(), &info) != 0 &&
        (!posix::RetryWithoutCase(errno, path) || lstat(path.c_str(), &info) != 0)) {
        posix::SetPathError(errno, path);
        return INVALID_FILE_ATTRIBUTES;
    }
    const bool link = S_ISLNK(info.st_mode);
    struct stat target;
    const mode_t mode = link && stat(path.c_str(), &target) == 0 ? target.st_mode : info.st_mode;
    return posix::AttributesOf(mode, path.substr(path.find_last_of('/') + 1), link);
}

BOOL SetFileAttributesA(LPCSTR fileName, DWORD attributes) {
    std::string path = ToNativePath(fileName);
    if (path.empty()) {
        posix::SetUnmappedError(fileName);
        return FALSE;
    }
    struct stat info;
    if (!StatEntry(path, info)) {
        posix::SetPathError(errno, path);
        return FALSE;
    }
    mode_t mode = info.st_mode & 07777;
    mode = (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? mode & ~mode_t{0222} : mode | S_IWUSR;
    if (mode != (info.st_mode & 07777) && chmod(path.c_str(), mode) != 0) {
        posix::SetPathError(errno, path);
        return FALSE;
    }
    return TRUE;
}

}  // namespace nvk::os
