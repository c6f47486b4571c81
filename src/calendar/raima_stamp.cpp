#include "calendar/raima_stamp.h"

#include "nvk/calendar/cbdate.h"

namespace nvk {

namespace {

constexpr int kDaysInMonth[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
// Day of the year, from 0, on which each month begins in a common year.
constexpr int kMonthStart[13] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
constexpr int kApril = 4;
constexpr int kOctober = 10;
// 1 January 1980, 00:00 in the engine's zone, less one second.
constexpr std::uint32_t kEpoch = 315550801;
constexpr int kHoursIn4Years = 35064;
constexpr int kHoursInLeapYear = 8784;
constexpr int kHoursInYear = 8760;

}  // namespace

bool RaimaDaylight(int hourOfDay, int yearDay, int yearsSince1970) {
    const int y = yearsSince1970;
    const bool leap = (y - 2) % 4 == 0;
    if (yearDay < 0) {
        return false;
    }
    const int lookUp = leap && yearDay >= 59 ? yearDay - 1 : yearDay;
    int month = 1;
    while (month < 12 && lookUp >= kMonthStart[month]) {
        ++month;
    }
    if (month < kApril || month > kOctober) {
        return false;
    }
    if (month > kApril && month < kOctober) {
        return true;
    }
    // The change is on the Sunday on or before a reference day: 7 April from
    // 1987 on, before that the last day of April; the last day of October.
    const int refDay = month == kApril && y > 16 ? 7 : kDaysInMonth[month - 1];
    const int refYearDay = kMonthStart[month - 1] + refDay - 1 + (leap ? 1 : 0);
    const int sundayOffset = ((y + 1) / 4 + refYearDay + 365 * y + 4) % 7;
    const int changeDay = refYearDay - sundayOffset;
    if (month == kApril) {
        return yearDay > changeDay || (yearDay == changeDay && hourOfDay >= 2);
    }
    return yearDay < changeDay || (yearDay == changeDay && hourOfDay <= 1);
}

// Signed 32-bit arithmetic throughout, divisions truncating toward zero, as
// the engine computes it; the first subtraction wraps for the oldest stamps.
std::uint32_t RaimaStampDay(std::int32_t stamp) {
    const auto seconds = static_cast<std::int32_t>(static_cast<std::uint32_t>(stamp) - kEpoch);
    const std::int32_t hours = seconds / 60 / 60;
    const std::int32_t quads = hours / kHoursIn4Years;
    int year = 1980 + 4 * quads;
    int h = hours - kHoursIn4Years * quads;
    if (h >= kHoursInLeapYear) {
        h -= kHoursInLeapYear;
        const int years = h / kHoursInYear;
        year += 1 + years;
        h -= kHoursInYear * years;
    }
    const int yearDay = h / 24;
    const int hourOfDay = h - 24 * yearDay;
    if (RaimaDaylight(hourOfDay, yearDay, year - 1970)) {
        ++h;
    }
    int dayNo = h / 24 + 1;
    // The leap day is taken out by the four-year rule alone, centuries
    // included.
    if (year % 4 == 0) {
        if (dayNo == 60) {
            return CBDate::Jday(2, 29, static_cast<unsigned>(year));
        }
        if (dayNo > 60) {
            --dayNo;
        }
    }
    int month = 1;
    while (month < 12 && dayNo > kDaysInMonth[month - 1]) {
        dayNo -= kDaysInMonth[month - 1];
        ++month;
    }
    return CBDate::Jday(static_cast<unsigned>(month), static_cast<unsigned>(dayNo),
                        static_cast<unsigned>(year));
}

}  // namespace nvk
