#include "os/posix/share_modes.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/vfs.h>

#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace nvk::os::posix {

namespace {

enum Marker {
    kHoldsRead,
    kHoldsWrite,
    kHoldsDelete,
    kDeniesRead,
    kDeniesWrite,
    kDeniesDelete,
};

struct flock MarkerLock(Marker marker, short type) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kMarkerBase + marker;
    lock.l_len = 1;
    return lock;
}

// Whether another open file description holds the marker.
bool HeldElsewhere(int fd, Marker marker) {
    struct flock lock = MarkerLock(marker, F_WRLCK);
    return fcntl(fd, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

}  // namespace

// NFS, CIFS and SMB2/3, whose flock() is a whole-file byte-range lock.
bool OnNetworkFileSystem(int fd) {
    struct statfs info;
    if (fstatfs(fd, &info) != 0) {
        return false;
    }
    constexpr unsigned long kNfs = 0x6969, kCifs = 0xFF534D42, kSmb2 = 0xFE534D42, kSmb = 0x517B;
    auto type = static_cast<unsigned long>(info.f_type);
    return type == kNfs || type == kCifs || type == kSmb2 || type == kSmb;
}

ShareGate::ShareGate(int fd) : fd_(fd) {
    if (OnNetworkFileSystem(fd)) {
        return;
    }
    constexpr int kTries = 20;  // one millisecond apart
    for (int tries = 0; !held_;) {
        held_ = flock(fd_, LOCK_EX | LOCK_NB) == 0;
        if (held_ || errno == EINTR) {
            continue;
        }
        if (errno != EWOULDBLOCK) {
            return;  // no flock() here: go without
        }
        if (++tries == kTries) {
            busy_ = true;
            return;
        }
        const timespec pause{0, 1000000};
        nanosleep(&pause, nullptr);
    }
}

ShareGate::~ShareGate() {
    if (held_) {
        flock(fd_, LOCK_UN);
    }
}

DWORD AcquireShare(int fd, const ShareRequest& request) {
    const std::pair<bool, Marker> wanted[] = {
        {request.read, kHoldsRead},          {request.write, kHoldsWrite},
        {request.remove, kHoldsDelete},      {!request.shareRead, kDeniesRead},
        {!request.shareWrite, kDeniesWrite}, {!request.shareDelete, kDeniesDelete},
    };
    for (const auto& [take, marker] : wanted) {
        struct flock lock = MarkerLock(marker, F_RDLCK);
        if (take && fcntl(fd, F_OFD_SETLK, &lock) != 0) {
            break;  // write-only descriptor or no lock support: nothing to hold
        }
    }
    if ((request.read && HeldElsewhere(fd, kDeniesRead)) ||
        (request.write && HeldElsewhere(fd, kDeniesWrite)) ||
        (request.remove && HeldElsewhere(fd, kDeniesDelete)) ||
        (!request.shareRead && HeldElsewhere(fd, kHoldsRead)) ||
        (!request.shareWrite && HeldElsewhere(fd, kHoldsWrite)) ||
        (!request.shareDelete && HeldElsewhere(fd, kHoldsDelete))) {
        struct flock all = MarkerLock(kHoldsRead, F_UNLCK);
        all.l_len = kDeniesDelete - kHoldsRead + 1;
        fcntl(fd, F_OFD_SETLK, &all);
        return ERROR_SHARING_VIOLATION;
    }
    return ERROR_SUCCESS;
}

bool DeletionRefused(const char* path, bool reading) {
    int fd = open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (fd < 0) {
        fd = open(path, O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    }
    if (fd < 0) {
        return false;  // unreadable and unwritable: nobody can hold it open against us
    }
    bool refused = false;
    {
        ShareGate gate(fd);
        refused = gate.Busy() || HeldElsewhere(fd, kDeniesDelete) ||
                  (reading && HeldElsewhere(fd, kDeniesRead));
    }
    close(fd);
    return refused;
}

}  // namespace nvk::os::posix
