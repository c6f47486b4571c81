// The C runtime's zone data, from the variables of the system's runtime DLL,
// which has no getters.
#include <stdlib.h>

#include <string>

#include "os/win32/forward.h"

namespace nvk::os {

// The runtime's _tzset reads TZ from the runtime's copy of the environment,
// taken at start-up, which SetEnvironmentVariableA leaves as it was: the
// process's value is passed on first.
void _tzset() {
    char zone[256] = {};
    const ::DWORD length = ::GetEnvironmentVariableA("TZ", zone, sizeof zone);
    // "TZ=" alone removes it.
    const std::string setting = std::string("TZ=") + (length < sizeof zone ? zone : "");
    ::_putenv(setting.c_str());
    ::_tzset();
}

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
