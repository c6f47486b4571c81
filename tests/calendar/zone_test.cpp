#include <gtest/gtest.h>

#include "nvk/calendar/cbtime.h"
#include "os/api/time_zone.h"

// Each suite runs in its own process with TZ set to its zone (see
// CMakeLists.txt). The daylight dates are the class's own, whatever the zone.
namespace {

// In 2024 daylight time ran from 7 April to 27 October.
const CBDate kBegin(7, 4, 2024);
const CBDate kEnd(27, 10, 2024);

void ExpectZone(long west, int daylight) {
    long seconds = 0;
    int hours = 0;
    nvk::os::_get_timezone(&seconds);
    nvk::os::_get_daylight(&hours);
    ASSERT_EQ(seconds, west) << "the test runs in the wrong zone";
    ASSERT_EQ(hours != 0, daylight != 0) << "the test runs in the wrong zone";
}

// The count of a clock time in a zone `west` seconds west of Greenwich.
std::uint32_t Count(const CBDate& date, unsigned hour, unsigned minute, long west, bool daylight) {
    return (date - CBTime::RefDate) * 86400 + hour * 3600 + minute * 60 +
           static_cast<std::uint32_t>(west) - (daylight ? 3600 : 0);
}

// Both sides of each change, in a zone that keeps daylight time.
void ExpectChanges(long west) {
    const CBTime beforeBegin(kBegin, 1, 59, 0);
    EXPECT_EQ(beforeBegin.Seconds(), Count(kBegin, 1, 59, west, false));
    EXPECT_FALSE(beforeBegin.IsDST());
    EXPECT_FALSE(CBTime(kBegin, 2, 0, 0).IsValid());  // the skipped hour
    EXPECT_FALSE(CBTime(kBegin, 2, 30, 0).IsValid());
    const CBTime afterBegin(kBegin, 3, 0, 0);
    EXPECT_EQ(afterBegin.Seconds(), Count(kBegin, 3, 0, west, true));
    EXPECT_EQ(afterBegin.Seconds() - beforeBegin.Seconds(), 60u);
    EXPECT_TRUE(afterBegin.IsDST());

    const CBTime beforeEnd(kEnd, 0, 30, 0);
    EXPECT_EQ(beforeEnd.Seconds(), Count(kEnd, 0, 30, west, true));
    EXPECT_TRUE(beforeEnd.IsDST());
    // The repeated hour reads as standard time, the later of its two moments.
    const CBTime repeated(kEnd, 1, 30, 0);
    EXPECT_EQ(repeated.Seconds(), Count(kEnd, 1, 30, west, false));
    EXPECT_EQ(repeated.Seconds() - beforeEnd.Seconds(), 2u * 3600);
    EXPECT_FALSE(repeated.IsDST());
    EXPECT_EQ(CBTime(kEnd, 2, 30, 0).Seconds(), Count(kEnd, 2, 30, west, false));

    // The changes themselves, to the second.
    const CBTime begin = CBTime::BeginDST(2024);
    const CBTime end = CBTime::EndDST(2024);
    EXPECT_EQ(begin.Seconds(), Count(kBegin, 2, 0, west, false));
    EXPECT_EQ(end.Seconds(), Count(kEnd, 1, 0, west, false));
    EXPECT_TRUE(begin.IsDST());
    EXPECT_FALSE(CBTime(begin.Seconds() - 1).IsDST());
    EXPECT_TRUE(CBTime(end.Seconds() - 1).IsDST());
    EXPECT_FALSE(end.IsDST());

    // Local hours away from the changes.
    for (const CBDate& day : {CBDate(15, 1, 2024), CBDate(1, 7, 2024), CBDate(15, 12, 2024)}) {
        const CBTime noon(day, 12, 34, 56);
        EXPECT_EQ(noon.Hour(), 12u);
        EXPECT_EQ(noon.Minute(), 34u);
        EXPECT_EQ(noon.Second(), 56u);
        EXPECT_EQ(noon.AsString(), "12:34");
    }
}

TEST(NewYorkTime, BothSidesOfEachChange) {
    ExpectZone(5 * 3600, 1);
    ExpectChanges(5 * 3600);
    EXPECT_EQ(CBTime(CBDate(1, 7, 2024), 12, 0, 0).HourGMT(), 16u);
    // Before 1987 daylight time began on the last Sunday of April, and in
    // 1974 and 1975 on fixed days.
    EXPECT_EQ(CBDate(CBTime::BeginDST(1985).Seconds() / 86400, 0), CBDate(28, 4, 1985));
    EXPECT_EQ(CBDate(CBTime::BeginDST(1974).Seconds() / 86400, 0), CBDate(6, 1, 1974));
    EXPECT_EQ(CBDate(CBTime::BeginDST(1975).Seconds() / 86400, 0), CBDate(23, 2, 1975));
    EXPECT_EQ(CBTime::BeginDST(1974).HourGMT(), 7u);
    EXPECT_FALSE(CBTime(CBDate(28, 4, 1985), 2, 30, 0).IsValid());
    EXPECT_TRUE(CBTime(CBDate(7, 4, 1985), 2, 30, 0).IsValid());
}

TEST(NewYorkTime, OddCornersThatAreKept) {
    ExpectZone(5 * 3600, 1);
    // One hour before the clock time is exactly the start of the count: the
    // zone is then left out.
    EXPECT_EQ(CBTime(CBTime::RefDate, 1, 0, 0).Seconds(), 3600u);
    EXPECT_EQ(CBTime(CBTime::RefDate, 2, 0, 0).Seconds(), 2u * 3600 + 5 * 3600);
    // The local hour tests daylight time on the count shifted by the zone, so
    // for the zone's width after the change it still reads standard time.
    EXPECT_EQ(CBTime(kBegin, 3, 30, 0).Hour(), 2u);
    EXPECT_EQ(CBTime(kBegin, 8, 0, 0).Hour(), 8u);
}

TEST(PhoenixTime, NoDaylightTime) {
    ExpectZone(7 * 3600, 0);
    for (CBDate day(1, 1, 2024); day <= CBDate(31, 12, 2024); day += 7) {
        const CBTime noon(day, 12, 0, 0);
        EXPECT_FALSE(noon.IsDST());
        EXPECT_EQ(noon.Hour(), 12u);
        EXPECT_EQ(noon.HourGMT(), 19u);
    }
    // No hour is skipped or repeated.
    EXPECT_EQ(CBTime(kBegin, 2, 30, 0).Seconds(), Count(kBegin, 2, 30, 7 * 3600, false));
    EXPECT_EQ(CBTime(kEnd, 2, 30, 0).Seconds() - CBTime(kEnd, 1, 30, 0).Seconds(), 3600u);
}

TEST(ZurichTime, EastOfGreenwichWithTheClassRule) {
    ExpectZone(-3600, 1);
    ExpectChanges(-3600);
    EXPECT_EQ(CBTime(kBegin, 3, 0, 0).HourGMT(), 1u);
    EXPECT_EQ(CBTime(kEnd, 1, 30, 0).HourGMT(), 0u);
    // The zone's own change, on the last Sunday of March, is not the class's.
    const CBTime european(CBDate(31, 3, 2024), 2, 30, 0);
    EXPECT_TRUE(european.IsValid());
    EXPECT_FALSE(european.IsDST());
}

// Zones by their real names, whose history once had daylight time or whose
// rules name the winter time the daylight one: the class follows today's
// rules.
TEST(MartiniqueTime, NoDaylightTimeToday) {
    ExpectZone(4 * 3600, 0);
    EXPECT_EQ(CBTime(CBDate(14, 7, 2014), 12, 0, 0).HourGMT(), 16u);
    EXPECT_TRUE(CBTime(CBDate(6, 4, 2014), 2, 30, 0).IsValid());  // first Sunday of April
    EXPECT_FALSE(CBTime(CBDate(14, 7, 2014), 12, 0, 0).IsDST());
}

TEST(NoumeaTime, NoDaylightTimeToday) {
    ExpectZone(-11 * 3600, 0);
    EXPECT_EQ(CBTime(CBDate(15, 1, 2024), 12, 0, 0).HourGMT(), 1u);
    EXPECT_EQ(CBTime(kBegin, 2, 30, 0).Seconds(), Count(kBegin, 2, 30, -11 * 3600, false));
}

TEST(KolkataTime, NoDaylightTimeToday) {
    ExpectZone(-(5 * 3600 + 1800), 0);
    const CBTime noon(CBDate(1, 7, 2024), 12, 0, 0);
    EXPECT_EQ(noon.HourGMT(), 6u);
    EXPECT_EQ(noon.MinuteGMT(), 30u);
    EXPECT_EQ(noon.AsString(), "12:00");
}

TEST(ParisTime, DaylightTimeByTheClassRule) {
    ExpectZone(-3600, 1);
    ExpectChanges(-3600);
}

TEST(DublinTime, GreenwichInWinter) {
    ExpectZone(0, 1);
    EXPECT_EQ(CBTime(CBDate(15, 1, 2024), 12, 0, 0).HourGMT(), 12u);
    EXPECT_EQ(CBTime(CBDate(15, 7, 2024), 12, 0, 0).HourGMT(), 11u);
    ExpectChanges(0);
}

}  // namespace
