#include "nvk/core/blob.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "nvk/afx/exceptions.h"
#include "nvk/core/chaine.h"
#include "nvk/core/process_singleton.h"

namespace {

void Fill(CSBlob& blob, int n, char c) {
    blob.SetSize(n);
    std::memset(blob.GetWritableData(), c, static_cast<std::size_t>(n));
}

TEST(BlobTest, BlockSizesAndOrigins) {
    CSBlob blob;
    EXPECT_EQ(blob.GetData(), nullptr);
    blob.SetSize(4084);
    EXPECT_EQ(blob.Block()->Capacity, 4096u);  // the largest heap block
    blob.SetSize(4085);
    EXPECT_EQ(blob.Block()->Capacity, 8192u);  // two pages, from the system
    blob.SetSize(1);
    EXPECT_EQ(blob.Block()->Capacity, 256u);
    blob.SetSize(0);
    EXPECT_EQ(blob.GetData(), nullptr);
    EXPECT_EQ(blob.Block(), nullptr);
}

TEST(BlobTest, ShrinkingKeepsTheBlockUpToHalf) {
    CSBlob blob;
    Fill(blob, 1000, 'x');
    const BlobBlock* block = blob.Block();
    blob.SetSize(600);
    EXPECT_EQ(blob.Block(), block);
    EXPECT_EQ(static_cast<const char*>(blob.GetData())[599], 'x');
    blob.SetSize(400);
    EXPECT_NE(blob.Block(), nullptr);
    EXPECT_EQ(blob.GetLength(), 400);
    EXPECT_LT(blob.Block()->Capacity, 1024u);
}

TEST(BlobTest, SharedBlocksSeparateOnWrite) {
    CSBlob a;
    Fill(a, 10, 'a');
    CSBlob b = a;
    EXPECT_EQ(a.Block(), b.Block());
    EXPECT_EQ(a.Block()->RefCount, 2u);
    static_cast<char*>(b.GetWritableData())[0] = 'b';
    EXPECT_NE(a.Block(), b.Block());
    EXPECT_EQ(static_cast<const char*>(a.GetData())[0], 'a');
    EXPECT_EQ(static_cast<const char*>(b.GetData())[1], 'a');
    EXPECT_EQ(a.Block()->RefCount, 1u);

    // A shared block whose capacity outgrew its length: growing back into
    // that capacity gives the writer enough room of its own.
    CSBlob c;
    Fill(c, 1000, 'c');
    c.SetSize(600);
    CSBlob d = c;
    d.SetSize(1000);
    std::memset(d.GetWritableData(), 'd', 1000);
    EXPECT_EQ(static_cast<const char*>(d.GetData())[0], 'd');
    EXPECT_EQ(c.GetLength(), 600);
    EXPECT_EQ(static_cast<const char*>(c.GetData())[0], 'c');

    b.Release();
    EXPECT_EQ(b.GetData(), nullptr);
}

TEST(BlobTest, ValueCarriesText) {
    BlobValue value;
    value.Header = 5;  // a type
    const char bytes[] = {'a', '\0', 'b'};
    value.SetBytes(bytes, 3);
    EXPECT_EQ(value.Header, 5u + 0x80u + (3u << 8));
    Chaine text = value;
    EXPECT_EQ(text.Length(), 3);
    EXPECT_EQ(std::memcmp(text.c_str(), bytes, 3), 0);

    BlobValue fromText(Chaine("hello"));
    EXPECT_EQ(fromText.Header, 0x80u + (5u << 8));
    EXPECT_STREQ(Chaine(fromText), "hello");

    // No data, or a header that claims none, reads as the empty text.
    BlobValue empty(Chaine(""));
    EXPECT_EQ(empty.Header, 0x80u);
    EXPECT_EQ(empty.GetData(), nullptr);
    EXPECT_TRUE(Chaine(empty).IsEmpty());
    fromText.Header = 0x85;
    EXPECT_TRUE(Chaine(fromText).IsEmpty());

    // Bytes of the value's own block survive being stored over it.
    BlobValue self(Chaine("abcdef"));
    self.SetBytes(static_cast<const char*>(self.GetData()) + 2, 3);
    EXPECT_STREQ(Chaine(self), "cde");
}

// The header's 24 bits hold the length: a longer value is refused whole, not
// cut to its first 16 MiB.
TEST(BlobTest, AValueTooLongForTheHeaderIsRefused) {
    std::vector<char> bytes(BlobValue::kMaxLength + 1, 'x');
    BlobValue value(Chaine("kept"));
    try {
        value.SetBytes(bytes.data(), BlobValue::kMaxLength + 1);
        ADD_FAILURE() << "no exception";
    } catch (CNotSupportedException* e) {
        e->Delete();
    }
    EXPECT_STREQ(Chaine(value), "kept");
    value.SetBytes(bytes.data(), BlobValue::kMaxLength);
    EXPECT_EQ(value.Header >> 8, static_cast<std::uint32_t>(BlobValue::kMaxLength));
    EXPECT_EQ(Chaine(value).Length(), BlobValue::kMaxLength);
}

TEST(BlobTest, LockIsTheProcessSingleton) {
    CSBlob blob;
    blob.SetSize(1);
    EProcessSingleton handle("NVK_CSBlob");
    ASSERT_NE(handle.Record(), nullptr);
    EXPECT_NE(handle.Record()->Object, nullptr);
}

}  // namespace
