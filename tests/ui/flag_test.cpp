#include "nvk/platform/flag.h"

#include <gtest/gtest.h>

namespace {

TEST(BitFunctions, CountFromOneWithShiftsModulo32) {
    long word = 0;
    SetBit(word, 1);
    EXPECT_EQ(word, 1);
    EXPECT_NE(IsBitSet(word, 1), 0);
    EXPECT_NE(IsBitSet(word, 33), 0);
    EXPECT_EQ(IsBitSet(word, 2), 0);
    SetBit(word, 32);
    EXPECT_NE(IsBitSet(word, 32), 0);
    ClearBit(word, 1);
    EXPECT_EQ(IsBitSet(word, 1), 0);
    EXPECT_NE(IsBitSet(word, 32), 0);

    // The two families number the same bit differently.
    int raw = 1;
    bdFlag flags(&raw);
    EXPECT_NE(IsBitSet(raw, 1), 0);
    EXPECT_TRUE(flags.Is(0));
    EXPECT_FALSE(flags.Is(1));
    EXPECT_TRUE(flags.Is(32));
}

TEST(BdFlag, WorksOnTheWordItPointsAt) {
    int word = 0;
    bdFlag flags(&word);
    flags.SetFlag(3);
    flags.SetFlag(35);  // bit 3 again
    EXPECT_EQ(word, 8);
    flags.SetOpposite(0);
    EXPECT_EQ(word, 9);
    flags.ResetFlag(3);
    EXPECT_EQ(word, 1);
    EXPECT_TRUE(flags[0]);
    EXPECT_TRUE(flags.GetFlag(0));
    flags.SetFlag(31);
    EXPECT_EQ(static_cast<unsigned>(word), 0x80000001u);

    EXPECT_TRUE(flags.IsAllOf(-1));
    EXPECT_FALSE(flags.IsOneOf(-1));
    EXPECT_TRUE(flags.IsAllOf(0, 31, -1));
    EXPECT_FALSE(flags.IsAllOf(0, 2, 31, -1));
    EXPECT_TRUE(flags.IsOneOf(2, 4, 31, -1));
    EXPECT_FALSE(flags.IsOneOf(2, 4, -1));

    // Assignment copies the other's word, not its pointer.
    int other = 6;
    bdFlag second(&other);
    flags = second;
    EXPECT_EQ(word, 6);
    other = 0;
    EXPECT_EQ(flags.GetFlags(), 6);
    flags.ResetFlags();
    EXPECT_EQ(word, 0);

    // Pointing nowhere, it reads 0 and ignores changes instead of faulting.
    bdFlag nowhere;
    nowhere.SetFlag(1);
    EXPECT_EQ(nowhere.GetFlags(), 0);
    EXPECT_FALSE(nowhere.IsOneOf(1, -1));
}

TEST(CFlag, OwnOrBorrowedWord) {
    CFlag own(5);
    EXPECT_EQ(own.GetFlags(), 5);

    int outside = 2;
    CFlag borrowed(&outside);
    borrowed.SetFlag(0);
    EXPECT_EQ(outside, 3);

    // A copy carries its own word with the other's value.
    CFlag copy(borrowed);
    copy.SetFlag(4);
    EXPECT_EQ(copy.GetFlags(), 19);
    EXPECT_EQ(outside, 3);

    // Assignment writes through the pointer, then takes the other's own
    // word: for a borrowed source that is its unused 0.
    CFlag target(1);
    target = borrowed;
    EXPECT_EQ(target.GetFlags(), 0);
    borrowed = own;
    EXPECT_EQ(outside, 5);
}

}  // namespace
