// CBDate: a calendar date held as its Julian day number, Gregorian throughout,
// 0 being no date; and bdDate, the four bytes in which database files hold a
// date. Months are 1-12, week days 1 (Monday) to 7 (Sunday). The statics take
// month, day, year; the three-number constructor day, month, year.
#pragma once

#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>

#include "nvk/afx/cstring.h"
#include "nvk/afx/object.h"
#include "nvk/afx/ole_date_time.h"
#include "nvk/nvkutil_export.h"

static_assert(std::endian::native == std::endian::little, "bdDate stores its year little-endian");

// All four bytes zero stand for no date.
struct NVKUTIL_EXPORT bdDate {
    bdDate();  // today's local date

    std::uint8_t day;
    std::uint8_t month;
    std::uint16_t year;
};
static_assert(sizeof(bdDate) == 4);
static_assert(offsetof(bdDate, day) == 0 && offsetof(bdDate, month) == 1 &&
              offsetof(bdDate, year) == 2);

class NVKUTIL_EXPORT CBDate : public CObject {
    DECLARE_DYNCREATE(CBDate)

public:
    // The numbers are the interface.
    enum HowToPrint {
        PrintMonthDayYear = 0,  // "mars 5, 2014"
        PrintTerse = 1,         // " 5-mar-14"
        PrintNumericMDY = 2,    // "3/5/14"
        PrintNumericDMY = 3,    // "05/03/2014"
        PrintDayMonthYear = 4,  // "5 mars 2014"
    };
    // The process-wide print form of AsString, unguarded.
    static HowToPrint PrintOption;

    CBDate();  // today, on the local clock
    CBDate(const CBDate&) = default;
    CBDate& operator=(const CBDate&) = default;
    ~CBDate() override = default;
    // "dd/mm/yyyy" in fixed columns, whatever the separators; anything after
    // column 9 is ignored, and a text of fewer than 10 characters is no date.
    CBDate(const CString& text);
    // The date part of an OLE date; an invalid one is no date.
    CBDate(const COleDateTime& date);
    CBDate& operator=(const COleDateTime& date);
    explicit CBDate(double oleDate);
    CBDate& operator=(double oleDate);
    CBDate(const bdDate& record);
    // With year 0, `day` counts from 1 January 1901 (0 is that day); otherwise
    // it is the day of the year, 1 for 1 January.
    CBDate(unsigned day, unsigned year);
    CBDate(unsigned day, unsigned month, unsigned year);

    unsigned Month() const;
    unsigned DayOfMonth() const;
    unsigned Year() const;
    unsigned Day() const;  // day of the year
    unsigned WeekDay() const;
    bool Leap() const { return LeapYear(Year()); }
    unsigned DaysInMonth() const;
    unsigned FirstDayOfMonth() const { return FirstDayOfMonth(Month()); }
    // The day of the year on which `month` begins in this date's year.
    unsigned FirstDayOfMonth(unsigned month) const;
    bool IsValid() const { return m_DayNumber != 0; }
    std::uint32_t Hash() const { return m_DayNumber; }
    // Both ends included; the pair is taken as given.
    bool Between(const CBDate& first, const CBDate& last) const {
        return first.m_DayNumber <= m_DayNumber && m_DayNumber <= last.m_DayNumber;
    }
    int CompareTo(const CBDate& other) const;
    CBDate Max(const CBDate& other) const { return *this < other ? other : *this; }
    CBDate Min(const CBDate& other) const { return other < *this ? other : *this; }

    // The Julian day number, or 0 for a month or day out of range. Year 0 is
    // the year 2000.
    static std::uint32_t Jday(unsigned month, unsigned day, unsigned year);
    static int DayWithinMonth(unsigned month, unsigned day, unsigned year);
    static bool LeapYear(unsigned year);
    static unsigned DaysInYear(unsigned year) { return LeapYear(year) ? 366 : 365; }
    // Returns the previous form.
    static HowToPrint SetPrintOption(HowToPrint option);
    static bool AssertIndexOfMonth(unsigned month) { return month >= 1 && month < 13; }
    static bool AssertWeekDayNumber(unsigned weekDay) { return weekDay >= 1 && weekDay < 8; }

    void SetToFirstDayOfMonth();
    void SetToLastDayOfMonth();
    void SetToFirstDayOfNextMonth();
    void SetToLastDayOfNextMonth();
    void SetToFirstDayOfPreviousMonth();
    void SetToLastDayOfPreviousMonth();
    void SetToFirstDayOfYear();
    void SetToLastDayOfYear();
    // Day numbers wrap round, unchecked.
    CBDate& operator+=(int days) {
        m_DayNumber += static_cast<std::uint32_t>(days);
        return *this;
    }
    CBDate& operator-=(int days) {
        m_DayNumber -= static_cast<std::uint32_t>(days);
        return *this;
    }
    CBDate& operator++() { return *this += 1; }
    CBDate& operator--() { return *this -= 1; }
    CBDate operator++(int) {
        CBDate old = *this;
        ++*this;
        return old;
    }
    CBDate operator--(int) {
        CBDate old = *this;
        --*this;
        return old;
    }
    // The difference of the day numbers; a later date on the right wraps round.
    std::uint32_t operator-(const CBDate& other) const { return m_DayNumber - other.m_DayNumber; }
    // The latest date with that week day on or before this one.
    CBDate Previous(unsigned weekDay) const;

    // The invalid date sorts before every valid one.
    bool operator==(const CBDate& other) const { return m_DayNumber == other.m_DayNumber; }
    std::strong_ordering operator<=>(const CBDate& other) const {
        return m_DayNumber <=> other.m_DayNumber;
    }

    // In the current form and language; the invalid date is printed too. A
    // month outside 1 to 12 gets an empty name rather than a read outside the
    // table of names.
    CString AsString() const;
    // Decodes a time stamp of the Raima engine; non-zero if a date resulted.
    int ConvertRaimaDate(std::int32_t stamp);
    bdDate ToBtrDate() const;
    operator bdDate() const { return ToBtrDate(); }
    operator COleDateTime() const;
    explicit operator double() const;

private:
    explicit CBDate(std::uint32_t dayNumber) : m_DayNumber(dayNumber) {}
    friend CBDate operator+(CBDate date, unsigned days);

    void Mdy(unsigned& month, unsigned& day, unsigned& year) const;

    std::uint32_t m_DayNumber;
};

inline CBDate operator+(CBDate date, unsigned days) {
    return CBDate(date.m_DayNumber + days);
}

// A double on the left is read as CBDate(double), its time of day dropped.
NVKUTIL_EXPORT bool operator==(double left, const CBDate& right);
NVKUTIL_EXPORT bool operator!=(double left, const CBDate& right);
NVKUTIL_EXPORT bool operator<(double left, const CBDate& right);
NVKUTIL_EXPORT bool operator<=(double left, const CBDate& right);
NVKUTIL_EXPORT bool operator>(double left, const CBDate& right);
NVKUTIL_EXPORT bool operator>=(double left, const CBDate& right);
