#include "nvk/core/chaine.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "nvk/afx/cstring.h"
#include "nvk/afx/exceptions.h"

namespace {

std::int32_t Refs(const Chaine& value) {
    return value.Buffer()->RefCount;
}

TEST(ChaineBuffers, EmptyValuesShareTheModulesEmptyBuffer) {
    Chaine empty;
    Chaine fromNull(static_cast<const char*>(nullptr));
    Chaine fromId(reinterpret_cast<const char*>(14900));
    EXPECT_EQ(empty.Buffer(), SharedEmptyChaine.Buffer());
    EXPECT_EQ(fromNull.Buffer(), SharedEmptyChaine.Buffer());
    EXPECT_EQ(fromId.Buffer(), SharedEmptyChaine.Buffer());
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(empty.Length(), 0);
    EXPECT_EQ(empty.Buffer()->Size, 1u);
    EXPECT_STREQ(empty, "");
}

TEST(ChaineBuffers, CopiesShareAndChangesSeparate) {
    Chaine a("hello");
    Chaine b(a);
    EXPECT_EQ(a.Buffer(), b.Buffer());
    EXPECT_EQ(Refs(a), 2);
    b.InsertAt(0, '>');
    EXPECT_STREQ(a, "hello");
    EXPECT_STREQ(b, ">hello");
    EXPECT_EQ(Refs(a), 1);
    Chaine c;
    c = a;
    EXPECT_EQ(c.RemoveAt(0), 'h');
    EXPECT_STREQ(a, "hello");
    EXPECT_STREQ(c, "ello");
    a = a;  // self-assignment keeps the value
    EXPECT_STREQ(a, "hello");
}

TEST(ChaineBuffers, GrowthAsksForTheStatedCapacities) {
    EXPECT_EQ(nvk::GrowthRequest(64, 100), 100u);
    EXPECT_EQ(nvk::GrowthRequest(64, 300), 33068u);
    EXPECT_EQ(nvk::GrowthRequest(257, 300), 514u);
    EXPECT_EQ(nvk::GrowthRequest(40000, 40001), 72769u);

    Chaine text("abc");
    EXPECT_EQ(text.Buffer()->Capacity, 64u);
    ChaineBuffer* block = text.Buffer();
    text.SetLength(63);  // Size 64 is not strictly below the capacity: it moves
    EXPECT_NE(text.Buffer(), block);
    EXPECT_EQ(text.Buffer()->Capacity, 64u);
    EXPECT_EQ(std::string(text.c_str(), 3), "abc");
    text.SetLength(300);
    EXPECT_EQ(text.Buffer()->Capacity, (300u + 1 + 32768) | 1u);
}

TEST(ChaineBuffers, TextWithZerosKeepsItsSize) {
    const char bytes[] = {'a', '\0', 'b', '\0', '\0'};
    Chaine kept(bytes, 3);
    EXPECT_EQ(kept.Length(), 3);
    EXPECT_EQ(kept, Chaine(bytes, 3));
    EXPECT_NE(kept, Chaine("a"));
    Chaine stripped(bytes, 5, true);
    EXPECT_EQ(stripped.Length(), 1);
    EXPECT_TRUE(Chaine("\0\0", 2, true).IsEmpty());
    EXPECT_TRUE(Chaine(nullptr, 5).IsEmpty());
    EXPECT_TRUE(Chaine(bytes, -1).IsEmpty());
    Chaine joined = kept + Chaine("c");
    EXPECT_EQ(joined.Length(), 4);
    EXPECT_EQ(std::string(joined.c_str(), 5), std::string("a\0bc\0", 5));
}

TEST(ChaineExtraction, OutOfRangeGivesEmptyOrSharedValues) {
    const Chaine abcd("abcd");
    EXPECT_TRUE(abcd.Left(0).IsEmpty());
    EXPECT_TRUE(abcd.Left(-1).IsEmpty());
    EXPECT_TRUE(abcd.Mid(5).IsEmpty());
    EXPECT_TRUE(abcd.Mid(4).IsEmpty());
    EXPECT_TRUE(abcd.Mid(-1).IsEmpty());
    EXPECT_TRUE(abcd.Right(-3).IsEmpty());
    {
        Chaine whole = abcd.Left(5);
        EXPECT_EQ(whole.Buffer(), abcd.Buffer());
        EXPECT_EQ(Refs(abcd), 2);
    }
    Chaine copied = abcd.Left(4);
    EXPECT_NE(copied.Buffer(), abcd.Buffer());
    Chaine right = abcd.Right(100);
    EXPECT_STREQ(right, "abcd");
    EXPECT_NE(right.Buffer(), abcd.Buffer());
    EXPECT_STREQ(abcd.Mid(2, 100), "cd");
    EXPECT_STREQ(abcd.Mid(1, 2), "bc");
    EXPECT_TRUE(abcd.Mid(1, 0).IsEmpty());
    EXPECT_STREQ(abcd.Right(1), "d");
    EXPECT_STREQ(abcd.Mid(3), "d");
}

TEST(ChaineChanges, InsertPadReplaceAndRemove) {
    Chaine text("ab");
    text.InsertAt(5, 'x');
    EXPECT_STREQ(text, "ab   x");
    text.InsertAt(1, '-');
    EXPECT_STREQ(text, "a-b   x");
    EXPECT_EQ(text.RemoveAt(7), '\0');
    EXPECT_EQ(text.RemoveAt(-1), '\0');

    Chaine padded("42");
    padded.PadLeft(5, '0');
    EXPECT_STREQ(padded, "00042");
    padded.PadLeft(3, '0');
    EXPECT_STREQ(padded, "00042");
    padded.PadRight(7, '.');
    EXPECT_STREQ(padded, "00042..");

    Chaine replaced("hello world");
    replaced.ReplaceRange(6, 5, "there");
    EXPECT_STREQ(replaced, "hello there");
    replaced.ReplaceRange(0, 5, "");
    EXPECT_STREQ(replaced, " there");
    replaced.ReplaceRange(99, 3, "!");  // clamped to the end
    EXPECT_STREQ(replaced, " there!");
}

TEST(ChaineChanges, AssignFromItsOwnTextIsSafe) {
    Chaine text("abcdefghijklmnopqrstuvwxyz");
    text.Assign(text.c_str() + 3);
    EXPECT_STREQ(text, "defghijklmnopqrstuvwxyz");
    text += text;
    EXPECT_STREQ(text, "defghijklmnopqrstuvwxyzdefghijklmnopqrstuvwxyz");
    text += text.c_str() + 40;
    EXPECT_STREQ(text, "defghijklmnopqrstuvwxyzdefghijklmnopqrstuvwxyzuvwxyz");
    text.AssignCount(text.c_str() + 1, 3);
    EXPECT_STREQ(text, "efg");
    EXPECT_EQ(text.Buffer()->Size, 4u);
    text.AssignCount("ab\0cd", 5);
    EXPECT_STREQ(text, "ab");
    EXPECT_EQ(text.Length(), 2);
    text.AssignCount("", 4);
    EXPECT_TRUE(text.IsEmpty());
}

// An allocation that throws leaves each value holding a buffer it owns: a
// shared buffer released before the throw would be freed again by the value
// and reused under the other holder.
TEST(ChaineChanges, AFailedAllocationLeavesEveryValueValid) {
    Chaine a("hello");
    Chaine b(a);
    try {
        b.AssignCount("abc", INT_MAX);
        ADD_FAILURE() << "no exception";
    } catch (CException* e) {
        e->Delete();
    }
    EXPECT_STREQ(b, "hello");
    b.Empty();
    Chaine c("XXXXXXXXXXXXXXXXXX");
    EXPECT_STREQ(a, "hello");
    EXPECT_EQ(Refs(a), 1);

    Chaine d(a);
    EXPECT_THROW(d.Assign("abc", INT_MAX), CMemoryException*);
    EXPECT_STREQ(d, "hello");
    EXPECT_EQ(Refs(a), 2);
}

TEST(ChaineConcatenation, ZeroOperandsShareTheValue) {
    Chaine left("left");
    Chaine same = left + '\0';
    EXPECT_EQ(same.Buffer(), left.Buffer());
    Chaine alsoSame = static_cast<const char*>(nullptr) + left;
    EXPECT_EQ(alsoSame.Buffer(), left.Buffer());
    EXPECT_STREQ(left + '!', "left!");
    EXPECT_STREQ('>' + left, ">left");
    EXPECT_STREQ("a " + left + " b", "a left b");
    EXPECT_EQ((left + "!").Buffer()->Size, 6u);

    Chaine appended;
    for (int i = 0; i < 300; ++i) {
        appended += 'x';
    }
    EXPECT_EQ(appended.Length(), 300);
    EXPECT_EQ(appended, Chaine(std::string(300, 'x').c_str()));
}

TEST(ChaineEquality, SharingEqualityMergesBuffers) {
    Chaine a("same");
    Chaine b("same");
    EXPECT_EQ(a, b);
    EXPECT_NE(a.Buffer(), b.Buffer());
    EXPECT_TRUE(a.EqualAndShare(b));
    EXPECT_EQ(a.Buffer(), b.Buffer());
    Chaine c("other");
    EXPECT_FALSE(a.EqualAndShare(c));
    EXPECT_NE(a.Buffer(), c.Buffer());
}

TEST(ChaineFixedFields, PaddedAndFixedCopies) {
    char field[8];
    std::memset(field, '#', sizeof field);
    Chaine("abcdef").CopyToPadded(field, 4, '.');
    EXPECT_EQ(std::string(field, 5), "abc.#");
    Chaine("abcdef").CopyToFixed(field, 4, '.');
    EXPECT_EQ(std::string(field, 5), "abcd#");
    Chaine("ab").CopyToFixed(field, 4, '\0');
    EXPECT_EQ(std::string(field, 5), std::string("ab\0\0#", 5));
    Chaine("ab").CopyToPadded(field, 0, '.');
    EXPECT_EQ(field[0], 'a');
}

TEST(ChaineFramework, FromCString) {
    CString framework("framework");
    Chaine text(framework);
    EXPECT_STREQ(text, "framework");
    EXPECT_EQ(text.Buffer()->Size, 10u);
}

}  // namespace
