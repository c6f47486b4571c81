#include "os/api/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <mutex>
#include <string>
#include <vector>

#include "os/api/path_map.h"
#include "os/posix/fs_support.h"
#include "os/posix/handle.h"
#include "os/posix/share_modes.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;
using posix::SetErrorFromErrno;
using posix::SetPathError;
using posix::SetUnmappedError;
using posix::ToFileTime;

constexpr DWORD kReadAccess = GENERIC_READ | GENERIC_ALL;
constexpr DWORD kWriteAccess = GENERIC_WRITE | GENERIC_ALL;
constexpr DWORD kDeleteAccess = DELETE | GENERIC_ALL;

class File final : public posix::KernelObject {
public:
    File(int fd, DWORD access, bool writable, std::string deleteOnClose)
        : fd_(fd), access_(access), writable_(writable), deleteOnClose_(std::move(deleteOnClose)) {}

    bool Close() override {
        if (!deleteOnClose_.empty()) {
            unlink(deleteOnClose_.c_str());
        }
        close(fd_);
        return true;
    }

    int fd() const { return fd_; }
    int MappingDescriptor(bool& canRead, bool& canWrite) override {
        canRead = CanRead();
        canWrite = CanWrite() && writable_;
        return fd_;
    }
    bool CanRead() const { return (access_ & kReadAccess) != 0; }
    bool CanWrite() const { return (access_ & kWriteAccess) != 0; }
    bool writable() const { return writable_; }

    struct Region {
        ULONGLONG offset;
        ULONGLONG length;
    };
    std::vector<Region>& regions() { return regions_; }
    // Guards the regions: a handle may be used from several threads.
    std::mutex& lock() { return lock_; }

private:
    int fd_;
    DWORD access_;
    bool writable_;  // the descriptor was opened for writing
    std::string deleteOnClose_;
    std::vector<Region> regions_;  // this handle's LockFile regions
    std::mutex lock_;
};

File* FileOf(HANDLE handle) {
    File* file = posix::HandleAs<File>(handle);
    if (file == nullptr) {
        SetErrorCode(ERROR_INVALID_HANDLE);
    }
    return file;
}

// The descriptor is opened for reading and writing when the file allows it,
// whatever the handle's access: share markers need a readable descriptor and
// exclusive byte-range locks a writable one. The handle's access is enforced
// by the calls themselves. Otherwise the descriptor gets what the access asks.
int OpenDescriptor(const std::string& path, int flags, mode_t mode, bool read, bool write,
                   bool& writable) {
    flags |= O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    int fd = open(path.c_str(), flags | O_RDWR, mode);
    writable = fd >= 0;
    bool refused = errno == EACCES || errno == EROFS || errno == ETXTBSY || errno == EPERM;
    if (fd < 0 && refused && !(read && write)) {
        fd = open(path.c_str(), flags | (write ? O_WRONLY : O_RDONLY), mode);
        writable = write;
    }
    return fd;
}

// The clipped range [start, end) of a region, kept below the share markers.
struct flock RangeLock(ULONGLONG offset, ULONGLONG length, short type) {
    constexpr auto limit = static_cast<ULONGLONG>(posix::kMarkerBase);
    ULONGLONG start = std::min(offset, limit);
    ULONGLONG end = length > limit - start ? limit : start + length;
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(start);
    lock.l_len = static_cast<off_t>(end - start);
    return lock;
}

// Whether another handle holds a byte-range lock over the bytes at the file
// position; reads and writes there are refused as on Windows.
bool LockedElsewhere(File& file, DWORD count) {
    off_t position = lseek(file.fd(), 0, SEEK_CUR);
    if (position < 0 || count == 0) {
        return false;
    }
    struct flock lock = RangeLock(static_cast<ULONGLONG>(position), count, F_WRLCK);
    if (lock.l_len == 0) {
        return false;
    }
    return fcntl(file.fd(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

ULONGLONG RegionEnd(ULONGLONG offset, ULONGLONG length) {
    return length > std::numeric_limits<ULONGLONG>::max() - offset
               ? std::numeric_limits<ULONGLONG>::max()
               : offset + length;
}

}  // namespace

HANDLE CreateFileA(LPCSTR fileName, DWORD desiredAccess, DWORD shareMode,
                   LPSECURITY_ATTRIBUTES /*attributes*/, DWORD creationDisposition,
                   DWORD flagsAndAttributes, HANDLE /*templateFile*/) {
    bool read = (desiredAccess & kReadAccess) != 0;
    bool write = (desiredAccess & kWriteAccess) != 0;
    bool remove = (desiredAccess & kDeleteAccess) != 0;
    if (fileName == nullptr || creationDisposition < CREATE_NEW ||
        creationDisposition > TRUNCATE_EXISTING ||
        (creationDisposition == TRUNCATE_EXISTING && !write)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    std::string path = ToNativePath(fileName);
    if (path.empty()) {
        SetUnmappedError(fileName);
        return INVALID_HANDLE_VALUE;
    }
    int extra = (flagsAndAttributes & FILE_FLAG_WRITE_THROUGH) != 0 ? O_DSYNC : 0;
    mode_t mode = (flagsAndAttributes & FILE_ATTRIBUTE_READONLY) != 0 ? 0444 : 0666;
    bool mayCreate = creationDisposition == CREATE_NEW || creationDisposition == CREATE_ALWAYS ||
                     creationDisposition == OPEN_ALWAYS;
    bool writable = false;
    bool existed = false;
    int fd = -1;
    // A file deleted between the two opens is created on the next round.
    for (int round = 0; round < 8 && fd < 0; ++round) {
        if (mayCreate) {
            fd = OpenDescriptor(path, extra | O_CREAT | O_EXCL, mode, read, write, writable);
            if (fd >= 0 || errno != EEXIST || creationDisposition == CREATE_NEW) {
                break;
            }
        }
        fd = OpenDescriptor(path, extra, mode, read, write, writable);
        existed = fd >= 0;
        if (fd < 0 && !(mayCreate && errno == ENOENT)) {
            break;
        }
    }
    if (fd < 0) {
        SetPathError(errno, path);
        return INVALID_HANDLE_VALUE;
    }
    auto fail = [fd](DWORD code) {
        close(fd);
        SetErrorCode(code);
        return INVALID_HANDLE_VALUE;
    };
    struct stat info;
    if (fstat(fd, &info) != 0 || S_ISDIR(info.st_mode)) {
        return fail(ERROR_ACCESS_DENIED);
    }
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    if (read || write || remove) {
        posix::ShareGate gate(fd);
        DWORD shared = posix::AcquireShare(
            fd, {read, write, remove, (shareMode & FILE_SHARE_READ) != 0,
                 (shareMode & FILE_SHARE_WRITE) != 0, (shareMode & FILE_SHARE_DELETE) != 0});
        if (shared != ERROR_SUCCESS) {
            return fail(shared);
        }
    }
    bool truncate =
        creationDisposition == CREATE_ALWAYS || creationDisposition == TRUNCATE_EXISTING;
    if (existed && truncate && info.st_size != 0 && ftruncate(fd, 0) != 0) {
        return fail(ERROR_ACCESS_DENIED);
    }
    bool deleteOnClose = (flagsAndAttributes & FILE_FLAG_DELETE_ON_CLOSE) != 0;
    HANDLE handle = posix::RegisterHandle(
        new File(fd, desiredAccess, writable, deleteOnClose ? path : std::string()));
    bool reported = creationDisposition == OPEN_ALWAYS || creationDisposition == CREATE_ALWAYS;
    SetErrorCode(existed && reported ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

namespace {

// The checks a read and a write share: the handle, its access, the buffer and
// the other handles' locks. Null, with the error set, when the transfer may
// not start.
File* StartTransfer(HANDLE handle, LPCVOID buffer, DWORD count, LPDWORD done, bool writing) {
    if (done != nullptr) {
        *done = 0;
    }
    File* file = FileOf(handle);
    if (file == nullptr) {
        return nullptr;
    }
    if (!(writing ? file->CanWrite() : file->CanRead())) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    if (count != 0 && buffer == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (LockedElsewhere(*file, count)) {
        SetErrorCode(ERROR_LOCK_VIOLATION);
        return nullptr;
    }
    return file;
}

}  // namespace

BOOL ReadFile(HANDLE handle, LPVOID buffer, DWORD toRead, LPDWORD read, LPVOID /*overlapped*/) {
    File* file = StartTransfer(handle, buffer, toRead, read, false);
    if (file == nullptr) {
        return FALSE;
    }
    DWORD total = 0;
    while (total < toRead) {
        ssize_t got = ::read(file->fd(), static_cast<char*>(buffer) + total, toRead - total);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            SetErrorFromErrno(errno);
            return FALSE;
        }
        if (got == 0) {
            break;
        }
        total += static_cast<DWORD>(got);
        if (read != nullptr) {
            *read = total;
        }
    }
    SetErrorCode(ERROR_SUCCESS);
    return TRUE;
}

BOOL WriteFile(HANDLE handle, LPCVOID buffer, DWORD toWrite, LPDWORD written,
               LPVOID /*overlapped*/) {
    File* file = StartTransfer(handle, buffer, toWrite, written, true);
    if (file == nullptr) {
        return FALSE;
    }
    DWORD total = 0;
    while (total < toWrite) {
        ssize_t put =
            ::write(file->fd(), static_cast<const char*>(buffer) + total, toWrite - total);
        if (put < 0 && errno == EINTR) {
            continue;
        }
        if (put <= 0) {
            SetErrorFromErrno(put < 0 ? errno : ENOSPC);
            return FALSE;
        }
        total += static_cast<DWORD>(put);
        if (written != nullptr) {
            *written = total;
        }
    }
    SetErrorCode(ERROR_SUCCESS);
    return TRUE;
}

DWORD SetFilePointer(HANDLE handle, LONG distance, PLONG distanceHigh, DWORD moveMethod) {
    File* file = FileOf(handle);
    if (file == nullptr) {
        return INVALID_SET_FILE_POINTER;
    }
    // Without a high part the distance is a signed 32-bit value.
    LONGLONG move = distanceHigh == nullptr
                        ? distance
                        : static_cast<LONGLONG>((static_cast<ULONGLONG>(*distanceHigh) << 32) |
                                                static_cast<DWORD>(distance));
    LONGLONG base = 0;
    if (moveMethod == FILE_CURRENT) {
        base = lseek(file->fd(), 0, SEEK_CUR);
    } else if (moveMethod == FILE_END) {
        struct stat info;
        base = fstat(file->fd(), &info) == 0 ? info.st_size : -1;
    } else if (moveMethod != FILE_BEGIN) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return INVALID_SET_FILE_POINTER;
    }
    if (base < 0) {
        SetErrorFromErrno(errno);
        return INVALID_SET_FILE_POINTER;
    }
    LONGLONG target = 0;
    if (__builtin_add_overflow(base, move, &target) || target < 0) {
        SetErrorCode(ERROR_NEGATIVE_SEEK);
        return INVALID_SET_FILE_POINTER;
    }
    if (lseek(file->fd(), target, SEEK_SET) < 0) {
        SetErrorFromErrno(errno);
        return INVALID_SET_FILE_POINTER;
    }
    if (distanceHigh != nullptr) {
        *distanceHigh = static_cast<LONG>(static_cast<ULONGLONG>(target) >> 32);
    }
    SetErrorCode(ERROR_SUCCESS);
    return static_cast<DWORD>(target);
}

DWORD GetFileSize(HANDLE handle, LPDWORD sizeHigh) {
    File* file = FileOf(handle);
    struct stat info;
    if (file == nullptr || fstat(file->fd(), &info) != 0) {
        if (file != nullptr) {
            SetErrorFromErrno(errno);
        }
        return INVALID_FILE_SIZE;
    }
    auto size = static_cast<ULONGLONG>(info.st_size);
    if (sizeHigh != nullptr) {
        *sizeHigh = static_cast<DWORD>(size >> 32);
    }
    SetErrorCode(ERROR_SUCCESS);
    return static_cast<DWORD>(size);
}

BOOL SetEndOfFile(HANDLE handle) {
    File* file = FileOf(handle);
    if (file == nullptr) {
        return FALSE;
    }
    if (!file->CanWrite()) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    off_t position = lseek(file->fd(), 0, SEEK_CUR);
    if (position < 0 || ftruncate(file->fd(), position) != 0) {
        SetErrorFromErrno(errno);
        return FALSE;
    }
    return TRUE;
}

BOOL FlushFileBuffers(HANDLE handle) {
    File* file = FileOf(handle);
    if (file == nullptr) {
        return FALSE;
    }
    if (!file->CanWrite()) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (fsync(file->fd()) != 0) {
        SetErrorFromErrno(errno);
        return FALSE;
    }
    return TRUE;
}

BOOL GetFileTime(HANDLE handle, FILETIME* creation, FILETIME* lastAccess, FILETIME* lastWrite) {
    File* file = FileOf(handle);
    if (file == nullptr) {
        return FALSE;
    }
    struct statx info;
    if (statx(file->fd(), "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_BTIME, &info) != 0) {
        SetErrorFromErrno(errno);
        return FALSE;
    }
    if (creation != nullptr) {
        // Without a birth time, the oldest time the file system keeps.
        *creation =
            ToFileTime((info.stx_mask & STATX_BTIME) != 0 ? info.stx_btime : info.stx_ctime);
    }
    if (lastAccess != nullptr) {
        *lastAccess = ToFileTime(info.stx_atime);
    }
    if (lastWrite != nullptr) {
        *lastWrite = ToFileTime(info.stx_mtime);
    }
    return TRUE;
}

namespace {

// The checks that deleting and renaming share: the name exists, and no open
// of the file refuses its deletion. Fills `info` from lstat.
bool MayRemove(const std::string& path, struct stat& info) {
    if (lstat(path.c_str(), &info) != 0) {
        SetPathError(errno, path);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        return true;
    }
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (fd < 0) {
        fd = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    }
    if (fd < 0) {
        return true;  // unreadable and unwritable: nobody can hold it open against us
    }
    bool refused = false;
    {
        posix::ShareGate gate(fd);
        refused = posix::DeletionRefused(fd);
    }
    close(fd);
    if (refused) {
        SetErrorCode(ERROR_SHARING_VIOLATION);
    }
    return !refused;
}

// Moves a regular file to another file system: copy, then remove the source.
bool CopyAcross(const std::string& from, const std::string& to, mode_t mode) {
    int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0) {
        SetPathError(errno, from);
        return false;
    }
    int out = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode & 07777);
    if (out < 0) {
        int error = errno;
        close(in);
        SetErrorCode(error == EEXIST ? ERROR_ALREADY_EXISTS : posix::ErrorFromErrno(error));
        return false;
    }
    char buffer[65536];
    ssize_t got = 0;
    bool ok = true;
    while (ok && (got = ::read(in, buffer, sizeof buffer)) != 0) {
        if (got < 0) {
            ok = errno == EINTR;
            continue;
        }
        for (ssize_t done = 0; ok && done < got;) {
            ssize_t put = ::write(out, buffer + done, static_cast<size_t>(got - done));
            ok = put > 0 || (put < 0 && errno == EINTR);
            done += std::max<ssize_t>(put, 0);
        }
    }
    int error = ok ? 0 : errno;
    close(in);
    ok = close(out) == 0 && ok;
    if (!ok) {
        unlink(to.c_str());
        SetErrorFromErrno(error != 0 ? error : EIO);
        return false;
    }
    unlink(from.c_str());
    return true;
}

}  // namespace

BOOL DeleteFileA(LPCSTR fileName) {
    std::string path = ToNativePath(fileName);
    if (path.empty()) {
        SetUnmappedError(fileName);
        return FALSE;
    }
    struct stat info;
    if (!MayRemove(path, info)) {
        return FALSE;
    }
    // Directories and read-only files can't be deleted as files.
    if (S_ISDIR(info.st_mode) || (S_ISREG(info.st_mode) && (info.st_mode & S_IWUSR) == 0)) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (unlink(path.c_str()) != 0) {
        SetPathError(errno, path);
        return FALSE;
    }
    return TRUE;
}

BOOL MoveFileA(LPCSTR existingName, LPCSTR newName) {
    std::string from = ToNativePath(existingName);
    std::string to = ToNativePath(newName);
    if (from.empty() || to.empty()) {
        SetUnmappedError(from.empty() ? existingName : newName);
        return FALSE;
    }
    struct stat info;
    if (!MayRemove(from, info)) {
        return FALSE;
    }
    struct stat existing;
    if (lstat(to.c_str(), &existing) == 0) {
        SetErrorCode(ERROR_ALREADY_EXISTS);
        return FALSE;
    }
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return TRUE;
    }
    int error = errno;
    if (error == EINVAL && rename(from.c_str(), to.c_str()) == 0) {
        return TRUE;  // a file system without the no-replace rename; checked above
    }
    if (error == EXDEV && S_ISREG(info.st_mode)) {
        return CopyAcross(from, to, info.st_mode) ? TRUE : FALSE;
    }
    if (error == EEXIST) {
        SetErrorCode(ERROR_ALREADY_EXISTS);
    } else {
        SetPathError(error, to);
    }
    return FALSE;
}

BOOL LockFile(HANDLE handle, DWORD offsetLow, DWORD offsetHigh, DWORD bytesLow, DWORD bytesHigh) {
    File* file = FileOf(handle);
    if (file == nullptr) {
        return FALSE;
    }
    ULONGLONG offset = (static_cast<ULONGLONG>(offsetHigh) << 32) | offsetLow;
    ULONGLONG length = (static_cast<ULONGLONG>(bytesHigh) << 32) | bytesLow;
    ULONGLONG end = RegionEnd(offset, length);
    std::lock_guard guard(file->lock());
    // Regions of one handle don't overlap either.
    for (const File::Region& region : file->regions()) {
        if (length != 0 && region.length != 0 && offset < RegionEnd(region.offset, region.length) &&
            region.offset < end) {
            SetErrorCode(ERROR_LOCK_VIOLATION);
            return FALSE;
        }
    }
    // A descriptor that could only be opened for reading holds a shared lock:
    // it still keeps writers' locks out.
    struct flock lock = RangeLock(offset, length, file->writable() ? F_WRLCK : F_RDLCK);
    if (lock.l_len != 0 && fcntl(file->fd(), F_OFD_SETLK, &lock) != 0 &&
        (errno == EAGAIN || errno == EACCES)) {
        SetErrorCode(ERROR_LOCK_VIOLATION);
        return FALSE;
    }
    file->regions().push_back({offset, length});
    return TRUE;
}

BOOL UnlockFile(HANDLE handle, DWORD offsetLow, DWORD offsetHigh, DWORD bytesLow, DWORD bytesHigh) {
    File* file = FileOf(handle);
    if (file == nullptr) {
        return FALSE;
    }
    ULONGLONG offset = (static_cast<ULONGLONG>(offsetHigh) << 32) | offsetLow;
    ULONGLONG length = (static_cast<ULONGLONG>(bytesHigh) << 32) | bytesLow;
    std::lock_guard guard(file->lock());
    auto& regions = file->regions();
    auto found = std::find_if(regions.begin(), regions.end(), [&](const File::Region& region) {
        return region.offset == offset && region.length == length;
    });
    if (found == regions.end()) {
        SetErrorCode(ERROR_NOT_LOCKED);
        return FALSE;
    }
    regions.erase(found);
    struct flock lock = RangeLock(offset, length, F_UNLCK);
    if (lock.l_len != 0) {
        fcntl(file->fd(), F_OFD_SETLK, &lock);
    }
    return TRUE;
}

}  // namespace nvk::os
