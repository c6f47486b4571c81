#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "os/api/path_map.h"
#include "os/api/shell.h"
#include "os/posix/handle.h"
#include "os/posix/trash.h"
#include "os/posix/tree_delete.h"

namespace nvk::os {

namespace {

constexpr DWORD kCallNotImplemented = 120;

// Deletes a file, a link, or a folder with all it holds; a link inside is
// removed, never followed.
DWORD Delete(const std::string& path) {
    struct stat info;
    if (lstat(path.c_str(), &info) != 0) {
        return posix::ErrorFromErrno(errno);
    }
    if (!S_ISDIR(info.st_mode)) {
        return unlink(path.c_str()) == 0 ? 0 : posix::ErrorFromErrno(errno);
    }
    const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) {
        return posix::ErrorFromErrno(errno);
    }
    const bool emptied = posix::EmptyOpenFolder(folder);
    const int error = errno;
    close(folder);
    if (!emptied) {
        return posix::ErrorFromErrno(error);
    }
    return rmdir(path.c_str()) == 0 ? 0 : posix::ErrorFromErrno(errno);
}

}  // namespace

int SHFileOperationA(SHFILEOPSTRUCTA* operation) {
    if (operation == nullptr || operation->pFrom == nullptr) {
        return static_cast<int>(ERROR_INVALID_PARAMETER);
    }
    if (operation->wFunc != FO_DELETE) {
        return static_cast<int>(kCallNotImplemented);
    }
    operation->fAnyOperationsAborted = FALSE;
    for (const char* name = operation->pFrom; *name != '\0'; name += std::strlen(name) + 1) {
        const std::string path = ToNativePath(name);
        if (path.empty()) {
            return static_cast<int>(ERROR_PATH_NOT_FOUND);
        }
        const DWORD error =
            (operation->fFlags & FOF_ALLOWUNDO) != 0 ? posix::MoveToTrash(path) : Delete(path);
        if (error != 0) {
            return static_cast<int>(error);
        }
    }
    return 0;
}

}  // namespace nvk::os
