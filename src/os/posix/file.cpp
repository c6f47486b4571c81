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
#include "os/posix/names.h"
#include "os/posix/section_marker.h"
#include "os/posix/share_modes.h"
#include "os/posix/wildcard.h"

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

// A region of LockFile: `length` bytes from `offset`, or none at all.
struct Region {
    ULONGLONG offset;
    ULONGLONG length;
};

class File final : public posix::KernelObject {
public:
    File(int fd, DWORD access, bool writable, std::string deleteOnClose)
        : fd_(fd), access_(access), writable_(writable), deleteOnClose_(std::move(deleteOnClose)) {}

    // A file opened for deletion on close is removed only while its name
    // still leads to it: whatever another program put at that name since is
    // not ours to delete.
    bool Close() override {
        struct stat opened;
        struct stat named;
        if (!deleteOnClose_.empty() && fstat(fd_, &opened) == 0 &&
            lstat(deleteOnClose_.c_str(), &named) == 0 && opened.st_dev == named.st_dev &&
            opened.st_ino == named.st_ino) {
            unlink(deleteOnClose_.c_str());
        }
        close(fd_);
        return true;
    }

    int fd() const { return fd_; }
    int Descriptor() const override { return fd_; }
    bool CanRead() const { return (access_ & kReadAccess) != 0; }
    bool CanWrite() const { return (access_ & kWriteAccess) != 0; }
    bool writable() const { return writable_; }

    std::vector<Region>& regions() { return regions_; }
    // Guards the regions: a handle may be used from several threads.
    std::mutex& lock() { return lock_; }

    // The file pointer is the handle's own, kept here rather than in the
    // descriptor: transfers then take one positioned call each, and nothing
    // that uses the descriptor for other ends (a mapping asking the size)
    // moves it. Transfers and moves of one handle run one at a time, as a
    // synchronous handle's do.
    std::mutex& pointerLock() { return pointerLock_; }
    LONGLONG& pointer() { return pointer_; }

private:
    int fd_;
    DWORD access_;
    bool writable_;  // the descriptor was opened for writing
    std::string deleteOnClose_;
    std::vector<Region> regions_;  // this handle's LockFile regions
    std::mutex lock_;
    std::mutex pointerLock_;
    LONGLONG pointer_ = 0;
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

// Byte-range locks as POSIX locks. Windows keeps zero-length regions, which
// conflict with the regions across their offset (a lock of 0 bytes at 100
// refuses one of 90 to 110, not one that ends at 100), and offsets up to
// 2^64; POSIX locks have no zero length and must stay below the share markers
// at 2^62. So each byte takes two lock positions: the region of bytes a to l
// (inclusive) holds positions 2a+1 to 2l+1, and a zero-length region at a the
// position 2a alone, which only regions across a hold. Offsets above 2^59
// fold into the room left, coarser but in order, so that a region there still
// conflicts with every region it overlaps.
bool Overlap(const Region& x, const Region& y) {
    if (x.length == 0 || y.length == 0) {
        const Region& point = x.length == 0 ? x : y;
        const Region& span = x.length == 0 ? y : x;
        return span.length != 0 && span.offset < point.offset &&
               point.offset - span.offset < span.length;
    }
    return x.offset <= y.offset + (y.length - 1) && y.offset <= x.offset + (x.length - 1);
}

off_t Position(ULONGLONG offset) {
    constexpr ULONGLONG kFold = ULONGLONG{1} << 59;
    const ULONGLONG folded = offset <= kFold ? offset : kFold + ((offset - kFold) >> 5);
    return static_cast<off_t>(2 * folded);
}

struct flock RangeLock(const Region& region, short type) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    if (region.length == 0) {
        lock.l_start = Position(region.offset);
        lock.l_len = 1;
    } else {
        lock.l_start = Position(region.offset) + 1;
        lock.l_len = Position(region.offset + (region.length - 1)) + 2 - lock.l_start;
    }
    return lock;
}

// Whether another handle holds a lock over the positions [start, end): the
// zero-length regions, which lock no byte, are passed over.
bool LockedBetween(int fd, off_t start, off_t end) {
    if (start >= end) {
        return false;
    }
    struct flock probe = {};
    probe.l_type = F_WRLCK;
    probe.l_whence = SEEK_SET;
    probe.l_start = start;
    probe.l_len = end - start;
    if (fcntl(fd, F_OFD_GETLK, &probe) != 0 || probe.l_type == F_UNLCK) {
        return false;
    }
    const bool zeroLength = probe.l_len == 1 && probe.l_start % 2 == 0;
    return !zeroLength || LockedBetween(fd, start, probe.l_start) ||
           LockedBetween(fd, probe.l_start + 1, end);
}

// Whether another handle holds a byte-range lock over `count` bytes from
// `position`; reads and writes there are refused as on Windows.
bool LockedElsewhere(File& file, LONGLONG position, DWORD count) {
    if (count == 0) {
        return false;
    }
    const struct flock range = RangeLock({static_cast<ULONGLONG>(position), count}, F_WRLCK);
    return LockedBetween(file.fd(), range.l_start, range.l_start + range.l_len);
}

// The size of an open file, or -1 with errno set. The descriptor's own offset
// is not the handle's pointer (see File), so moving it to the end costs
// nothing of ours, and that bare call is how the index file's readers ask the
// size at every operation cheaply: fstat fills a whole stat for one field.
// What can't seek (a pipe) is asked with fstat.
LONGLONG SizeOf(const File& file) {
    const off_t end = lseek(file.fd(), 0, SEEK_END);
    if (end >= 0) {
        return end;
    }
    struct stat info;
    return fstat(file.fd(), &info) == 0 ? info.st_size : -1;
}

}  // namespace

namespace {

// One attempt of CreateFileA; `again` is set when the name reached another
// file by the time the share modes were taken.
HANDLE OpenFile(LPCSTR fileName, DWORD desiredAccess, DWORD shareMode, DWORD creationDisposition,
                DWORD flagsAndAttributes, bool& again) {
    bool read = (desiredAccess & kReadAccess) != 0;
    bool write = (desiredAccess & kWriteAccess) != 0;
    bool remove = (desiredAccess & kDeleteAccess) != 0;
    if (fileName == nullptr || creationDisposition < CREATE_NEW ||
        creationDisposition > TRUNCATE_EXISTING ||
        (creationDisposition == TRUNCATE_EXISTING && !write)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    // A file's name holds no wildcard, and a name that ends in a separator
    // names a folder, which is not opened as a file.
    const std::string_view name(fileName);
    const std::size_t separator = name.find_last_of("\\/");
    if (posix::HasWildcards(name.substr(separator == name.npos ? 0 : separator + 1))) {
        SetErrorCode(ERROR_INVALID_NAME);
        return INVALID_HANDLE_VALUE;
    }
    if (!name.empty() && separator == name.size() - 1) {
        SetErrorCode(ERROR_PATH_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    std::string path = ToNativePath(fileName);
    if (path.empty()) {
        SetUnmappedError(fileName);
        return INVALID_HANDLE_VALUE;
    }
    int extra = (flagsAndAttributes & FILE_FLAG_WRITE_THROUGH) != 0 ? O_DSYNC : 0;
    // A temporary file is its user's alone, as in the user's own temporary
    // folder on Windows.
    mode_t mode = (flagsAndAttributes & FILE_ATTRIBUTE_TEMPORARY) != 0 ? 0600 : 0666;
    if ((flagsAndAttributes & FILE_ATTRIBUTE_READONLY) != 0) {
        mode &= 0444;
    }
    bool mayCreate = creationDisposition == CREATE_NEW || creationDisposition == CREATE_ALWAYS ||
                     creationDisposition == OPEN_ALWAYS;
    // A new file must not stand beside one whose name differs only in case:
    // that one is the file meant. An existing file is found by its exact name
    // first, and by its name without case only when that is missing.
    if (mayCreate) {
        posix::ResolveCase(path);
    }
    bool writable = false;
    bool existed = false;
    int fd = -1;
    for (bool resolved = mayCreate;; resolved = true) {
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
        if (fd >= 0 || resolved || (errno != ENOENT && errno != ENOTDIR) ||
            !posix::ResolveCase(path)) {
            break;
        }
    }
    if (fd < 0) {
        // A new file over a folder is refused as an access, as on Windows.
        const int error = errno;
        struct stat folder;
        if (error == EEXIST && stat(path.c_str(), &folder) == 0 && S_ISDIR(folder.st_mode)) {
            SetErrorCode(ERROR_ACCESS_DENIED);
        } else {
            SetPathError(error, path);
        }
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
    // A read-only file is not written, whoever asks: the kernel lets root
    // through, Windows lets nobody.
    if (existed && write && (info.st_mode & S_IWUSR) == 0) {
        return fail(ERROR_ACCESS_DENIED);
    }
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) & ~O_NONBLOCK);
    // Running a file counts as reading it for the other opens' sharing.
    const bool shareRead = read || (desiredAccess & GENERIC_EXECUTE) != 0;
    if (shareRead || write || remove) {
        posix::ShareGate gate(fd);
        DWORD shared = gate.Busy()
                           ? ERROR_SHARING_VIOLATION
                           : posix::AcquireShare(
                                 fd, {shareRead, write, remove, (shareMode & FILE_SHARE_READ) != 0,
                                      (shareMode & FILE_SHARE_WRITE) != 0,
                                      (shareMode & FILE_SHARE_DELETE) != 0});
        if (shared != ERROR_SUCCESS) {
            return fail(shared);
        }
    }
    // A whole file put in place under the name while this open waited for
    // its share modes (as an INI writer saves) leaves this descriptor on the
    // file that was replaced: open the name again, so that no open works on
    // a file that its name no longer reaches.
    struct stat named;
    if (stat(path.c_str(), &named) != 0 || named.st_ino != info.st_ino ||
        named.st_dev != info.st_dev) {
        again = true;
        return fail(ERROR_SHARING_VIOLATION);
    }
    bool truncate =
        creationDisposition == CREATE_ALWAYS || creationDisposition == TRUNCATE_EXISTING;
    if (existed && truncate && info.st_size != 0) {
        if (posix::SectionOpen(fd)) {
            return fail(ERROR_USER_MAPPED_FILE);
        }
        if (ftruncate(fd, 0) != 0) {
            return fail(ERROR_ACCESS_DENIED);
        }
    }
    bool deleteOnClose = (flagsAndAttributes & FILE_FLAG_DELETE_ON_CLOSE) != 0;
    HANDLE handle = posix::RegisterHandle(
        new File(fd, desiredAccess, writable, deleteOnClose ? path : std::string()));
    bool reported = creationDisposition == OPEN_ALWAYS || creationDisposition == CREATE_ALWAYS;
    SetErrorCode(existed && reported ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

}  // namespace

int posix::DescriptorOf(HANDLE handle, bool& canRead, bool& canWrite) {
    File* file = FileOf(handle);
    if (file == nullptr) {
        return -1;
    }
    canRead = file->CanRead();
    canWrite = file->CanWrite() && file->writable();
    return file->fd();
}

HANDLE CreateFileA(LPCSTR fileName, DWORD desiredAccess, DWORD shareMode,
                   LPSECURITY_ATTRIBUTES /*attributes*/, DWORD creationDisposition,
                   DWORD flagsAndAttributes, HANDLE /*templateFile*/) {
    posix::OnCall("CreateFileA");
    HANDLE handle = INVALID_HANDLE_VALUE;
    bool again = true;
    // Each round follows a replacement that another party made meanwhile.
    for (int round = 0; round < 64 && again; ++round) {
        again = false;
        handle = OpenFile(fileName, desiredAccess, shareMode, creationDisposition,
                          flagsAndAttributes, again);
    }
    return handle;
}

namespace {

// The checks a read and a write share before they take the file pointer: the
// handle, its access and the buffer. Null, with the error set, when the
// transfer may not start.
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
        SetErrorCode(writing ? ERROR_INVALID_USER_BUFFER : ERROR_NOACCESS);
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
    std::lock_guard guard(file->pointerLock());
    const LONGLONG at = file->pointer();
    if (LockedElsewhere(*file, at, toRead)) {
        SetErrorCode(ERROR_LOCK_VIOLATION);
        return FALSE;
    }
    DWORD total = 0;
    while (total < toRead) {
        ssize_t got =
            ::pread(file->fd(), static_cast<char*>(buffer) + total, toRead - total, at + total);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            SetErrorFromErrno(errno);
            file->pointer() = at + total;
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
    file->pointer() = at + total;
    return TRUE;  // the last error stays as it was, as on Windows
}

BOOL WriteFile(HANDLE handle, LPCVOID buffer, DWORD toWrite, LPDWORD written,
               LPVOID /*overlapped*/) {
    posix::OnCall("WriteFile");
    File* file = StartTransfer(handle, buffer, toWrite, written, true);
    if (file == nullptr) {
        return FALSE;
    }
    std::lock_guard guard(file->pointerLock());
    const LONGLONG at = file->pointer();
    if (LockedElsewhere(*file, at, toWrite)) {
        SetErrorCode(ERROR_LOCK_VIOLATION);
        return FALSE;
    }
    DWORD total = 0;
    while (total < toWrite) {
        ssize_t put = ::pwrite(file->fd(), static_cast<const char*>(buffer) + total,
                               toWrite - total, at + total);
        if (put < 0 && errno == EINTR) {
            continue;
        }
        if (put <= 0) {
            SetErrorFromErrno(put < 0 ? errno : ENOSPC);
            file->pointer() = at + total;
            return FALSE;
        }
        total += static_cast<DWORD>(put);
        if (written != nullptr) {
            *written = total;
        }
    }
    file->pointer() = at + total;
    return TRUE;  // the last error stays as it was, as on Windows
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
    std::lock_guard guard(file->pointerLock());
    LONGLONG base = 0;
    if (moveMethod == FILE_CURRENT) {
        base = file->pointer();
    } else if (moveMethod == FILE_END) {
        base = SizeOf(*file);
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
    file->pointer() = target;
    if (distanceHigh != nullptr) {
        *distanceHigh = static_cast<LONG>(static_cast<ULONGLONG>(target) >> 32);
    }
    SetErrorCode(ERROR_SUCCESS);
    return static_cast<DWORD>(target);
}

DWORD GetFileSize(HANDLE handle, LPDWORD sizeHigh) {
    File* file = FileOf(handle);
    const LONGLONG known = file != nullptr ? SizeOf(*file) : -1;
    if (known < 0) {
        if (file != nullptr) {
            SetErrorFromErrno(errno);
        }
        return INVALID_FILE_SIZE;
    }
    const auto size = static_cast<ULONGLONG>(known);
    if (sizeHigh != nullptr) {
        *sizeHigh = static_cast<DWORD>(size >> 32);
    }
    SetErrorCode(ERROR_SUCCESS);
    return static_cast<DWORD>(size);
}

BOOL SetEndOfFile(HANDLE handle) {
    posix::OnCall("SetEndOfFile");
    File* file = FileOf(handle);
    if (file == nullptr) {
        return FALSE;
    }
    if (!file->CanWrite()) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    std::lock_guard guard(file->pointerLock());
    // A file is not cut while a section of it is open, in any process: its
    // views would lose their pages. It may still grow.
    struct stat info;
    if (fstat(file->fd(), &info) == 0 && file->pointer() < info.st_size &&
        posix::SectionOpen(file->fd())) {
        SetErrorCode(ERROR_USER_MAPPED_FILE);
        return FALSE;
    }
    if (ftruncate(file->fd(), static_cast<off_t>(file->pointer())) != 0) {
        SetErrorFromErrno(errno);
        return FALSE;
    }
    return TRUE;
}

BOOL FlushFileBuffers(HANDLE handle) {
    posix::OnCall("FlushFileBuffers");
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

// The checks that deleting and renaming share: the name exists (without
// regard to case when the exact one is missing, and then `path` becomes the
// one found), and no open of the file refuses its deletion. Fills `info` from
// lstat.
bool MayRemove(std::string& path, struct stat& info) {
    if (lstat(path.c_str(), &info) != 0 &&
        (!posix::RetryWithoutCase(errno, path) || lstat(path.c_str(), &info) != 0)) {
        SetPathError(errno, path);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        return true;
    }
    bool refused = posix::DeletionRefused(path.c_str());
    if (refused) {
        SetErrorCode(ERROR_SHARING_VIOLATION);
    }
    return !refused;
}

// Moves a regular file to another file system: copy, then remove the source.
bool CopyAcross(const std::string& from, const std::string& to, mode_t mode) {
    int in = open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (in < 0) {
        SetPathError(errno, from);
        return false;
    }
    // The permission bits only: a copy never carries setuid, setgid or sticky.
    int out = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode & 0777);
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
    const std::string_view target(newName);
    if (posix::HasWildcards(target.substr(target.find_last_of("\\/") + 1))) {
        SetErrorCode(ERROR_INVALID_NAME);
        return FALSE;
    }
    struct stat info;
    if (!MayRemove(from, info)) {
        return FALSE;
    }
    // The target is found without regard to case too. When it is the file
    // itself, the move succeeds: nothing to do, or a change of case.
    const std::string given = to;
    posix::ResolveCase(to);
    struct stat existing;
    if (lstat(to.c_str(), &existing) == 0) {
        if (existing.st_dev != info.st_dev || existing.st_ino != info.st_ino) {
            SetErrorCode(ERROR_ALREADY_EXISTS);
            return FALSE;
        }
        const std::string renamed =
            to.substr(0, to.rfind('/') + 1) + given.substr(given.rfind('/') + 1);
        if (from == renamed || rename(from.c_str(), renamed.c_str()) == 0) {
            return TRUE;
        }
        SetPathError(errno, renamed);
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
    const Region wanted = {(static_cast<ULONGLONG>(offsetHigh) << 32) | offsetLow,
                           (static_cast<ULONGLONG>(bytesHigh) << 32) | bytesLow};
    // The last byte must be an offset: a region may end at 2^64, not past it.
    if (wanted.length != 0 && wanted.length - 1 > ~wanted.offset) {
        SetErrorCode(ERROR_INVALID_LOCK_RANGE);
        return FALSE;
    }
    std::lock_guard guard(file->lock());
    // Regions of one handle don't overlap either.
    for (const Region& region : file->regions()) {
        if (Overlap(region, wanted)) {
            SetErrorCode(ERROR_LOCK_VIOLATION);
            return FALSE;
        }
    }
    // A descriptor that could only be opened for reading holds a shared lock:
    // it still keeps writers' locks out. A zero-length region is shared too,
    // as it conflicts with no other zero-length region.
    const bool exclusive = file->writable() && wanted.length != 0;
    struct flock lock = RangeLock(wanted, exclusive ? F_WRLCK : F_RDLCK);
    if (fcntl(file->fd(), F_OFD_SETLK, &lock) != 0 && (errno == EAGAIN || errno == EACCES)) {
        SetErrorCode(ERROR_LOCK_VIOLATION);
        return FALSE;
    }
    file->regions().push_back(wanted);
    return TRUE;
}

BOOL UnlockFile(HANDLE handle, DWORD offsetLow, DWORD offsetHigh, DWORD bytesLow, DWORD bytesHigh) {
    File* file = FileOf(handle);
    if (file == nullptr) {
        return FALSE;
    }
    const Region wanted = {(static_cast<ULONGLONG>(offsetHigh) << 32) | offsetLow,
                           (static_cast<ULONGLONG>(bytesHigh) << 32) | bytesLow};
    std::lock_guard guard(file->lock());
    auto& regions = file->regions();
    auto found = std::find_if(regions.begin(), regions.end(), [&](const Region& region) {
        return region.offset == wanted.offset && region.length == wanted.length;
    });
    if (found == regions.end()) {
        SetErrorCode(ERROR_NOT_LOCKED);
        return FALSE;
    }
    regions.erase(found);
    struct flock lock = RangeLock(wanted, F_UNLCK);
    fcntl(file->fd(), F_OFD_SETLK, &lock);
    return TRUE;
}

}  // namespace nvk::os
