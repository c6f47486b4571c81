#include <gtest/gtest.h>

#include "os/api/environment.h"
#include "os/api/time_zone.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

struct ZoneData {
    long west;
    int daylight;
};

ZoneData Read() {
    ZoneData zone{};
    EXPECT_EQ(_get_timezone(&zone.west), 0);
    EXPECT_EQ(_get_daylight(&zone.daylight), 0);
    return zone;
}

TEST(TimeZoneTest, TzsetReadsTheZoneAndFixesIt) {
    test::ScopedEnv restore("TZ", nullptr);
    ASSERT_TRUE(SetEnvironmentVariableA("TZ", "EST5EDT"));
    _tzset();
    ZoneData zone = Read();
    EXPECT_EQ(zone.west, 5 * 3600);
    EXPECT_NE(zone.daylight, 0);

    // Without a new _tzset the zone stays, whatever the clock reads meanwhile.
    ASSERT_TRUE(SetEnvironmentVariableA("TZ", "JST-9"));
    SYSTEMTIME local{};
    GetLocalTime(&local);
    zone = Read();
    EXPECT_EQ(zone.west, 5 * 3600);

    _tzset();
    zone = Read();
    EXPECT_EQ(zone.west, -9 * 3600);  // east of Greenwich
    EXPECT_EQ(zone.daylight, 0);
}

TEST(TimeZoneTest, TodaysRulesDecideTheDaylightTime) {
    test::ScopedEnv restore("TZ", nullptr);
    // Zones that had daylight time once, or that call winter time the
    // daylight one, answer by the rules of today.
    const struct {
        const char* zone;
        long west;
        int daylight;
    } zones[] = {
        {"America/Martinique", 4 * 3600, 0},
        {"Asia/Kolkata", -19800, 0},
        {"Pacific/Noumea", -11 * 3600, 0},
        {"Europe/Paris", -3600, 1},
        {"Europe/Dublin", 0, 1},
        {"Australia/Sydney", -10 * 3600, 1},
    };
    for (const auto& expected : zones) {
        ASSERT_TRUE(SetEnvironmentVariableA("TZ", expected.zone));
        _tzset();
        const ZoneData zone = Read();
        EXPECT_EQ(zone.west, expected.west) << expected.zone;
        EXPECT_EQ(zone.daylight != 0, expected.daylight != 0) << expected.zone;
    }
}

TEST(TimeZoneTest, LocalClockFollowsTheZone) {
    test::ScopedEnv zone("TZ", "JST-9");
    _tzset();
    SYSTEMTIME local{};
    SYSTEMTIME greenwich{};
    GetSystemTime(&greenwich);
    GetLocalTime(&local);
    if (local.wMinute != greenwich.wMinute) {  // a minute turned in between
        GetSystemTime(&greenwich);
        GetLocalTime(&local);
    }
    EXPECT_EQ(local.wHour, (greenwich.wHour + 9) % 24);
    EXPECT_EQ(local.wMinute, greenwich.wMinute);
}

TEST(TimeZoneTest, ClocksReadToday) {
    SYSTEMTIME local{};
    SYSTEMTIME greenwich{};
    GetSystemTime(&greenwich);
    GetLocalTime(&local);
    EXPECT_GE(greenwich.wYear, 2024);
    EXPECT_LT(local.wMilliseconds, 1000);

    LONG stored = 0;
    const LONG now = _time32(&stored);
    EXPECT_EQ(now, stored);
    EXPECT_GT(now, 1700000000);  // later than November 2023
}

}  // namespace
}  // namespace nvk::os
