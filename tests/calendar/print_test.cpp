#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "calendar/month_names.h"
#include "nvk/calendar/cbdate.h"

// Each suite runs in a process of its own with its language in LC_ALL (see
// CMakeLists.txt); month names are those of the language, in the ANSI code
// page.
namespace {

std::vector<std::string> AllForms(const CBDate& date) {
    std::vector<std::string> texts;
    for (int form = 0; form <= 5; ++form) {
        const auto old = CBDate::SetPrintOption(static_cast<CBDate::HowToPrint>(form));
        texts.emplace_back(date.AsString().GetString());
        CBDate::SetPrintOption(old);
    }
    return texts;
}

using Forms = std::vector<std::string>;

TEST(EnglishDates, FivePrintForms) {
    EXPECT_EQ(AllForms(CBDate(5, 3, 2014)),
              (Forms{"March 5, 2014", " 5-Mar-14", "3/5/14", "05/03/2014", "5 March 2014", ""}));
    EXPECT_EQ(AllForms(CBDate(25, 12, 2009))[1], "25-Dec-09");
    // A month outside the table of names has an empty name.
    EXPECT_EQ(std::string(nvk::MonthName(0).GetString()), "");
    EXPECT_EQ(std::string(nvk::MonthName(13).GetString()), "");
    EXPECT_EQ(std::string(nvk::MonthName(12).GetString()), "December");
}

TEST(FrenchDates, FivePrintForms) {
    EXPECT_EQ(AllForms(CBDate(5, 3, 2014)),
              (Forms{"mars 5, 2014", " 5-mar-14", "3/5/14", "05/03/2014", "5 mars 2014", ""}));
    // The terse form cuts the full name to three bytes.
    EXPECT_EQ(AllForms(CBDate(1, 2, 2001))[1], " 1-f\xE9v-01");
    EXPECT_EQ(AllForms(CBDate(15, 8, 2024))[4], "15 ao\xFBt 2024");
    EXPECT_EQ(AllForms(CBDate(1, 7, 2024))[1], " 1-jui-24");
}

TEST(GermanDates, FivePrintForms) {
    EXPECT_EQ(AllForms(CBDate(5, 3, 2014)), (Forms{"M\xE4rz 5, 2014", " 5-M\xE4r-14", "3/5/14",
                                                   "05/03/2014", "5 M\xE4rz 2014", ""}));
    EXPECT_EQ(AllForms(CBDate(31, 12, 1999))[4], "31 Dezember 1999");
}

}  // namespace
