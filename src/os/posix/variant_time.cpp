#include "os/api/variant_time.h"

#include <cmath>
#include <cstdint>

namespace nvk::os {

namespace {

constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;
// Days from 30 December 1899 to 1 January 1970.
constexpr std::int64_t kUnixEpoch = 25569;
constexpr double kFirstDay = -657434.0;  // 1 January 100
constexpr double kEndDay = 2958466.0;    // 1 January 10000
constexpr int kSecondsPerDay = 86400;

// Days from 1 January 1970 of a Gregorian date, in eras of 400 years so that
// the arithmetic stays on non-negative numbers.
std::int64_t DaysFromCivil(int year, int month, int day) {
    const int y = month <= 2 ? year - 1 : year;
    const int era = (y >= 0 ? y : y - 399) / 400;
    const int yearOfEra = y - era * 400;
    const int dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return static_cast<std::int64_t>(era) * 146097 + dayOfEra - 719468;
}

void CivilFromDays(std::int64_t days, int& year, int& month, int& day) {
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const int dayOfEra = static_cast<int>(days - era * 146097);
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int shifted = (5 * dayOfYear + 2) / 153;
    day = dayOfYear - (153 * shifted + 2) / 5 + 1;
    month = shifted < 10 ? shifted + 3 : shifted - 9;
    year = static_cast<int>(yearOfEra + era * 400) + (month <= 2 ? 1 : 0);
}

}  // namespace

int SystemTimeToVariantTime(const SYSTEMTIME* time, double* variant) {
    const int year = time->wYear;
    const int month = time->wMonth;
    // Windows fixes the day alone: 0 is the last day of the month before,
    // and a day past the month's end runs into the next one.
    if (year < kFirstYear || year > kLastYear || month < 1 || month > 12 || time->wDay > 31 ||
        time->wHour > 23 || time->wMinute > 59 || time->wSecond > 59) {
        return 0;
    }
    const double day = static_cast<double>(DaysFromCivil(year, month, time->wDay) + kUnixEpoch);
    if (day < kFirstDay || day >= kEndDay) {
        return 0;
    }
    const double fraction =
        (time->wHour * 3600 + time->wMinute * 60 + time->wSecond) / double(kSecondsPerDay);
    *variant = day < 0 ? day - fraction : day + fraction;
    return 1;
}

int VariantTimeToSystemTime(double variant, SYSTEMTIME* time) {
    if (!(variant > kFirstDay - 1.0 && variant < kEndDay)) {  // NaN fails too
        return 0;
    }
    std::int64_t day = static_cast<std::int64_t>(std::trunc(variant));
    auto seconds =
        static_cast<int>(std::lround(std::fabs(variant - std::trunc(variant)) * kSecondsPerDay));
    if (seconds == kSecondsPerDay) {
        ++day;
        seconds = 0;
    }
    int year = 0;
    int month = 0;
    int dayOfMonth = 0;
    const std::int64_t unixDay = day - kUnixEpoch;
    CivilFromDays(unixDay, year, month, dayOfMonth);
    if (year < kFirstYear || year > kLastYear) {
        return 0;
    }
    time->wYear = static_cast<WORD>(year);
    time->wMonth = static_cast<WORD>(month);
    time->wDayOfWeek = static_cast<WORD>(((unixDay + 4) % 7 + 7) % 7);  // 1970 began on a Thursday
    time->wDay = static_cast<WORD>(dayOfMonth);
    time->wHour = static_cast<WORD>(seconds / 3600);
    time->wMinute = static_cast<WORD>(seconds / 60 % 60);
    time->wSecond = static_cast<WORD>(seconds % 60);
    time->wMilliseconds = 0;
    return 1;
}

}  // namespace nvk::os
