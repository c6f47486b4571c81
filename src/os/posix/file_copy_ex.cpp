#include "os/api/file_copy_ex.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "os/api/file_copy.h"
#include "os/api/path_map.h"
#include "os/posix/fs_support.h"
#include "os/posix/handle.h"

namespace nvk::os {

BOOL CopyFileExA(LPCSTR existingName, LPCSTR newName, LPVOID progressRoutine, LPVOID /*data*/,
                 BOOL* cancel, DWORD copyFlags) {
    if (progressRoutine != nullptr || cancel != nullptr) {
        posix::SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const BOOL failIfExists = (copyFlags & COPY_FILE_FAIL_IF_EXISTS) != 0 ? TRUE : FALSE;
    std::string from = ToNativePath(existingName);
    struct stat info;
    if ((copyFlags & COPY_FILE_COPY_SYMLINK) == 0 || from.empty() ||
        lstat(from.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) {
        return CopyFileA(existingName, newName, failIfExists);
    }
    std::string to = ToNativePath(newName);
    if (to.empty()) {
        posix::SetUnmappedError(newName);
        return FALSE;
    }
    std::vector<char> target(static_cast<std::size_t>(info.st_size) + 1);
    ssize_t length = readlink(from.c_str(), target.data(), target.size());
    if (length < 0 || static_cast<std::size_t>(length) >= target.size()) {
        posix::SetPathError(length < 0 ? errno : EIO, from);
        return FALSE;
    }
    std::string link(target.data(), static_cast<std::size_t>(length));
    struct stat existing;
    if (lstat(to.c_str(), &existing) == 0) {
        if (failIfExists || S_ISDIR(existing.st_mode)) {
            posix::SetErrorCode(failIfExists ? ERROR_FILE_EXISTS : ERROR_ACCESS_DENIED);
            return FALSE;
        }
        if (unlink(to.c_str()) != 0) {
            posix::SetPathError(errno, to);
            return FALSE;
        }
    }
    if (symlink(link.c_str(), to.c_str()) != 0) {
        posix::SetPathError(errno, to);
        return FALSE;
    }
    return TRUE;
}

}  // namespace nvk::os
