#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "os/api/variant_time.h"

namespace nvk::os {
namespace {

SYSTEMTIME Parts(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    SYSTEMTIME time{};
    time.wYear = static_cast<WORD>(year);
    time.wMonth = static_cast<WORD>(month);
    time.wDay = static_cast<WORD>(day);
    time.wHour = static_cast<WORD>(hour);
    time.wMinute = static_cast<WORD>(minute);
    time.wSecond = static_cast<WORD>(second);
    return time;
}

double ToVariant(const SYSTEMTIME& time) {
    double variant = std::nan("");
    EXPECT_NE(SystemTimeToVariantTime(&time, &variant), 0);
    return variant;
}

TEST(VariantTimeTest, DaysFrom30December1899AndTheTimeOfDay) {
    EXPECT_EQ(ToVariant(Parts(1899, 12, 30)), 0.0);
    EXPECT_EQ(ToVariant(Parts(1900, 1, 1, 18)), 2.75);
    EXPECT_EQ(ToVariant(Parts(2000, 1, 1)), 36526.0);
    // Before 1899 the fraction still counts forward from midnight.
    EXPECT_EQ(ToVariant(Parts(1899, 12, 29, 6)), -1.25);
    EXPECT_EQ(ToVariant(Parts(100, 1, 1)), -657434.0);
    EXPECT_EQ(ToVariant(Parts(9999, 12, 31)), 2958465.0);

    SYSTEMTIME time{};
    ASSERT_NE(VariantTimeToSystemTime(36526.5, &time), 0);
    EXPECT_EQ(time.wHour, 12);
    EXPECT_EQ(time.wDayOfWeek, 6);  // 1 January 2000, a Saturday
    // Rounded to the nearest second, into the next day if need be.
    ASSERT_NE(VariantTimeToSystemTime(36526.0 + 86399.6 / 86400, &time), 0);
    EXPECT_EQ(time.wDay, 2);
    EXPECT_EQ(time.wHour, 0);
}

TEST(VariantTimeTest, RoundTripsAndLimits) {
    for (double day = -657434.0; day < 2958466.0; day += 997.0) {
        for (int second : {0, 1, 43199, 86399}) {
            const double variant = day < 0 ? day - second / 86400.0 : day + second / 86400.0;
            SYSTEMTIME time{};
            ASSERT_NE(VariantTimeToSystemTime(variant, &time), 0) << variant;
            ASSERT_EQ(time.wHour * 3600 + time.wMinute * 60 + time.wSecond, second) << variant;
            // How the parts of the day are summed is the system's own: the
            // round trip holds to a millisecond, not to the last bit.
            ASSERT_NEAR(ToVariant(time), variant, 0.5 / 86400000) << variant;
        }
    }
    SYSTEMTIME time{};
    EXPECT_EQ(VariantTimeToSystemTime(-657435.0, &time), 0);
    EXPECT_EQ(VariantTimeToSystemTime(2958466.0, &time), 0);
    EXPECT_EQ(VariantTimeToSystemTime(1e300, &time), 0);

    double variant = 0;
    for (const SYSTEMTIME& bad : {Parts(10000, 1, 1), Parts(2024, 13, 1), Parts(2024, 1, 32)}) {
        EXPECT_EQ(SystemTimeToVariantTime(&bad, &variant), 0) << bad.wYear << '-' << bad.wMonth;
    }
    // Only the day is fixed: 0 is the last of the month before, and a day
    // past the month's end runs into the next one.
    EXPECT_EQ(ToVariant(Parts(2024, 1, 0)), ToVariant(Parts(2023, 12, 31)));
    EXPECT_EQ(ToVariant(Parts(2023, 2, 29, 6)), ToVariant(Parts(2023, 3, 1, 6)));
    EXPECT_EQ(ToVariant(Parts(2023, 4, 31)), ToVariant(Parts(2023, 5, 1)));
}

// Days before 100, hours past 23 and a NaN are no dates.
TEST(VariantTimeTest, OutsideTheRangeOfDates) {
    double variant = 0;
    for (const SYSTEMTIME& bad : {Parts(99, 12, 31), Parts(100, 1, 0), Parts(2024, 1, 1, 24)}) {
        EXPECT_EQ(SystemTimeToVariantTime(&bad, &variant), 0) << bad.wYear << '-' << bad.wHour;
    }
    SYSTEMTIME time{};
    EXPECT_EQ(VariantTimeToSystemTime(std::numeric_limits<double>::quiet_NaN(), &time), 0);
}

}  // namespace
}  // namespace nvk::os
