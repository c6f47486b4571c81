#include "os/api/locale.h"

#include <gtest/gtest.h>

#include <string>

#include "os/api/error.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

std::string Item(LCID lcid, LCTYPE type) {
    char text[128] = {};
    return GetLocaleInfoA(lcid, type, text, sizeof text) > 0 ? std::string(text) : "<none>";
}

TEST(Locale, NamesOfMonthsAndDaysInTheAnsiCodePage) {
    EXPECT_EQ(Item(1036, LOCALE_SMONTHNAME1 + 1), "f\xE9vrier");
    EXPECT_EQ(Item(1036, LOCALE_SABBREVMONTHNAME1 + 7), "ao\xFBt");
    EXPECT_EQ(Item(2055, LOCALE_SMONTHNAME1 + 2), "M\xE4rz");
    EXPECT_EQ(Item(2055, LOCALE_SABBREVMONTHNAME1 + 11), "Dez");
    EXPECT_EQ(Item(1033, LOCALE_SMONTHNAME1 + 11), "December");
    EXPECT_EQ(Item(1036, LOCALE_SDAYNAME1), "lundi");
    EXPECT_EQ(Item(1033, LOCALE_SABBREVDAYNAME1 + 6), "Sun");
    EXPECT_EQ(Item(1036, LOCALE_SNATIVELANGNAME),
              "fran\xE7"
              "ais");
    EXPECT_EQ(Item(2055, LOCALE_SENGCOUNTRY), "Switzerland");
    EXPECT_EQ(Item(2055, LOCALE_SABBREVCTRYNAME), "CHE");
    EXPECT_EQ(Item(1036, LOCALE_SISO3166CTRYNAME), "FR");
    EXPECT_EQ(Item(1036, LOCALE_SCURRENCY), "\x80");
}

TEST(Locale, DateFormatsInWindowsLetters) {
    EXPECT_EQ(Item(1036, LOCALE_SSHORTDATE), "dd/MM/yyyy");
    EXPECT_EQ(Item(1033, LOCALE_SSHORTDATE), "M/d/yyyy");
    EXPECT_EQ(Item(1033, LOCALE_IDATE), "0");
    EXPECT_EQ(Item(1036, LOCALE_IDATE), "1");
    EXPECT_EQ(Item(1033, LOCALE_IDAYLZERO), "0");
    EXPECT_EQ(Item(2055, LOCALE_SDATE), ".");
    EXPECT_EQ(Item(1033, LOCALE_STIMEFORMAT), "h:mm:ss tt");
    EXPECT_EQ(Item(1036, LOCALE_ICALENDARTYPE), "1");
    EXPECT_EQ(Item(1036, LOCALE_IFIRSTDAYOFWEEK), "0");
    EXPECT_EQ(Item(1033, LOCALE_IFIRSTDAYOFWEEK), "6");
}

// Swiss German writes day and month with two digits.
TEST(Locale, SwissGermanDatesHaveLeadingZeros) {
    EXPECT_EQ(Item(2055, LOCALE_SSHORTDATE), "dd.MM.yyyy");
    EXPECT_EQ(Item(2055, LOCALE_IMONLZERO), "1");
}

TEST(Locale, BuffersNumbersAndErrors) {
    DWORD number = 0;
    int n = GetLocaleInfoA(1036, LOCALE_SMONTHNAME1, nullptr, 0);
    EXPECT_EQ(n, 8);  // "janvier" and its terminator
    char small[4];
    EXPECT_EQ(GetLocaleInfoA(1036, LOCALE_SMONTHNAME1, small, sizeof small), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(std::string(small, 4), "janv");  // what fits

    // Numeric items as numbers; each locale's own ANSI code page.
    EXPECT_EQ(GetLocaleInfoA(1036, LOCALE_ILANGUAGE | LOCALE_RETURN_NUMBER,
                             reinterpret_cast<LPSTR>(&number), sizeof number),
              4);
    EXPECT_EQ(number, 0x040Cu);
    EXPECT_EQ(Item(0x0419, LOCALE_IDEFAULTANSICODEPAGE), "1251");
    EXPECT_EQ(Item(0x0411, LOCALE_IDEFAULTANSICODEPAGE), "932");
    EXPECT_EQ(Item(0x0415, LOCALE_IDEFAULTANSICODEPAGE), "1250");
    EXPECT_EQ(Item(0x0439, LOCALE_IDEFAULTANSICODEPAGE), "0");
    const std::string russian = Item(0x0419, LOCALE_SMONTHNAME1);  // in 1251, not as "???"
    EXPECT_EQ(russian.find('?'), std::string::npos);
    EXPECT_GE(static_cast<unsigned char>(russian[0]), 0xC0);

    EXPECT_EQ(GetLocaleInfoA(1033, LOCALE_IFIRSTDAYOFWEEK | LOCALE_RETURN_NUMBER,
                             reinterpret_cast<LPSTR>(&number), sizeof number),
              4);
    EXPECT_EQ(number, 6u);
    EXPECT_EQ(GetLocaleInfoA(1033, LOCALE_SMONTHNAME1 | LOCALE_RETURN_NUMBER,
                             reinterpret_cast<LPSTR>(&number), sizeof number),
              0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FLAGS);

    EXPECT_EQ(GetLocaleInfoA(0x07FF, LOCALE_SMONTHNAME1, nullptr, 0), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(IsValidLocale(0x07FF, 0));
}

TEST(Locale, DefaultsAndNeutralSublanguagesAreResolved) {
    EXPECT_EQ(ConvertDefaultLocale(LOCALE_SYSTEM_DEFAULT), GetSystemDefaultLCID());
    EXPECT_EQ(ConvertDefaultLocale(LOCALE_USER_DEFAULT), GetUserDefaultLCID());
    EXPECT_EQ(ConvertDefaultLocale(0x000C), 0x040Cu);
    EXPECT_EQ(ConvertDefaultLocale(0x0807), 0x0807u);
    EXPECT_EQ(ConvertDefaultLocale(LOCALE_INVARIANT), LOCALE_INVARIANT);
}

// The POSIX build takes the default locales from the environment.
TEST(Locale, DefaultsFollowTheEnvironment) {
    test::ScopedEnv all("LC_ALL", "de_CH.UTF-8");
    EXPECT_EQ(ConvertDefaultLocale(LOCALE_SYSTEM_DEFAULT), 2055u);
    EXPECT_EQ(ConvertDefaultLocale(LOCALE_NEUTRAL), 2055u);
    EXPECT_EQ(GetSystemDefaultLangID(), 2055);
    EXPECT_EQ(Item(LOCALE_USER_DEFAULT, LOCALE_SMONTHNAME1 + 2), "M\xE4rz");
}

}  // namespace
}  // namespace nvk::os
