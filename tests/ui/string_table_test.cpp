#include "nvk/platform/string_table.h"

#include <gtest/gtest.h>

namespace {

TEST(StringTable, WithoutBaseTheIndicesRunToTheNumberOfSeparators) {
    CStringTable table("un\ndeux\ntrois", '|', '\n');
    EXPECT_EQ(table.GetZeroBaseIndex(), 0);
    EXPECT_EQ(table.GetMaxIndex(), 2);
    EXPECT_EQ(table.GetString(0), "un");
    EXPECT_EQ(table.GetString(2), "trois");
    EXPECT_EQ(table.GetString(3), "");
    EXPECT_EQ(table.GetString(-1), "");
    EXPECT_EQ(table.GetIndex("deux"), 1);
    EXPECT_EQ(table.GetIndex("quatre"), -1);
    EXPECT_TRUE(table.IsValid());

    // A closing separator makes an empty last entry.
    CStringTable closed("a\nb\n", '|', '\n');
    EXPECT_EQ(closed.GetMaxIndex(), 2);
    EXPECT_EQ(closed.GetIndex(""), 2);
}

TEST(StringTable, ABaseIsNotAddedToTheLastIndex) {
    CStringTable zero("0|un\ndeux\ntrois\n", '|', '\n');
    EXPECT_EQ(zero.GetZeroBaseIndex(), 0);
    EXPECT_EQ(zero.GetMaxIndex(), 2);
    EXPECT_EQ(zero.GetString(2), "trois");

    CStringTable two("2|un\ndeux\ntrois\n", '|', '\n');
    EXPECT_EQ(two.GetZeroBaseIndex(), 2);
    EXPECT_EQ(two.GetMaxIndex(), 2);
    EXPECT_EQ(two.GetString(2), "un");
    EXPECT_EQ(two.GetString(3), "");
    EXPECT_EQ(two.GetIndex("un"), 2);
    EXPECT_EQ(two.GetIndex("deux"), 1);

    // A base and no separator at all: no entry can be reached.
    CStringTable lone("5|seul", '|', '\n');
    EXPECT_EQ(lone.GetMaxIndex(), -1);
    EXPECT_FALSE(lone.IsValid());
}

TEST(StringTable, GetStringOverwritesThePreviousResult) {
    CStringTable table("a\nb", '|', '\n');
    CString& first = table.GetString(0);
    EXPECT_EQ(first, "a");
    table.GetString(1);
    EXPECT_EQ(first, "b");
    table.GetString(7);
    EXPECT_EQ(first, "");
}

TEST(StringTable, EmptyTextAndReinitialisation) {
    CStringTable table;
    EXPECT_FALSE(table.IsValid());
    EXPECT_EQ(table.Init("", '|', '\n'), 0);
    EXPECT_EQ(table.GetMaxIndex(), -1);
    EXPECT_EQ(table.GetString(0), "");
    EXPECT_EQ(table.Init("3|x;y;z", '|', ';'), 1);
    EXPECT_EQ(table.GetZeroBaseIndex(), 3);
    EXPECT_EQ(table.GetMaxIndex(), 1);
    // A single entry with no separator is the whole text.
    EXPECT_EQ(table.Init("seul", '|', ';'), 1);
    EXPECT_EQ(table.GetIndex("seul"), 0);
    EXPECT_EQ(table.GetIndex("seu"), -1);

    CStringTable copy = table;
    EXPECT_EQ(copy.GetString(0), "seul");
}

}  // namespace
