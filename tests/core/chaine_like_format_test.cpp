#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>

#include "nvk/core/chaine.h"

namespace {

TEST(ChaineLike, ElementsOfThePattern) {
    EXPECT_TRUE(Chaine("a.txt").Like("*.txt"));
    EXPECT_TRUE(Chaine(".txt").Like("*.txt"));
    EXPECT_FALSE(Chaine("a.txt2").Like("*.txt"));
    EXPECT_FALSE(Chaine().Like("*"));  // an empty text matches nothing
    EXPECT_FALSE(Chaine("abc").Like("*", 3));
    EXPECT_FALSE(Chaine("abc").Like("*", -1));
    EXPECT_TRUE(Chaine("abc").Like("c", 2));
    EXPECT_TRUE(Chaine("abc").Like("a**?"));
    EXPECT_FALSE(Chaine("abc").Like(""));
    EXPECT_TRUE(Chaine("A1").Like("?#"));
    EXPECT_FALSE(Chaine("AB").Like("?#"));
    EXPECT_FALSE(Chaine("1a").Like("[!0-9]*"));
    EXPECT_TRUE(Chaine("xa").Like("[!0-9]*"));
    EXPECT_TRUE(Chaine("a*").Like("a`*"));
    EXPECT_FALSE(Chaine("ab").Like("a`*"));
    EXPECT_TRUE(Chaine("a`").Like("a`"));  // a final "`" stands for itself
    EXPECT_TRUE(Chaine("]").Like("[`]]"));
    EXPECT_TRUE(Chaine("-").Like("[a-]"));
    EXPECT_TRUE(Chaine("q").Like("[a-cp-r]"));
    EXPECT_FALSE(Chaine("d").Like("[a-cp-r]"));
    EXPECT_FALSE(Chaine("x").Like("[]"));
    EXPECT_TRUE(Chaine("b").Like("[abc"));  // an unclosed set runs to the end
}

TEST(ChaineLike, NoCaseAndSignedRanges) {
    EXPECT_TRUE(Chaine("REPORT.TXT").LikeNoCase("report.*"));
    EXPECT_FALSE(Chaine("REPORT.TXT").Like("report.*"));
    EXPECT_TRUE(Chaine("\xC9t\xE9").LikeNoCase("\xE9T\xC9"));
    EXPECT_FALSE(Chaine("\xED").LikeNoCase("\xCD"));  // the table's gap
    EXPECT_TRUE(Chaine("B").LikeNoCase("[a-c]"));
    // Ranges compare signed bytes: accented letters lie below ASCII.
    EXPECT_FALSE(Chaine("\xE9").Like("[a-z]"));
    EXPECT_TRUE(Chaine("\xE9").Like("[\xE0-\xFF]"));
}

TEST(ChaineLike, HostilePatternsStayLinear) {
    const std::string as(10000, 'a');
    const Chaine text(as.c_str());
    EXPECT_FALSE(text.Like("*a*a*a*a*a*a*a*b"));
    EXPECT_TRUE(text.Like("*a*a*a*a*a*a*a*a"));
    EXPECT_FALSE(text.LikeNoCase("*?*?*?*?*?*?*[b]"));
}

std::string Printed(const char* format, ...) {
    va_list args;
    va_start(args, format);
    char buffer[4096];
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    return buffer;
}

TEST(ChaineFormat, PrintsWhatTheLibraryPrints) {
    Chaine text;
    EXPECT_STREQ(text.Format("%s|%5.2f|%-4d|%c|%%|%x", "ab", 3.14159, 7, 'z', 255),
                 "ab| 3.14|7   |z|%|ff");
    EXPECT_STREQ(text.Format("%s", static_cast<const char*>(nullptr)),
                 Printed("%s", nullptr).c_str());
    EXPECT_STREQ(text.Format("%I64d", static_cast<long long>(-1234567890123LL)), "-1234567890123");
    EXPECT_STREQ(text.Format("%*.*s|%.1s", 6, 2, "abcdef", "xyz"), "    ab|x");
    EXPECT_STREQ(text.Format("%#o %#x", 8, 255), "010 0xff");
    EXPECT_TRUE(text.Format("%s", "").IsEmpty());
    EXPECT_TRUE(text.Format(nullptr).IsEmpty());
    // A zero character cuts the value at it.
    EXPECT_EQ(text.Format("ab%cde", 0).Length(), 2);
    // The format may be the value's own text.
    text = "<%d>";
    text.Format(text, 5);
    EXPECT_STREQ(text, "<5>");
}

TEST(ChaineFormat, ShortEstimatesStaySafe) {
    // The estimate of "E" is its spelling; the printed number is longer, and a
    // long text follows it.
    const std::string longText(3000, 'w');
    Chaine text;
    text.Format("%E%s", 1e300, longText.c_str());
    EXPECT_EQ(std::string(text), Printed("%E%s", 1e300, longText.c_str()));
    text.Format("%0400E|%.300f", -1.5e-300, 1e300);
    EXPECT_EQ(std::string(text), Printed("%0400E|%.300f", -1.5e-300, 1e300));
}

TEST(ChaineFormat, SizeModifiersReadThePlatformsArguments) {
    // "L", "F", "N" and "l" take nothing more: a double, a pointer, a 32-bit
    // LONG. The C library would read a long double, a conversion "F" or "N",
    // and a 64-bit long.
    Chaine text;
    EXPECT_STREQ(text.Format("[%Lf|%lf|%5.1Lg]", 1.5, 2.5, 3.25), "[1.500000|2.500000|    3]");
    EXPECT_STREQ(text.Format("[%Fs|%Ns|%-4Fs]", "far", "near", "x"), "[far|near|x   ]");
    EXPECT_STREQ(text.Format("[%ld|%lu|%lx]", std::int32_t{-1}, std::uint32_t{7}, 255),
                 "[-1|7|ff]");
    EXPECT_STREQ(text.Format("[%hd|%I64u]", 65537, ~0ULL), "[1|18446744073709551615]");
    // What the fuzz finding built: "%...F" is no conversion, "%" ends it, and
    // the arguments after it still line up.
    EXPECT_STREQ(text.Format("%-+ #0F%|%*d|%s", 3, 7, "end"), "%|  7|end");
}

TEST(ChaineFormat, EveryConversionTakesItsOwnArgument) {
    // Unknown letters print themselves and take nothing; "E" takes a double,
    // "*" an int; "%n" counts what is printed so far.
    Chaine text;
    int count = -1;
    EXPECT_STREQ(text.Format("%y|%5%|%.1E|%*.*s|%n%c%", 2.0, 4, 2, "abc", &count, 'z'),
                 "y|%|2.0E+00|  ab|z");
    EXPECT_EQ(count, 17);
    EXPECT_STREQ(text.Format("%I32d|%s", "x"), "I32d|x");
}

TEST(ChaineFormat, WideTextIsTheLibrarysWcharInTheAnsiCodePage) {
    Chaine text;
    EXPECT_STREQ(text.Format("[%S]", u"abc"), "[abc]");
    EXPECT_STREQ(text.Format("[%ls|%5.2S]", u"d\u00e9j\u00e0", u"\u20acuro"),
                 "[d\xE9j\xE0|   \x80u]");
    EXPECT_STREQ(text.Format("[%C%lc%c]", u'\u00e9', u'\u20ac', 'x'), "[\xE9\x80x]");
    // "h" keeps the upper-case letters narrow.
    EXPECT_STREQ(text.Format("[%hS|%hC]", "narrow", 'n'), "[narrow|n]");
    EXPECT_STREQ(text.Format("[%S]", static_cast<const char16_t*>(nullptr)),
                 Printed("[%s]", nullptr).c_str());
    // A long wide text after a number the estimate doesn't measure.
    const std::u16string longWide(5000, u'\u00e8');
    text.Format("%E%S", 1.0, longWide.c_str());
    EXPECT_EQ(std::string(text), "1.000000E+00" + std::string(5000, '\xE8'));
}

}  // namespace
