#include "os/api/file_copy.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <vector>

#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/path_map.h"
#include "os/api/sync.h"
#include "os/posix/fs_support.h"
#include "os/posix/handle.h"
#include "os/posix/names.h"

namespace nvk::os {

using posix::SetErrorCode;

// Copies through handles of the OS layer, so that the share modes of other
// opens hold. As on Windows, the source is shared with every other open that
// lets it be read (an application backing up a file it has open itself), and
// the target with those that let it be written. Only a regular file is copied:
// a device or a pipe would fill the disk or wait for ever. The copy gets the
// source's permission bits, never setuid, setgid or sticky, set on the file
// that was opened before any byte is written.
BOOL CopyFileA(LPCSTR existingName, LPCSTR newName, BOOL failIfExists) {
    std::string from = ToNativePath(existingName);
    std::string to = ToNativePath(newName);
    if (from.empty() || to.empty()) {
        posix::SetUnmappedError(from.empty() ? existingName : newName);
        return FALSE;
    }
    HANDLE in = CreateFileA(existingName, GENERIC_READ,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (in == INVALID_HANDLE_VALUE) {
        return FALSE;
    }
    struct stat source;
    if (fstat(posix::DescriptorOf(in), &source) != 0 || !S_ISREG(source.st_mode)) {
        CloseHandle(in);
        SetErrorCode(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    // A read-only target is not written over, whatever the process may do.
    struct stat target;
    if (!failIfExists && stat(to.c_str(), &target) == 0 && (target.st_mode & S_IWUSR) == 0) {
        CloseHandle(in);
        SetErrorCode(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    HANDLE out =
        CreateFileA(newName, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    failIfExists ? CREATE_NEW : CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (out == INVALID_HANDLE_VALUE) {
        DWORD error = GetLastError();
        CloseHandle(in);
        SetErrorCode(error);
        return FALSE;
    }
    const int outFd = posix::DescriptorOf(out);
    bool ok = fchmod(outFd, source.st_mode & 0777) == 0;
    std::vector<char> buffer(1 << 16);
    while (ok) {
        DWORD got = 0;
        DWORD put = 0;
        ok = ReadFile(in, buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr) != 0;
        if (!ok || got == 0) {
            break;
        }
        ok = WriteFile(out, buffer.data(), got, &put, nullptr) != 0 && put == got;
    }
    const struct timespec times[2] = {source.st_atim, source.st_mtim};
    ok = ok && futimens(outFd, times) == 0;
    DWORD error = ok ? ERROR_SUCCESS : GetLastError();
    CloseHandle(in);
    CloseHandle(out);
    if (!ok) {
        DeleteFileA(newName);  // no half copy stays behind
        SetErrorCode(error != ERROR_SUCCESS ? error : ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return TRUE;
}

BOOL MoveFileExA(LPCSTR existingName, LPCSTR newName, DWORD flags) {
    std::string from = ToNativePath(existingName);
    std::string to = ToNativePath(newName);
    if (from.empty() || to.empty()) {
        posix::SetUnmappedError(from.empty() ? existingName : newName);
        return FALSE;
    }
    struct stat source;
    if (lstat(from.c_str(), &source) != 0 &&
        (!posix::RetryWithoutCase(errno, from) || lstat(from.c_str(), &source) != 0)) {
        posix::SetPathError(errno, from);
        return FALSE;
    }
    if ((flags & MOVEFILE_COPY_ALLOWED) == 0) {
        std::string folder = to.substr(0, to.find_last_of('/') + 1);
        struct stat target;
        if (stat(folder.empty() ? "." : folder.c_str(), &target) == 0 &&
            target.st_dev != source.st_dev) {
            SetErrorCode(ERROR_NOT_SAME_DEVICE);
            return FALSE;
        }
    }
    // A target that is the source itself (the same name, or another case of
    // it) is left to the move, which succeeds; it is never deleted first.
    posix::ResolveCase(to);
    struct stat existing;
    if ((flags & MOVEFILE_REPLACE_EXISTING) != 0 && lstat(to.c_str(), &existing) == 0 &&
        (existing.st_dev != source.st_dev || existing.st_ino != source.st_ino)) {
        if (S_ISDIR(existing.st_mode) || S_ISDIR(source.st_mode)) {
            SetErrorCode(ERROR_ACCESS_DENIED);
            return FALSE;
        }
        // Deleting first keeps the share modes and the read-only rule of the
        // target; a failure leaves both files as they were.
        if (!DeleteFileA(newName)) {
            return FALSE;
        }
    }
    return MoveFileA(existingName, newName);
}

}  // namespace nvk::os
