// Share modes between opens of one file, in one process or several.
//
// Every open states what it holds and what it refuses to share by taking
// shared (read) byte-range locks of its open file description on marker bytes
// far past any file position: one byte each for "holds read", "holds write",
// "holds delete", "denies read", "denies write" and "denies delete". A new open
// takes its own markers, then probes those that conflict with it and gives
// its own back if one is held elsewhere: of two opens that race, neither can
// miss the other. On local file systems the whole step runs under an
// exclusive flock() of the descriptor, so that one of two racing opens wins
// instead of both failing; network file systems emulate flock() with
// byte-range locks, which the markers would block, and go without. The kernel
// drops the markers with the descriptor, so an open that ends, however it
// ends, leaves nothing behind.
//
// No lock here ever waits without a bound. Another program may hold a flock()
// of the file for as long as it likes (backup and synchronisation tools do):
// the gate is tried without waiting, again for a few milliseconds (the gate of
// another open is held for a few system calls only), and then the open counts
// as refused by another party, which callers retry as they see fit.
#pragma once

#include <cstdint>

#include "nvk/os/types.h"

namespace nvk::os::posix {

// Byte-range locks of the application end before the markers.
inline constexpr std::int64_t kMarkerBase = std::int64_t{1} << 62;

struct ShareRequest {
    bool read = false;
    bool write = false;
    bool remove = false;
    bool shareRead = false;
    bool shareWrite = false;
    bool shareDelete = false;
};

// Serialises checks of one file across its opens, on local file systems.
class ShareGate {
public:
    explicit ShareGate(int fd);
    ~ShareGate();
    ShareGate(const ShareGate&) = delete;
    ShareGate& operator=(const ShareGate&) = delete;

    // Another party held the gate past the short wait: the file counts as
    // held elsewhere (ERROR_SHARING_VIOLATION).
    bool Busy() const { return busy_; }

private:
    int fd_;
    bool held_ = false;
    bool busy_ = false;
};

// Under the gate: takes the request's markers on `fd` and returns
// ERROR_SUCCESS, or ERROR_SHARING_VIOLATION, holding nothing, if another open
// conflicts with the request. A descriptor that can't hold read locks (opened
// write-only) or a file system without locks checks the others only.
DWORD AcquireShare(int fd, const ShareRequest& request);

// Whether some open of the file at `path`, a regular file, refuses its
// deletion, or with `reading` also its reading (or holds the gate past the
// short wait).
bool DeletionRefused(const char* path, bool reading = false);

}  // namespace nvk::os::posix
