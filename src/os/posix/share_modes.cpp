#include "os/posix/share_modes.h"

#include <fcntl.h>
#include <sys/file.h>

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

ShareGate::ShareGate(int fd) : fd_(fd) {
    while (flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
}

ShareGate::~ShareGate() {
    flock(fd_, LOCK_UN);
}

DWORD AcquireShare(int fd, const ShareRequest& request) {
    if ((request.read && HeldElsewhere(fd, kDeniesRead)) ||
        (request.write && HeldElsewhere(fd, kDeniesWrite)) ||
        (request.remove && HeldElsewhere(fd, kDeniesDelete)) ||
        (!request.shareRead && HeldElsewhere(fd, kHoldsRead)) ||
        (!request.shareWrite && HeldElsewhere(fd, kHoldsWrite)) ||
        (!request.shareDelete && HeldElsewhere(fd, kHoldsDelete))) {
        return ERROR_SHARING_VIOLATION;
    }
    const std::pair<bool, Marker> wanted[] = {
        {request.read, kHoldsRead},          {request.write, kHoldsWrite},
        {request.remove, kHoldsDelete},      {!request.shareRead, kDeniesRead},
        {!request.shareWrite, kDeniesWrite}, {!request.shareDelete, kDeniesDelete},
    };
    for (const auto& [take, marker] : wanted) {
        if (!take) {
            continue;
        }
        struct flock lock = MarkerLock(marker, F_RDLCK);
        if (fcntl(fd, F_OFD_SETLK, &lock) != 0) {
            break;  // write-only descriptor or no lock support: nothing to hold
        }
    }
    return ERROR_SUCCESS;
}

bool DeletionRefused(int fd) {
    return HeldElsewhere(fd, kDeniesDelete);
}

}  // namespace nvk::os::posix
