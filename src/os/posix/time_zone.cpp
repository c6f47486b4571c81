#include "os/api/time_zone.h"

#include <time.h>

#include <algorithm>
#include <chrono>

namespace nvk::os {

namespace {

struct Zone {
    long timezone;
    int daylight;
};

// The C library's `daylight` tells whether the zone ever had daylight time in
// its history (so Martinique, Kolkata or Tokyo would keep it), and its
// `timezone` is the offset of the zone's latest "standard" time, which the
// rules of Europe/Dublin name the summer one. Both are taken instead from
// the zone's rules of this year: the offsets in the middle of January and of
// July. Standard time is the earlier clock of the two, and a zone whose two
// offsets agree has no daylight time.
Zone ReadZone() {
    tzset();
    const time_t now = time(nullptr);
    struct tm today {};
    gmtime_r(&now, &today);
    auto offsetIn = [&](int month) {
        struct tm moment {};
        moment.tm_year = today.tm_year;
        moment.tm_mon = month;
        moment.tm_mday = 15;
        moment.tm_hour = 12;
        const time_t when = timegm(&moment);
        struct tm local {};
        localtime_r(&when, &local);
        return local.tm_gmtoff;
    };
    const long january = offsetIn(0);
    const long july = offsetIn(6);
    return {-std::min(january, july), january != july ? 1 : 0};
}

// The C library may read the environment again on its own (localtime does),
// so the values of the last _tzset are kept apart.
Zone& CurrentZone() {
    static Zone zone = ReadZone();
    return zone;
}

void Fill(SYSTEMTIME* time, const struct tm& parts, long milliseconds) {
    time->wYear = static_cast<WORD>(parts.tm_year + 1900);
    time->wMonth = static_cast<WORD>(parts.tm_mon + 1);
    time->wDayOfWeek = static_cast<WORD>(parts.tm_wday);
    time->wDay = static_cast<WORD>(parts.tm_mday);
    time->wHour = static_cast<WORD>(parts.tm_hour);
    time->wMinute = static_cast<WORD>(parts.tm_min);
    time->wSecond = static_cast<WORD>(parts.tm_sec);
    time->wMilliseconds = static_cast<WORD>(milliseconds);
}

void Now(SYSTEMTIME* time, struct tm* (*split)(const time_t*, struct tm*)) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    struct tm parts {};
    split(&now.tv_sec, &parts);
    Fill(time, parts, now.tv_nsec / 1000000);
}

}  // namespace

void GetLocalTime(SYSTEMTIME* time) {
    Now(time, localtime_r);
}

void GetSystemTime(SYSTEMTIME* time) {
    Now(time, gmtime_r);
}

void _tzset() {
    CurrentZone() = ReadZone();
}

int _get_timezone(long* seconds) {
    *seconds = CurrentZone().timezone;
    return 0;
}

int _get_daylight(int* hours) {
    *hours = CurrentZone().daylight;
    return 0;
}

LONG _time32(LONG* destination) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(
                             std::chrono::system_clock::now().time_since_epoch())
                             .count();
    const LONG value = static_cast<LONG>(static_cast<DWORD>(seconds));
    if (destination != nullptr) {
        *destination = value;
    }
    return value;
}

}  // namespace nvk::os
