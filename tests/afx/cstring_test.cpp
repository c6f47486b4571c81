#include "nvk/afx/cstring.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

TEST(CStringTest, ConstructionAndNullPointers) {
    EXPECT_TRUE(CString(nullptr).IsEmpty());
    EXPECT_EQ(CString("abcdef", 3), "abc");
    EXPECT_TRUE(CString("abc", -1).IsEmpty());
    EXPECT_EQ(CString('x', 3), "xxx");
    EXPECT_TRUE(CString('x', 0).IsEmpty());
    CString s("abc");
    s = static_cast<const char*>(nullptr);
    EXPECT_TRUE(s.IsEmpty());
    s += static_cast<const char*>(nullptr);
    EXPECT_TRUE(s.IsEmpty());
    // Appending a string's own text to itself.
    s = "ab";
    s += s.GetString();
    EXPECT_EQ('c' + s + 'd', "cababd");
}

TEST(CStringTest, OutOfRangeIndexesAreHarmless) {
    CString s("ab");
    EXPECT_EQ(s.GetAt(2), '\0');
    EXPECT_EQ(s[-1], '\0');
    s.SetAt(5, 'z');
    EXPECT_EQ(s, "ab");
}

TEST(CStringTest, ComparisonsUseUnsignedBytes) {
    CString high("\xE9");  // e acute in the ANSI code page
    EXPECT_GT(high.Compare("z"), 0);
    EXPECT_TRUE(CString("a") < CString("b"));
    EXPECT_TRUE("a" < CString("b"));
    EXPECT_EQ(CString("abc").Compare("abd"), -1);
    EXPECT_EQ(CString("abc").CompareNoCase("ABC"), 0);
    // Folding goes to lower case, so '_' sorts before letters.
    EXPECT_LT(CString("_").CompareNoCase("A"), 0);
    // Case folding leaves the upper half alone.
    EXPECT_NE(CString("\xE9").CompareNoCase("\xC9"), 0);
    // Whole contents, embedded zeros included.
    EXPECT_NE(CString("a\0b", 3), CString("a"));
}

TEST(CStringTest, ExtractionsClampTheirArguments) {
    const CString s("abcd");
    EXPECT_EQ(s.Left(-1), "");
    EXPECT_EQ(s.Left(10), "abcd");
    EXPECT_EQ(s.Right(2), "cd");
    EXPECT_EQ(s.Right(10), "abcd");
    EXPECT_EQ(s.Right(-3), "");
    EXPECT_EQ(s.Mid(2, 100), "cd");
    EXPECT_EQ(s.Mid(-1, 2), "ab");
    EXPECT_EQ(s.Mid(4), "");
    EXPECT_EQ(s.Mid(9), "");
    EXPECT_EQ(s.Mid(1, -2), "");
}

TEST(CStringTest, Searches) {
    const CString s("abcabc");
    EXPECT_EQ(s.Find('c'), 2);
    EXPECT_EQ(s.Find('c', 3), 5);
    EXPECT_EQ(s.Find('c', 6), -1);
    EXPECT_EQ(s.Find('a', -5), 0);
    EXPECT_EQ(s.Find("bc", 2), 4);
    EXPECT_EQ(s.Find("zz"), -1);
    EXPECT_EQ(s.Find("", 6), 6);
    EXPECT_EQ(s.Find("", 7), -1);
    EXPECT_EQ(s.ReverseFind('a'), 3);
    EXPECT_EQ(s.ReverseFind('z'), -1);
}

TEST(CStringTest, CaseTrimReplace) {
    CString s(" \tMixed \xC9t\xE9\r\n");
    s.Trim();
    EXPECT_EQ(s, "Mixed \xC9t\xE9");
    s.MakeUpper();
    EXPECT_EQ(s, "MIXED \xC9T\xE9");
    s.MakeLower();
    EXPECT_EQ(s, "mixed \xC9t\xE9");

    CString dots("..a..");
    dots.TrimLeft('.');
    EXPECT_EQ(dots, "a..");
    dots.TrimRight(".");
    EXPECT_EQ(dots, "a");
    CString only("xxx");
    only.TrimRight('x');
    EXPECT_TRUE(only.IsEmpty());

    CString r("aaa");
    EXPECT_EQ(r.Replace("a", "aa"), 3);
    EXPECT_EQ(r, "aaaaaa");
    EXPECT_EQ(r.Replace("aa", ""), 3);
    EXPECT_TRUE(r.IsEmpty());
    EXPECT_EQ(r.Replace("", "x"), 0);
    CString c("a-b-c");
    EXPECT_EQ(c.Replace('-', '+'), 2);
    EXPECT_EQ(c, "a+b+c");
}

TEST(CStringTest, FormatHasNoLengthLimit) {
    CString s;
    s.Format("%05d|%s", 42, "x");
    EXPECT_EQ(s, "00042|x");
    const std::string big(10000, 'q');
    s.Format("<%s>", big.c_str());
    EXPECT_EQ(s.GetLength(), 10002);
    EXPECT_EQ(s.Right(2), "q>");
    s.Format("%s", "");
    EXPECT_TRUE(s.IsEmpty());
}

TEST(CStringTest, FormatsAsChaineDoes) {
    CString s;
    s.Format("%I64d|%I64x", 1LL << 40, -1LL);
    EXPECT_EQ(s, "1099511627776|ffffffffffffffff");
    s.Format("[%S|%Lf|%ld]", u"\u00e9t\u00e9", 1.5, -1);
    EXPECT_EQ(s, "[\xE9t\xE9|1.500000|-1]");
    // A zero character ends the text, as the framework's ReleaseBuffer does.
    s.Format("ab%cde", 0);
    EXPECT_EQ(s.GetLength(), 2);
}

TEST(CStringTest, DeleteTakesANegativeIndexAsZero) {
    CString s("abcd");
    EXPECT_EQ(s.Delete(-3, 2), 2);
    EXPECT_EQ(s, "cd");
}

TEST(CStringTest, BufferAccess) {
    CString s("abc");
    char* p = s.GetBuffer(10);
    std::strcpy(p, "0123456789");
    s.ReleaseBuffer();
    EXPECT_EQ(s, "0123456789");

    p = s.GetBuffer(0);
    p[2] = '\0';
    s.ReleaseBuffer();
    EXPECT_EQ(s, "01");

    p = s.GetBufferSetLength(4);
    std::memcpy(p, "wxyz", 4);
    s.ReleaseBuffer(3);
    EXPECT_EQ(s, "wxy");
    EXPECT_EQ(s.GetLength(), 3);
}

}  // namespace
