#include "os/api/file_replace.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "os/api/path_map.h"
#include "os/posix/fs_support.h"
#include "os/posix/handle.h"
#include "os/posix/share_modes.h"

namespace nvk::os {

namespace {

bool SameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// A rename is durable once its folder is flushed.
void FlushFolder(const std::string& file) {
    const std::string folder = file.substr(0, file.find_last_of('/') + 1);
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        fsync(fd);
        close(fd);
    }
}

}  // namespace

BOOL ReplaceFileA(LPCSTR replacedFileName, LPCSTR replacementFileName, LPCSTR backupFileName,
                  DWORD /*replaceFlags*/, LPVOID /*exclude*/, LPVOID /*reserved*/) {
    posix::OnCall("ReplaceFileA");
    if (replacedFileName == nullptr || replacementFileName == nullptr) {
        posix::SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (backupFileName != nullptr) {
        posix::SetErrorCode(ERROR_NOT_SUPPORTED);
        return FALSE;
    }
    const std::string named = ToNativePath(replacedFileName);
    const std::string source = ToNativePath(replacementFileName);
    if (named.empty() || source.empty()) {
        posix::SetUnmappedError(named.empty() ? replacedFileName : replacementFileName);
        return FALSE;
    }
    // Through a link, the file it leads to.
    char* real = realpath(named.c_str(), nullptr);
    if (real == nullptr) {
        posix::SetPathError(errno, named);
        return FALSE;
    }
    const std::string target = real;
    std::free(real);
    struct stat old;
    if (stat(target.c_str(), &old) != 0 || !S_ISREG(old.st_mode)) {
        posix::SetErrorCode(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    // The replaced file is opened for reading and deletion, sharing all.
    if (posix::DeletionRefused(target.c_str(), true)) {
        posix::SetErrorCode(ERROR_UNABLE_TO_REMOVE_REPLACED);
        return FALSE;
    }
    const int fd = open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY | O_NONBLOCK);
    if (fd < 0) {
        posix::SetPathError(errno, source);
        return FALSE;
    }
    // The owner first, since a change of owner clears bits that the mode
    // then sets; an owner or group this user may not give is left as it is.
    if (fchown(fd, old.st_uid, old.st_gid) != 0 &&
        fchown(fd, static_cast<uid_t>(-1), old.st_gid) != 0) {
        // Neither may be given: the file becomes this user's, as any it makes.
    }
    const bool kept = fchmod(fd, old.st_mode & 0777) == 0;
    close(fd);
    if (!kept) {
        posix::SetErrorCode(ERROR_UNABLE_TO_MOVE_REPLACEMENT);
        return FALSE;
    }
    if (rename(source.c_str(), target.c_str()) != 0) {
        posix::SetErrorCode(errno == EXDEV ? ERROR_UNABLE_TO_MOVE_REPLACEMENT
                                           : posix::ErrorFromErrno(errno));
        return FALSE;
    }
    FlushFolder(target);
    return TRUE;
}

DWORD GetFinalPathNameByHandleA(HANDLE file, LPSTR path, DWORD size, DWORD /*flags*/) {
    const int fd = posix::DescriptorOf(file);
    if (fd < 0) {
        return 0;
    }
    std::string native(4096, '\0');
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    const ssize_t length = readlink(link.c_str(), native.data(), native.size());
    if (length <= 0 || static_cast<std::size_t>(length) == native.size()) {
        posix::SetErrorFromErrno(length < 0 ? errno : ENAMETOOLONG);
        return 0;
    }
    native.resize(static_cast<std::size_t>(length));
    // A file deleted or replaced since its open has no name of its own.
    struct stat open;
    struct stat named;
    if (fstat(fd, &open) != 0 || stat(native.c_str(), &named) != 0 || !SameFile(open, named)) {
        posix::SetErrorCode(ERROR_FILE_NOT_FOUND);
        return 0;
    }
    return posix::CopyOut("\\\\?\\" + ToWindowsPath(native.c_str()), path, size);
}

}  // namespace nvk::os
