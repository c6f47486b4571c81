#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "nvk/storage/memory_file.h"
#include "storage_support.h"

namespace nvk::test {
namespace {

TEST(MemoryFile, SeeksStayInsideAndReadsAreAllOrNothing) {
    EMemoryFile file;
    EXPECT_EQ(0, file.Write(const_cast<char*>("x"), 1));  // closed
    ASSERT_EQ(1, file.Open(nullptr, 3, 0));
    char text[] = "0123456789";
    ASSERT_EQ(1, file.Write(text, 10));
    EXPECT_EQ(10u, file.Seek(10, 2));
    EXPECT_EQ(0u, file.Seek(-1, 0));
    EXPECT_EQ(4u, file.Seek(4, 1));
    char buffer[8] = {};
    EXPECT_EQ(0, file.Read(buffer, 7));  // would pass the end
    EXPECT_EQ(4u, file.GetPosition());
    EXPECT_EQ(1, file.Read(buffer, 6));
    EXPECT_EQ(0, std::memcmp(buffer, "456789", 6));
}

// Reads and writes stay inside the block, whatever the length was made.
TEST(MemoryFile, LengthNeverPassesTheBlock) {
    EMemoryFile file;
    ASSERT_EQ(1, file.Open(nullptr, 3, 0));
    std::vector<char> big(20 << 20, 'b');
    ASSERT_EQ(1, file.Write(big.data(), big.size()));
    // Reopened over a fresh block, the file is empty.
    file.Close();
    EXPECT_EQ(0u, file.Taille());
    ASSERT_EQ(1, file.Open(nullptr, 3, 0));
    EXPECT_EQ(0u, file.Taille());
    EXPECT_EQ(0u, file.Seek(big.size() - 16, 0));
    char back[16] = {};
    EXPECT_EQ(0, file.Read(back, 16));
    // A length above the block grows it, with zeros.
    char text[] = "abc";
    ASSERT_EQ(1, file.Write(text, 3));
    file.SetTaille(64 << 20);
    EXPECT_EQ(64u << 20, file.Taille());
    file.Seek(-16, 2);
    ASSERT_EQ(1, file.Read(back, 16));
    EXPECT_EQ(std::vector<char>(16, 0), std::vector<char>(back, back + 16));
    file.SeekToBegin();
    ASSERT_EQ(1, file.Read(back, 3));
    EXPECT_EQ(0, std::memcmp(back, "abc", 3));
    // Cut, then lengthened inside the block: the bytes come back as zeros.
    file.SetTaille(1);
    file.SetTaille(3);
    file.SeekToBegin();
    ASSERT_EQ(1, file.Read(back, 3));
    EXPECT_EQ(0, std::memcmp(back, "a\0\0", 3));
}

TEST(MemoryFile, GrowsByDoublingAndKeepsItsContent) {
    EMemoryFile file;
    ASSERT_EQ(1, file.Open(nullptr, 0, 0));
    std::vector<char> block(8191, 'a');
    ASSERT_EQ(1, file.Write(block.data(), block.size()));  // up to capacity minus one
    char b = 'b';
    ASSERT_EQ(1, file.Write(&b, 1));  // one more doubles the block
    std::vector<char> big(20000, 'c');
    ASSERT_EQ(1, file.Write(big.data(), big.size()));
    EXPECT_EQ(28192u, file.Taille());
    file.Seek(8190, 0);
    char back[3] = {};
    ASSERT_EQ(1, file.Read(back, 3));
    EXPECT_EQ(0, std::memcmp(back, "abc", 3));
}

TEST(BaseFile, OpenModesAndShortReads) {
    TempPath path("plain.bin");
    EBaseFile file;
    EXPECT_EQ(0, file.Read(nullptr, 0));          // closed
    EXPECT_EQ(0, file.Open(path.c_str(), 3, 1));  // missing, not created
    ASSERT_EQ(1, file.Open(path.c_str(), 19, 0));
    char text[] = "abcdef";
    ASSERT_EQ(1, file.Write(text, 6));
    EXPECT_EQ(6u, file.Taille());
    EXPECT_EQ(1, file.Read(nullptr, 0));
    file.SeekToBegin();
    char buffer[10] = {};
    EXPECT_EQ(0, file.Read(buffer, 10));  // short: the bytes are there all the same
    EXPECT_EQ(0, std::memcmp(buffer, "abcdef", 6));
    file.SetTaille(3);
    EXPECT_EQ(3u, file.Taille());
    EXPECT_EQ(3u, file.GetPosition());
    file.Lock(99);
    file.UnLock(99);
    file.Close();
    // Creating with no access bits makes an empty file that can't be used.
    TempPath other("empty.bin");
    ASSERT_EQ(1, file.Open(other.c_str(), 16, 0));
    EXPECT_EQ(0, file.Write(text, 1));
    file.Close();
}

}  // namespace
}  // namespace nvk::test
