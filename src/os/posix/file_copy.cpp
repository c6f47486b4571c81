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

namespace nvk::os {

namespace {

using posix::SetErrorCode;

// Copies through handles of the OS layer, so that the share modes of other
// opens hold: the source is shared for reading only, the target not at all.
bool CopyContent(LPCSTR from, LPCSTR to, DWORD disposition) {
    HANDLE in = CreateFileA(from, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
    if (in == INVALID_HANDLE_VALUE) {
        return false;
    }
    HANDLE out =
        CreateFileA(to, GENERIC_WRITE, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (out == INVALID_HANDLE_VALUE) {
        DWORD error = GetLastError();
        CloseHandle(in);
        SetErrorCode(error);
        return false;
    }
    std::vector<char> buffer(1 << 16);
    bool ok = true;
    for (;;) {
        DWORD got = 0;
        DWORD put = 0;
        ok = ReadFile(in, buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr) != 0;
        if (!ok || got == 0) {
            break;
        }
        ok = WriteFile(out, buffer.data(), got, &put, nullptr) != 0 && put == got;
        if (!ok) {
            break;
        }
    }
    DWORD error = GetLastError();
    CloseHandle(in);
    CloseHandle(out);
    if (!ok) {
        DeleteFileA(to);  // no half copy stays behind
        SetErrorCode(error);
    }
    return ok;
}

}  // namespace

BOOL CopyFileA(LPCSTR existingName, LPCSTR newName, BOOL failIfExists) {
    std::string from = ToNativePath(existingName);
    std::string to = ToNativePath(newName);
    if (from.empty() || to.empty()) {
        posix::SetUnmappedError(from.empty() ? existingName : newName);
        return FALSE;
    }
    struct stat source;
    if (stat(from.c_str(), &source) != 0) {
        posix::SetPathError(errno, from);
        return FALSE;
    }
    // Neither a folder nor a read-only target is written over, whatever the
    // process may do.
    struct stat target;
    bool readOnlyTarget = stat(to.c_str(), &target) == 0 && (target.st_mode & S_IWUSR) == 0;
    if (S_ISDIR(source.st_mode) || (readOnlyTarget && !failIfExists)) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (!CopyContent(existingName, newName, failIfExists ? CREATE_NEW : CREATE_ALWAYS)) {
        return FALSE;
    }
    const struct timespec times[2] = {source.st_atim, source.st_mtim};
    utimensat(AT_FDCWD, to.c_str(), times, 0);
    chmod(to.c_str(), source.st_mode & 07777);
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
    if (lstat(from.c_str(), &source) != 0) {
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
    struct stat existing;
    if ((flags & MOVEFILE_REPLACE_EXISTING) != 0 && lstat(to.c_str(), &existing) == 0 &&
        (from != to)) {
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
