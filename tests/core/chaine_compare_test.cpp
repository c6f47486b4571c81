#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "nvk/core/case_tables.h"
#include "nvk/core/chaine.h"

namespace {

TEST(CaseTables, KeepTheirGapsAndAreNotInverses) {
    // Upper leaves 0xED, 0xF0, 0xF7, 0xFE, 0xFF alone but folds 0xEC and 0xEE.
    EXPECT_EQ(nvk::UpperTable[0xEC], 0xCC);
    EXPECT_EQ(nvk::UpperTable[0xED], 0xED);
    EXPECT_EQ(nvk::UpperTable[0xEE], 0xCE);
    for (int c : {0xF0, 0xF7, 0xFE, 0xFF, 0xDF, 0x40, 0x5B, 0x60, 0x7B}) {
        EXPECT_EQ(nvk::UpperTable[c], c) << c;
    }
    EXPECT_EQ(nvk::UpperTable['a'], 'A');
    EXPECT_EQ(nvk::UpperTable['z'], 'Z');
    EXPECT_EQ(nvk::UpperTable[0xFD], 0xDD);
    // Lower maps the whole of 0xC0-0xCF, 0xCD included, and skips 0xD0, 0xD7, 0xDE.
    EXPECT_EQ(nvk::LowerTable[0xCD], 0xED);
    for (int c : {0xD0, 0xD7, 0xDE, 0xDF, 0xE9}) {
        EXPECT_EQ(nvk::LowerTable[c], c) << c;
    }
    EXPECT_EQ(nvk::LowerTable['Z'], 'z');
}

TEST(ChaineCompare, OrdersBytesAndSizes) {
    const Chaine e("\xE9");  // é
    EXPECT_EQ(e.Compare("a"), 1);
    EXPECT_EQ(e.CompareBytes("a"), 1);
    EXPECT_EQ(Chaine("ab").Compare("abc"), -1);
    EXPECT_EQ(Chaine("abc").CompareBytes("ab"), 1);
    EXPECT_EQ(Chaine("abc").Compare("abc"), 0);
    // A zero inside the text: equal over the smaller Size, then by Size.
    const Chaine zero("a\0", 2);
    EXPECT_EQ(zero.Compare("a"), 1);
    EXPECT_EQ(Chaine("a").Compare(zero), -1);
    EXPECT_EQ(zero.CompareBytes("a"), 1);
}

TEST(ChaineCompare, NoCaseFoldsThroughUpperTableAsSigned) {
    EXPECT_EQ(Chaine("\xE9").CompareNoCase("a"), -1);  // 0xC9 is negative as a signed byte
    EXPECT_EQ(Chaine("a").CompareNoCase(Chaine("\xE9")), 1);
    EXPECT_EQ(Chaine("Hello").CompareNoCase("hELLO"), 0);
    EXPECT_EQ(Chaine("hello").CompareNoCase("HELLO!"), -1);
    EXPECT_EQ(Chaine("abc").CompareNoCase(static_cast<const char*>(nullptr)), 1);
    // 0xCD and 0xED: different without case, equal lowered.
    const Chaine upperI("\xCD");
    const Chaine lowerI("\xED");
    EXPECT_NE(upperI.CompareNoCase(lowerI), 0);
    EXPECT_FALSE(upperI.EqualsNoCase(lowerI));
    EXPECT_EQ(upperI.CompareLower(lowerI), 0);
    EXPECT_EQ(Chaine("\xEC").CompareNoCase("\xCC"), 0);
    EXPECT_EQ(Chaine("B").CompareLower("\xE0"), -1);  // unsigned
}

TEST(ChaineCompare, EqualityAndPrefixForms) {
    EXPECT_TRUE(Chaine("R\xE9sum\xE9").EqualsNoCase("r\xC9SUM\xC9"));
    EXPECT_FALSE(Chaine("abc").EqualsNoCase("abcd"));
    EXPECT_TRUE(Chaine("x").EqualsChar('X'));
    EXPECT_FALSE(Chaine("xx").EqualsChar('x'));
    EXPECT_TRUE(Chaine("Section1").StartsWithNoCase("SECTION"));
    EXPECT_TRUE(Chaine("abc").StartsWithNoCase(""));
    EXPECT_FALSE(Chaine("ab").StartsWithNoCase("abc"));
    const Chaine text("abcdef");
    EXPECT_TRUE(text.MatchAt("CDE", 3, true, 2));
    EXPECT_FALSE(text.MatchAt("CDE", 3, false, 2));
    EXPECT_FALSE(text.MatchAt("def", 3, false, 4));  // would reach the terminator
    EXPECT_TRUE(text.MatchAt("zzz", 0, false, 5));
    EXPECT_FALSE(text.MatchAt("", 0, false, 7));  // at or behind Size
}

TEST(ChaineSearch, FindCharAndFind) {
    const Chaine text("abcABCabc");
    EXPECT_EQ(Chaine("ab").FindChar('\0'), 2);
    EXPECT_EQ(text.FindChar('C'), 5);
    EXPECT_EQ(text.FindChar('C', true), 2);
    EXPECT_EQ(text.FindChar('a', false, 1), 6);
    EXPECT_EQ(text.FindChar('a', false, 10), -1);
    EXPECT_EQ(text.FindChar('a', false, -1), -1);
    EXPECT_EQ(text.Find(""), 0);
    EXPECT_EQ(Chaine().Find(""), 0);
    EXPECT_EQ(text.Find("", false, 9), 9);
    EXPECT_EQ(text.Find("abc", false, 1), 6);
    EXPECT_EQ(text.Find("ABC", true, 1), 3);
    EXPECT_EQ(text.Find("bca", true, 0), 1);
    EXPECT_EQ(text.Find("abcd"), -1);
    EXPECT_EQ(text.Find("bc", false, 8), -1);  // no room left
    EXPECT_EQ(Chaine("\xE9t\xE9").Find("\xC9T", true), 0);
}

// Texts of a small alphabet, so that partial matches abound, against
// std::string's find: every length around the sixteen starts searched at once,
// needles whose first and last bytes agree where the middle doesn't, starts
// out of range.
TEST(ChaineSearch, FindAgreesWithTheStandardSearchEverywhere) {
    std::srand(7);
    const auto randomText = [](int length) {
        std::string text;
        for (int i = 0; i < length; ++i) {
            text += "aab"[std::rand() % 3];
        }
        return text;
    };
    for (int round = 0; round < 3000; ++round) {
        const std::string text = randomText(std::rand() % 70);
        const std::string needle = randomText(1 + std::rand() % 6);
        const int start = std::rand() % 75 - 2;
        const Chaine value(text.c_str());
        std::size_t hit = std::string::npos;
        if (start >= 0) {
            hit = text.find(needle, static_cast<std::size_t>(start));
        }
        const int expected = hit == std::string::npos ? -1 : static_cast<int>(hit);
        ASSERT_EQ(value.Find(needle.c_str(), false, start), expected)
            << '"' << text << "\" at " << start << " for \"" << needle << '"';
    }
}

TEST(ChaineChange, UpperLowerAndTrimmingSeparateFromCopies) {
    const Chaine original("  \xE9l\xE8ve \xED  ");
    Chaine upper(original);
    upper.Upper();
    EXPECT_STREQ(upper, "  \xC9L\xC8VE \xED  ");
    EXPECT_STREQ(original, "  \xE9l\xE8ve \xED  ");
    Chaine lower("ABC\xCD");
    lower.Lower();
    EXPECT_STREQ(lower, "abc\xED");

    Chaine trimmed(original);
    trimmed.TrimLeft().TrimRight();
    EXPECT_STREQ(trimmed, "\xE9l\xE8ve \xED");
    EXPECT_STREQ(original, "  \xE9l\xE8ve \xED  ");

    Chaine xs("xxx");
    xs.TrimRight('x');
    EXPECT_TRUE(xs.IsEmpty());
    EXPECT_EQ(xs.Buffer(), SharedEmptyChaine.Buffer());
    Chaine set(" \t-a-b \t");
    set.TrimLeft(" \t-").TrimRight("\t ");
    EXPECT_STREQ(set, "a-b");
    Chaine zeros("ab\0\0", 4);
    zeros.TrimRight('\0');
    EXPECT_EQ(zeros.Length(), 2);
}

TEST(ChaineConstants, HoldTheirTexts) {
    EXPECT_STREQ(ChaineCrLf, "\r\n");
    EXPECT_STREQ(ChaineRtfHead, "{\\rtf1");
    EXPECT_STREQ(ChaineRtfEnd, "\\par }");
    EXPECT_STREQ(ChaineRtfPar, "\\par");
}

}  // namespace
