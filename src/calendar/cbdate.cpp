#include "nvk/calendar/cbdate.h"

#include <cstdlib>

#include "calendar/month_names.h"
#include "calendar/raima_stamp.h"
#include "os/api/time_zone.h"
#include "os/api/variant_time.h"

IMPLEMENT_DYNCREATE(CBDate, CObject)

CBDate::HowToPrint CBDate::PrintOption = CBDate::PrintNumericDMY;

using nvk::os::SYSTEMTIME;
using nvk::os::WORD;

namespace {

constexpr std::uint8_t kDaysInMonth[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr unsigned kFirstDayOfMonth[12] = {1, 32, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335};
// 1 January 1901, the origin of the year-0 form of CBDate(day, year).
constexpr std::uint32_t kDay1901 = 2415386;

SYSTEMTIME LocalNow() {
    SYSTEMTIME now{};
    nvk::os::GetLocalTime(&now);
    return now;
}

std::uint32_t FromOle(double oleDate) {
    SYSTEMTIME parts{};
    if (!nvk::os::VariantTimeToSystemTime(oleDate, &parts)) {
        return 0;  // the parts would read 0xFFFFFFFF, which Jday rejects
    }
    return CBDate::Jday(parts.wMonth, parts.wDay, parts.wYear);
}

}  // namespace

bdDate::bdDate() {
    const SYSTEMTIME now = LocalNow();
    day = static_cast<std::uint8_t>(now.wDay);
    month = static_cast<std::uint8_t>(now.wMonth);
    year = now.wYear;
}

CBDate::CBDate() {
    const SYSTEMTIME now = LocalNow();
    m_DayNumber = Jday(now.wMonth, now.wDay, now.wYear);
}

CBDate::CBDate(const CString& text) : m_DayNumber(0) {
    if (text.GetLength() < 10) {
        return;
    }
    const int day = std::atoi(text.Mid(0, 2));
    const int month = std::atoi(text.Mid(3, 2));
    const int year = std::atoi(text.Mid(6, 4));
    m_DayNumber =
        Jday(static_cast<unsigned>(month), static_cast<unsigned>(day), static_cast<unsigned>(year));
}

CBDate::CBDate(const COleDateTime& date)
    : m_DayNumber(date.GetStatus() == COleDateTime::valid ? FromOle(date.m_dt) : 0) {}

CBDate& CBDate::operator=(const COleDateTime& date) {
    return *this = CBDate(date);
}

CBDate::CBDate(double oleDate) : m_DayNumber(FromOle(oleDate)) {}

CBDate& CBDate::operator=(double oleDate) {
    m_DayNumber = FromOle(oleDate);
    return *this;
}

CBDate::CBDate(const bdDate& record) : m_DayNumber(Jday(record.month, record.day, record.year)) {}

CBDate::CBDate(unsigned day, unsigned year)
    : m_DayNumber(year == 0 ? day + kDay1901 : Jday(12, 31, year - 1) + day) {}

CBDate::CBDate(unsigned day, unsigned month, unsigned year) : m_DayNumber(Jday(month, day, year)) {}

bool CBDate::LeapYear(unsigned year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int CBDate::DayWithinMonth(unsigned month, unsigned day, unsigned year) {
    if (day == 0 || !AssertIndexOfMonth(month)) {
        return 0;
    }
    const unsigned days = month == 2 && LeapYear(year) ? 29 : kDaysInMonth[month - 1];
    return day <= days;
}

std::uint32_t CBDate::Jday(unsigned month, unsigned day, unsigned year) {
    if (month == 0 || day == 0) {
        return 0;
    }
    if (year == 0) {
        year = 2000;  // fixed on purpose: neither the current year nor a century window
    }
    if (!DayWithinMonth(month, day, year)) {
        return 0;
    }
    std::uint32_t m = month > 2 ? month - 3 : month + 9;
    std::uint32_t y = month > 2 ? year : year - 1;
    const std::uint32_t c = y / 100;
    const std::uint32_t a = y - 100 * c;
    return (146097 * c) / 4 + (1461 * a) / 4 + (153 * m + 2) / 5 + day + 1721119;
}

// Inverts Jday without checking that the number is a date: below the first
// day of the year 1 the subtraction wraps, and no date (0) comes out as
// 28 February 2935093, which callers see and rely on.
void CBDate::Mdy(unsigned& month, unsigned& day, unsigned& year) const {
    const std::uint32_t t = 4 * m_DayNumber - 6884476;
    const std::uint32_t y = (t - 1) / 146097;
    const std::uint32_t d = (t - 146097 * y - 1) & ~std::uint32_t{3};
    const std::uint32_t j = (d + 3) / 1461;
    const std::uint32_t e = 5 * ((d - 1461 * j + 7) / 4);
    const std::uint32_t m = (e - 3) / 153;
    day = (e - 153 * m + 2) / 5;
    year = 100 * y + j;
    if (m < 10) {
        month = m + 3;
    } else {
        month = m - 9;
        ++year;
    }
}

unsigned CBDate::Month() const {
    unsigned month, day, year;
    Mdy(month, day, year);
    return month;
}

unsigned CBDate::DayOfMonth() const {
    unsigned month, day, year;
    Mdy(month, day, year);
    return day;
}

unsigned CBDate::Year() const {
    unsigned month, day, year;
    Mdy(month, day, year);
    return year;
}

unsigned CBDate::Day() const {
    return m_DayNumber - Jday(12, 31, Year() - 1);
}

unsigned CBDate::WeekDay() const {
    return ((m_DayNumber + 1) % 7 + 6) % 7 + 1;
}

unsigned CBDate::DaysInMonth() const {
    const unsigned month = Month();
    if (!AssertIndexOfMonth(month)) {
        return 0;
    }
    return month == 2 && Leap() ? 29 : kDaysInMonth[month - 1];
}

unsigned CBDate::FirstDayOfMonth(unsigned month) const {
    if (!AssertIndexOfMonth(month)) {
        return 0;
    }
    return kFirstDayOfMonth[month - 1] + (month > 2 && Leap() ? 1 : 0);
}

int CBDate::CompareTo(const CBDate& other) const {
    return m_DayNumber < other.m_DayNumber ? -1 : m_DayNumber > other.m_DayNumber ? 1 : 0;
}

CBDate::HowToPrint CBDate::SetPrintOption(HowToPrint option) {
    const HowToPrint old = PrintOption;
    PrintOption = option;
    return old;
}

void CBDate::SetToFirstDayOfMonth() {
    *this = CBDate(FirstDayOfMonth(Month()), Year());
}

void CBDate::SetToLastDayOfPreviousMonth() {
    SetToFirstDayOfMonth();
    --m_DayNumber;
}

void CBDate::SetToFirstDayOfNextMonth() {
    const unsigned month = Month();
    const unsigned year = Year();
    m_DayNumber = month == 12 ? Jday(1, 1, year + 1) : Jday(month + 1, 1, year);
}

void CBDate::SetToFirstDayOfPreviousMonth() {
    const unsigned month = Month();
    const unsigned year = Year();
    m_DayNumber = month == 1 ? Jday(12, 1, year - 1) : Jday(month - 1, 1, year);
}

void CBDate::SetToLastDayOfMonth() {
    SetToFirstDayOfNextMonth();
    --m_DayNumber;
}

void CBDate::SetToLastDayOfNextMonth() {
    SetToFirstDayOfNextMonth();
    SetToLastDayOfMonth();
}

void CBDate::SetToFirstDayOfYear() {
    m_DayNumber = Jday(1, 1, Year());
}

void CBDate::SetToLastDayOfYear() {
    m_DayNumber = Jday(12, 31, Year());
}

CBDate CBDate::Previous(unsigned weekDay) const {
    const unsigned w = WeekDay() - 1;
    if (weekDay - 1 <= w) {
        return CBDate(m_DayNumber + (weekDay - 1 - w));
    }
    return CBDate(m_DayNumber - (w + 8 - weekDay));
}

CString CBDate::AsString() const {
    unsigned month, day, year;
    Mdy(month, day, year);
    CString name;
    if (month != 0) {
        name = nvk::MonthName(month);
    }
    CString text;
    switch (PrintOption) {
        case PrintMonthDayYear:
            text.Format("%s %d, %d", name.GetString(), day, year);
            break;
        case PrintTerse:
            text.Format("%2u-%.3s-%.2u", day, name.GetString(), year % 100);
            break;
        case PrintNumericMDY:
            text.Format("%d/%d/%d", month, day, year % 100);
            break;
        case PrintNumericDMY:
            text.Format("%02d/%02d/%04d", day, month, year);
            break;
        case PrintDayMonthYear:
            text.Format("%d %s %d", day, name.GetString(), year);
            break;
    }
    return text;
}

int CBDate::ConvertRaimaDate(std::int32_t stamp) {
    m_DayNumber = nvk::RaimaStampDay(stamp);
    return m_DayNumber != 0;
}

bdDate CBDate::ToBtrDate() const {
    bdDate record;
    if (!IsValid()) {
        record.day = 0;
        record.month = 0;
        record.year = 0;
        return record;
    }
    unsigned month, day, year;
    Mdy(month, day, year);
    record.day = static_cast<std::uint8_t>(day);
    record.month = static_cast<std::uint8_t>(month);
    record.year = static_cast<std::uint16_t>(year);
    return record;
}

CBDate::operator COleDateTime() const {
    unsigned month, day, year;
    Mdy(month, day, year);
    SYSTEMTIME parts{};
    parts.wYear = static_cast<WORD>(year);
    parts.wMonth = static_cast<WORD>(month);
    parts.wDay = static_cast<WORD>(day);
    COleDateTime result;
    SYSTEMTIME back{};
    if (!nvk::os::SystemTimeToVariantTime(&parts, &result.m_dt) ||
        !nvk::os::VariantTimeToSystemTime(result.m_dt, &back) || back.wYear != parts.wYear ||
        back.wMonth != parts.wMonth || back.wDay != parts.wDay || back.wHour != 0 ||
        back.wMinute != 0 || back.wSecond != 0) {
        result.m_dt = 0;
        result.SetStatus(COleDateTime::invalid);
    }
    return result;
}

CBDate::operator double() const {
    return static_cast<COleDateTime>(*this).m_dt;
}

bool operator==(double left, const CBDate& right) {
    return CBDate(left) == right;
}
bool operator!=(double left, const CBDate& right) {
    return CBDate(left) != right;
}
bool operator<(double left, const CBDate& right) {
    return CBDate(left) < right;
}
bool operator<=(double left, const CBDate& right) {
    return CBDate(left) <= right;
}
bool operator>(double left, const CBDate& right) {
    return CBDate(left) > right;
}
bool operator>=(double left, const CBDate& right) {
    return CBDate(left) >= right;
}
