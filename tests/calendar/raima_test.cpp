#include <gtest/gtest.h>

#include "nvk/calendar/cbdate.h"

namespace {

// The stamp of a clock time in the engine's zone, five hours west of
// Greenwich, whose count starts one second before 1 January 1980.
std::int32_t Stamp(unsigned day, unsigned month, unsigned year, unsigned hour, unsigned minute) {
    const std::uint32_t days = CBDate(day, month, year) - CBDate(1, 1, 1980);
    return static_cast<std::int32_t>(315550801u + days * 86400u + hour * 3600u + minute * 60u);
}

CBDate Decoded(std::int32_t stamp) {
    CBDate date;
    const int valid = date.ConvertRaimaDate(stamp);
    EXPECT_EQ(valid != 0, date.IsValid());
    return date;
}

// Late in the evening the daylight hour carries the date to the next day.
TEST(RaimaDateTest, LateEveningsAroundTheDaylightChanges) {
    // From 1987 daylight time begins on the first Sunday of April, at 2:00.
    EXPECT_EQ(Decoded(Stamp(31, 3, 1990, 23, 30)), CBDate(31, 3, 1990));
    EXPECT_EQ(Decoded(Stamp(1, 4, 1990, 1, 30)), CBDate(1, 4, 1990));
    EXPECT_EQ(Decoded(Stamp(1, 4, 1990, 23, 30)), CBDate(2, 4, 1990));
    // Before 1987, on the last Sunday of April.
    EXPECT_EQ(Decoded(Stamp(27, 4, 1985, 23, 30)), CBDate(27, 4, 1985));
    EXPECT_EQ(Decoded(Stamp(28, 4, 1985, 23, 30)), CBDate(29, 4, 1985));
    EXPECT_EQ(Decoded(Stamp(6, 4, 1985, 23, 30)), CBDate(6, 4, 1985));
    // It ends on the last Sunday of October, after hour 1.
    EXPECT_EQ(Decoded(Stamp(27, 10, 1990, 23, 30)), CBDate(28, 10, 1990));
    EXPECT_EQ(Decoded(Stamp(28, 10, 1990, 23, 30)), CBDate(28, 10, 1990));
    // Summer and winter.
    EXPECT_EQ(Decoded(Stamp(4, 7, 1996, 23, 30)), CBDate(5, 7, 1996));
    EXPECT_EQ(Decoded(Stamp(4, 7, 1996, 22, 30)), CBDate(4, 7, 1996));
    EXPECT_EQ(Decoded(Stamp(15, 1, 1996, 23, 30)), CBDate(15, 1, 1996));
}

TEST(RaimaDateTest, LeapDaysAndTheRange) {
    EXPECT_EQ(Decoded(315550801), CBDate(1, 1, 1980));
    EXPECT_EQ(Decoded(315550800), CBDate(1, 1, 1980));  // truncation toward zero
    EXPECT_EQ(Decoded(Stamp(29, 2, 1980, 12, 0)), CBDate(29, 2, 1980));
    EXPECT_EQ(Decoded(Stamp(1, 3, 1980, 12, 0)), CBDate(1, 3, 1980));
    EXPECT_EQ(Decoded(Stamp(31, 12, 1980, 12, 0)), CBDate(31, 12, 1980));
    EXPECT_EQ(Decoded(Stamp(1, 1, 1983, 0, 0)), CBDate(1, 1, 1983));
    EXPECT_EQ(Decoded(Stamp(29, 2, 2000, 0, 0)), CBDate(29, 2, 2000));
    EXPECT_EQ(Decoded(Stamp(31, 12, 2037, 18, 0)), CBDate(31, 12, 2037));
    // Before 1980 there is no date.
    EXPECT_FALSE(Decoded(0).IsValid());
    EXPECT_FALSE(Decoded(-1).IsValid());
}

}  // namespace
