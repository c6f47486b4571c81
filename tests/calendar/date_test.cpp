#include <gtest/gtest.h>

#include <memory>

#include "nvk/calendar/cbdate.h"

namespace {

constexpr std::uint32_t kDay1901 = 2415386;  // 1 January 1901
constexpr std::uint32_t kYear1 = 1721426;    // 1 January of the year 1

// The date of any day number, through the year-0 form that counts from 1901.
CBDate FromNumber(std::uint32_t number) {
    return CBDate(number - kDay1901, 0);
}

struct Mdy {
    unsigned month, day, year;
    bool operator==(const Mdy&) const = default;
};

Mdy Parts(const CBDate& date) {
    return {date.Month(), date.DayOfMonth(), date.Year()};
}

// Sets a print form for the scope of a test.
class PrintForm {
public:
    explicit PrintForm(CBDate::HowToPrint form) : old_(CBDate::SetPrintOption(form)) {}
    ~PrintForm() { CBDate::SetPrintOption(old_); }

private:
    CBDate::HowToPrint old_;
};

TEST(DateTest, JulianDaysRoundTripDayByDayAndUpToTheLastInvertibleDay) {
    Mdy previous = Parts(FromNumber(kYear1 - 1));
    EXPECT_EQ(previous, (Mdy{12, 31, 0}));
    // Every day up to the year 10000 follows the one before it.
    for (std::uint32_t n = kYear1; n < 5373485; ++n) {
        const Mdy parts = Parts(FromNumber(n));
        const bool nextDay = parts.day == previous.day + 1 && parts.month == previous.month &&
                             parts.year == previous.year;
        const bool nextMonth = parts.day == 1 && (parts.month == previous.month + 1
                                                      ? parts.year == previous.year
                                                      : parts.month == 1 && previous.month == 12 &&
                                                            parts.year == previous.year + 1);
        ASSERT_TRUE(nextDay || nextMonth) << n;
        ASSERT_EQ(CBDate::Jday(parts.month, parts.day, parts.year), n);
        previous = parts;
    }
    // Beyond, a sample up to the last day that inverts correctly.
    for (std::uint32_t n = 5373485; n <= 1075462942u - 9973; n += 9973) {
        const Mdy parts = Parts(FromNumber(n));
        ASSERT_EQ(CBDate::Jday(parts.month, parts.day, parts.year), n);
    }
    EXPECT_EQ(Parts(FromNumber(1075462942)), (Mdy{6, 4, 2939805}));
    EXPECT_EQ(CBDate::Jday(6, 4, 2939805), 1075462942u);
    EXPECT_EQ(CBDate::Jday(1, 1, 1), kYear1);
    EXPECT_EQ(CBDate::Jday(1, 1, 2000), 2451545u);
}

TEST(DateTest, YearZeroIsTheYear2000) {
    EXPECT_EQ(CBDate::Jday(2, 29, 0), 2451604u);
    EXPECT_EQ(CBDate::Jday(2, 29, 2000), 2451604u);
    EXPECT_EQ(Parts(CBDate(17, 4, 85)), (Mdy{4, 17, 85}));  // no century window
    // The day-and-year form: year 0 counts from 1 January 1901, other years
    // give the day of the year, and year 1 reaches back to year 0, so 2000.
    EXPECT_EQ(CBDate(0, 0).Hash(), kDay1901);
    EXPECT_EQ(Parts(CBDate(1, 0)), (Mdy{1, 2, 1901}));
    EXPECT_EQ(Parts(CBDate(1, 2000)), (Mdy{1, 1, 2000}));
    EXPECT_EQ(Parts(CBDate(5, 1)), (Mdy{1, 5, 2001}));
    // January of year 1 steps back into year 0, read as 2000.
    CBDate january(10, 1, 1);
    january.SetToFirstDayOfPreviousMonth();
    EXPECT_EQ(Parts(january), (Mdy{12, 1, 2000}));
}

TEST(DateTest, LeapYearsAndMonthLengths) {
    EXPECT_EQ(CBDate::Jday(2, 29, 1900), 0u);  // divisible by 100
    EXPECT_NE(CBDate::Jday(2, 29, 2024), 0u);
    EXPECT_EQ(CBDate::Jday(2, 29, 2023), 0u);
    EXPECT_EQ(CBDate::Jday(4, 31, 2024), 0u);
    EXPECT_EQ(CBDate::Jday(13, 1, 2024), 0u);
    EXPECT_EQ(CBDate::Jday(1, 0, 2024), 0u);
    EXPECT_EQ(CBDate::DaysInYear(2100), 365u);

    const CBDate leap(15, 2, 2024);
    EXPECT_EQ(leap.DaysInMonth(), 29u);
    EXPECT_EQ(leap.FirstDayOfMonth(3), 61u);
    EXPECT_EQ(leap.FirstDayOfMonth(13), 0u);
    EXPECT_EQ(CBDate(31, 12, 2024).Day(), 366u);
    EXPECT_EQ(CBDate(1, 3, 2023).FirstDayOfMonth(), 60u);
}

TEST(DateTest, NoDateDecomposesAndSortsFirst) {
    const CBDate none(CString("too short"));
    EXPECT_FALSE(none.IsValid());
    EXPECT_EQ(Parts(none), (Mdy{2, 28, 2935093}));
    const bdDate record = none.ToBtrDate();
    EXPECT_EQ(record.day, 0);
    EXPECT_EQ(record.month, 0);
    EXPECT_EQ(record.year, 0);
    EXPECT_EQ(none.AsString(), "28/02/2935093");  // with the default form

    const CBDate first(1, 1, 1);
    EXPECT_LT(none, first);
    EXPECT_EQ(none.CompareTo(first), -1);
    EXPECT_EQ(first.CompareTo(none), 1);
    EXPECT_EQ(none, FromNumber(0));
    EXPECT_NE(none, first);
    EXPECT_EQ(none - first, 0u - kYear1);  // the difference wraps round
}

TEST(DateTest, WeekDaysAndPrevious) {
    EXPECT_EQ(CBDate(1, 1, 1901).WeekDay(), 2u);  // a Tuesday
    const CBDate sunday(9, 3, 2014);
    for (unsigned i = 0; i < 7; ++i) {
        EXPECT_EQ((sunday + i).WeekDay(), i == 0 ? 7 : i);
    }
    EXPECT_EQ(sunday.Previous(7), sunday);
    EXPECT_EQ(sunday.Previous(1), CBDate(3, 3, 2014));
    EXPECT_EQ((sunday + 1).Previous(7), sunday);
}

TEST(DateTest, TextIsReadInFixedColumns) {
    const CBDate expected(5, 3, 2014);
    EXPECT_EQ(CBDate(CString("05/03/2014")), expected);
    EXPECT_EQ(CBDate(CString("05-03-2014 12:00")), expected);
    EXPECT_EQ(CBDate(CString("05x03y2014")), expected);
    EXPECT_FALSE(CBDate(CString("5/3/2014")).IsValid());
    EXPECT_FALSE(CBDate(CString("31/02/2014")).IsValid());
    EXPECT_FALSE(CBDate(CString("-1/03/2014")).IsValid());
}

TEST(DateTest, MovesWithinMonthsAndYears) {
    const CBDate start(15, 2, 2024);
    auto moved = [&](void (CBDate::*move)()) {
        CBDate date = start;
        (date.*move)();
        return Parts(date);
    };
    EXPECT_EQ(moved(&CBDate::SetToFirstDayOfMonth), (Mdy{2, 1, 2024}));
    EXPECT_EQ(moved(&CBDate::SetToLastDayOfMonth), (Mdy{2, 29, 2024}));
    EXPECT_EQ(moved(&CBDate::SetToFirstDayOfNextMonth), (Mdy{3, 1, 2024}));
    EXPECT_EQ(moved(&CBDate::SetToLastDayOfNextMonth), (Mdy{3, 31, 2024}));
    EXPECT_EQ(moved(&CBDate::SetToFirstDayOfPreviousMonth), (Mdy{1, 1, 2024}));
    EXPECT_EQ(moved(&CBDate::SetToLastDayOfPreviousMonth), (Mdy{1, 31, 2024}));
    EXPECT_EQ(moved(&CBDate::SetToFirstDayOfYear), (Mdy{1, 1, 2024}));
    EXPECT_EQ(moved(&CBDate::SetToLastDayOfYear), (Mdy{12, 31, 2024}));

    CBDate december(20, 12, 2023);
    december.SetToLastDayOfNextMonth();
    EXPECT_EQ(Parts(december), (Mdy{1, 31, 2024}));
    december.SetToFirstDayOfPreviousMonth();
    EXPECT_EQ(Parts(december), (Mdy{12, 1, 2023}));

    CBDate date = start;
    date += 14;
    EXPECT_EQ(Parts(++date), (Mdy{3, 1, 2024}));
    EXPECT_EQ(date - start, 15u);
    EXPECT_FALSE(date.Between(date + 1, start));  // the pair is not reordered
}

TEST(DateTest, PrintOptionIsSwapped) {
    EXPECT_EQ(CBDate::SetPrintOption(CBDate::PrintTerse), CBDate::PrintNumericDMY);
    EXPECT_EQ(CBDate::SetPrintOption(CBDate::PrintNumericDMY), CBDate::PrintTerse);
    PrintForm numeric(CBDate::PrintNumericMDY);
    EXPECT_EQ(CBDate(5, 3, 2014).AsString(), "3/5/14");
}

TEST(DateTest, OleDatesCountFrom30December1899) {
    EXPECT_EQ(Parts(CBDate(0.0)), (Mdy{12, 30, 1899}));
    EXPECT_EQ(Parts(CBDate(2.75)), (Mdy{1, 1, 1900}));
    EXPECT_EQ(Parts(CBDate(-1.25)), (Mdy{12, 29, 1899}));
    EXPECT_EQ(Parts(CBDate(36526.0)), (Mdy{1, 1, 2000}));
    EXPECT_FALSE(CBDate(1e9).IsValid());
    EXPECT_FALSE(CBDate(-700000.0).IsValid());

    const CBDate millennium(1, 1, 2000);
    EXPECT_DOUBLE_EQ(static_cast<double>(millennium), 36526.0);
    const COleDateTime ole = millennium;
    EXPECT_EQ(ole.GetStatus(), COleDateTime::valid);
    EXPECT_EQ(CBDate(ole), millennium);
    COleDateTime bad(36526.0);
    bad.SetStatus(COleDateTime::invalid);
    EXPECT_FALSE(CBDate(bad).IsValid());
    // Beyond the year 9999, and for no date, the OLE date is invalid.
    EXPECT_EQ(static_cast<COleDateTime>(CBDate(1, 1, 10000)).GetStatus(), COleDateTime::invalid);
    EXPECT_EQ(static_cast<COleDateTime>(CBDate(CString())).GetStatus(), COleDateTime::invalid);

    // A double on the left loses its time of day.
    EXPECT_TRUE(36526.75 == millennium);
    EXPECT_TRUE(36525.9 < millennium);
}

TEST(DateTest, DatabaseRecords) {
    bdDate record;
    EXPECT_EQ(CBDate(record), CBDate());  // both today
    record = CBDate(29, 2, 2024);
    EXPECT_EQ(record.day, 29);
    EXPECT_EQ(record.month, 2);
    EXPECT_EQ(record.year, 2024);
    EXPECT_EQ(CBDate(record), CBDate(29, 2, 2024));
}

TEST(DateTest, RuntimeClassMakesToday) {
    const CRuntimeClass* info = RUNTIME_CLASS(CBDate);
    EXPECT_STREQ(info->m_lpszClassName, "CBDate");
    std::unique_ptr<CObject> object(info->CreateObject());
    ASSERT_TRUE(object);
    EXPECT_EQ(*static_cast<CBDate*>(object.get()), CBDate());
}

}  // namespace
