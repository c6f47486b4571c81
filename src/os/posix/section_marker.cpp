#include "os/posix/section_marker.h"

#include <fcntl.h>

#include "os/posix/share_modes.h"

namespace nvk::os::posix {

namespace {

constexpr off_t kSectionMarker = kMarkerBase + 64;

struct flock MarkerLock(short type) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kSectionMarker;
    lock.l_len = 1;
    return lock;
}

}  // namespace

void HoldSectionMarker(int fd) {
    struct flock lock = MarkerLock(F_RDLCK);
    fcntl(fd, F_OFD_SETLK, &lock);
}

bool SectionOpen(int fd) {
    struct flock probe = MarkerLock(F_WRLCK);
    return fcntl(fd, F_OFD_GETLK, &probe) == 0 && probe.l_type != F_UNLCK;
}

}  // namespace nvk::os::posix
