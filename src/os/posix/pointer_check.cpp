// The mappings come from /proc/self/maps, read at each call: they change as
// the process maps and unmaps memory, and a stale copy would answer wrongly.
#include "os/api/pointer_check.h"

#include <cstdio>
#include <cstdlib>

namespace nvk::os {

BOOL IsBadWritePtr(LPVOID address, ULONG_PTR size) {
    if (size == 0) {
        return FALSE;
    }
    const auto first = reinterpret_cast<ULONG_PTR>(address);
    if (address == nullptr || first + size < first) {
        return TRUE;
    }
    std::FILE* maps = std::fopen("/proc/self/maps", "re");
    if (maps == nullptr) {
        return TRUE;
    }
    // The mappings are listed in ascending order: walk them while they
    // cover the range without a gap and may be written.
    ULONG_PTR covered = first;
    const ULONG_PTR end = first + size;
    char line[512];
    while (covered < end && std::fgets(line, sizeof line, maps) != nullptr) {
        char* cursor = nullptr;
        const ULONG_PTR low = std::strtoull(line, &cursor, 16);
        const ULONG_PTR high = std::strtoull(cursor + 1, &cursor, 16);
        const bool writable = cursor[0] == ' ' && cursor[2] == 'w';
        if (high <= covered) {
            continue;
        }
        if (low > covered || !writable) {
            break;
        }
        covered = high;
    }
    std::fclose(maps);
    return covered >= end ? FALSE : TRUE;
}

}  // namespace nvk::os
