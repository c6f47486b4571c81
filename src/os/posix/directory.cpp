#include "os/api/directory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "os/api/path_map.h"
#include "os/posix/fs_support.h"
#include "os/posix/full_path.h"
#include "os/posix/handle.h"
#include "os/posix/names.h"
#include "os/posix/system_drive_map.h"

namespace nvk::os {

using posix::SetErrorCode;
using posix::SetPathError;

BOOL CreateDirectoryA(LPCSTR pathName, LPSECURITY_ATTRIBUTES /*attributes*/) {
    std::string path = ToNativePath(pathName);
    if (path.empty()) {
        posix::SetUnmappedError(pathName);
        return FALSE;
    }
    // A folder whose name differs only in case is the one meant.
    posix::ResolveCase(path);
    if (mkdir(path.c_str(), 0777) != 0) {
        int error = errno;
        if (error == EEXIST) {
            SetErrorCode(ERROR_ALREADY_EXISTS);
        } else if (error == ENOENT) {
            SetErrorCode(ERROR_PATH_NOT_FOUND);
        } else {
            SetPathError(error, path);
        }
        return FALSE;
    }
    return TRUE;
}

BOOL RemoveDirectoryA(LPCSTR pathName) {
    std::string path = ToNativePath(pathName);
    if (path.empty()) {
        posix::SetUnmappedError(pathName);
        return FALSE;
    }
    if (rmdir(path.c_str()) != 0 &&
        (!posix::RetryWithoutCase(errno, path) || rmdir(path.c_str()) != 0)) {
        int error = errno;
        if (error == ENOTDIR) {
            struct stat info;
            // A file of that name, or a missing folder on the way to it.
            SetErrorCode(stat(path.c_str(), &info) == 0 ? ERROR_DIRECTORY : ERROR_PATH_NOT_FOUND);
        } else if (error == ENOTEMPTY || error == EEXIST) {
            SetErrorCode(ERROR_DIR_NOT_EMPTY);
        } else {
            SetPathError(error, path);
        }
        return FALSE;
    }
    return TRUE;
}

DWORD GetCurrentDirectoryA(DWORD size, LPSTR buffer) {
    std::string current = ToWindowsPath(posix::NativeCurrentDirectory().c_str());
    if (current.empty()) {
        SetErrorCode(ERROR_PATH_NOT_FOUND);
        return 0;
    }
    return posix::CopyOut(current, buffer, size);
}

BOOL SetCurrentDirectoryA(LPCSTR pathName) {
    std::string path = ToNativePath(pathName);
    if (path.empty()) {
        posix::SetUnmappedError(pathName);
        return FALSE;
    }
    if (chdir(path.c_str()) != 0 &&
        (!posix::RetryWithoutCase(errno, path) || chdir(path.c_str()) != 0)) {
        int error = errno;
        struct stat info;
        if (error == ENOTDIR && stat(path.c_str(), &info) == 0) {
            SetErrorCode(ERROR_DIRECTORY);
        } else {
            SetPathError(error, path);
        }
        return FALSE;
    }
    return TRUE;
}

DWORD GetFullPathNameA(LPCSTR fileName, DWORD size, LPSTR buffer, LPSTR* filePart) {
    std::string full = fileName != nullptr ? posix::SystemFullPath(fileName) : std::string{};
    if (full.empty()) {
        SetErrorCode(fileName == nullptr || fileName[0] == '\0' ? ERROR_INVALID_NAME
                                                                : ERROR_PATH_NOT_FOUND);
        return 0;
    }
    DWORD result = posix::CopyOut(full, buffer, size);
    if (filePart != nullptr && result == full.size()) {
        std::size_t last = full.find_last_of('\\');
        *filePart = last + 1 < full.size() ? buffer + last + 1 : nullptr;
    }
    return result;
}

}  // namespace nvk::os
