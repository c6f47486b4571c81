// The C runtime's zone data, from the variables of the system's runtime DLL,
// which has no getters.
#include "os/win32/forward.h"

namespace nvk::os {

int _get_timezone(long* seconds) {
    *seconds = ::_timezone;
    return 0;
}

int _get_daylight(int* hours) {
    *hours = ::_daylight;
    return 0;
}

LONG _time32(LONG* destination) {
    const auto now = static_cast<LONG>(::time(nullptr));
    if (destination != nullptr) {
        *destination = now;
    }
    return now;
}

}  // namespace nvk::os
