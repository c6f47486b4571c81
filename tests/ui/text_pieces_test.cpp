#include "nvk/platform/text_pieces.h"

#include <gtest/gtest.h>

namespace {

TEST(LoadTabString, FillsUpToCountAndLeavesTheRest) {
    CString out[3] = {"x", "y", "z"};
    LoadTabString(out, 3, "a|b");
    EXPECT_EQ(out[0], "a");
    EXPECT_EQ(out[1], "b");
    EXPECT_EQ(out[2], "z");

    CString two[2] = {"x", "y"};
    LoadTabString(two, 2, "a|b|c|d");
    EXPECT_EQ(two[0], "a");
    EXPECT_EQ(two[1], "b");

    CString one[1] = {"x"};
    LoadTabString(one, 0, "a|b");
    EXPECT_EQ(one[0], "a");
    LoadTabString(one, 0, "");
    EXPECT_EQ(one[0], "");

    CString closed[3] = {"x", "y", "z"};
    LoadTabString(closed, 3, "a|");
    EXPECT_EQ(closed[1], "");
    EXPECT_EQ(closed[2], "z");
}

TEST(SplitName, CutsAtTheFirstPoint) {
    CString name = "fichier.tar.gz", left, right;
    SplitName(name, left, right);
    EXPECT_EQ(left, "fichier");
    EXPECT_EQ(right, "tar.gz");
    name = "sans";
    SplitName(name, left, right);
    EXPECT_EQ(left, "sans");
    EXPECT_EQ(right, "");
    // The name may be one of the parts.
    name = "a.b";
    SplitName(name, name, right);
    EXPECT_EQ(name, "a");
    EXPECT_EQ(right, "b");

    CString a, b, c;
    name = "x.y.z";
    EXPECT_EQ(SplitNameEx(name, a, b, c), 1);
    EXPECT_EQ(a + "|" + b + "|" + c, "x|y|z");
    name = "x.y";
    EXPECT_EQ(SplitNameEx(name, a, b, c), 1);
    EXPECT_EQ(a + "|" + b + "|" + c, "x|y|");
    name = "x";
    EXPECT_EQ(SplitNameEx(name, a, b, c), 0);
    EXPECT_EQ(a + "|" + b + "|" + c, "x||");
}

TEST(Trim, RemovesBlanksAndTabsEverywhere) {
    CString text = " \ta b\t c \t";
    Trim(text);
    EXPECT_EQ(text, "abc");
    text = "a\nb";
    Trim(text);
    EXPECT_EQ(text, "a\nb");
}

}  // namespace
