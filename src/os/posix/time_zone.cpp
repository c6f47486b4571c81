#include "os/api/time_zone.h"

#include <time.h>

#include <chrono>

namespace nvk::os {

namespace {

struct Zone {
    long timezone;
    int daylight;
};

Zone ReadZone() {
    tzset();
    return {::timezone, ::daylight};
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
