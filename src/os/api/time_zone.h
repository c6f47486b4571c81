// The local clock and the C runtime's zone data.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// Today's date and the time of day on the local clock, milliseconds included.
void GetLocalTime(SYSTEMTIME* time);
// The same in Greenwich time.
void GetSystemTime(SYSTEMTIME* time);

// Reads the zone from the environment (TZ, or the system's zone when it is
// unset). The two getters answer for the zone of the last call; before any
// call they answer for the zone in force when they are first asked.
void _tzset();
// Seconds west of Greenwich of the zone's standard time, the earlier clock of
// its rules of this year: a zone one hour east gives -3600. Returns 0.
int _get_timezone(long* seconds);
// Non-zero if the zone's rules of this year have a daylight time at all,
// whatever its history. Returns 0.
int _get_daylight(int* hours);

// Seconds since 1 January 1970, Greenwich time, cut to 32 bits; also stored at
// `destination` when it is not null.
LONG _time32(LONG* destination);

}  // namespace nvk::os
