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
    // Reopening keeps the length over fresh memory.
    file.Close();
    EXPECT_EQ(0u, file.Taille());
    ASSERT_EQ(1, file.Open(nullptr, 3, 0));
    EXPECT_EQ(10u, file.Taille());
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

// The record file's layout, in fixed-length and variable-length files.
class DataFile : public ::testing::Test {
protected:
    void OpenFixed(unsigned long size) {
        ASSERT_EQ(1, m_File.Create(m_Path.c_str(), size));
        ASSERT_EQ(0, m_File.Create(m_Path.c_str(), size));  // now exists with content
        ASSERT_NE(nullptr, m_File.Open(m_Path.c_str()));
    }
    void InsertFixed(std::uint32_t tag) {
        std::memset(m_File.Adresse(), 0, 16);
        std::memcpy(m_File.Adresse(), &tag, 4);
        m_File.Insere(nullptr, 0);
    }
    std::uint32_t Tag() const {
        std::uint32_t tag;
        std::memcpy(&tag, m_File.Adresse(), 4);
        return tag;
    }

    TempPath m_Path{"records.dat"};
    EDataFile m_File;
};

TEST_F(DataFile, FixedRecordsReuseDeletedSlotsLatestFirst) {
    OpenFixed(16);
    EXPECT_EQ(0, m_File.First());
    for (std::uint32_t tag = 1; tag <= 6; ++tag) {
        InsertFixed(tag * 10);
        EXPECT_EQ(tag, m_File.Courant());
    }
    m_File.Read(5, nullptr);
    m_File.Delete();
    m_File.Read(3, nullptr);
    m_File.Delete();
    m_File.Delete();  // already deleted: nothing happens
    EXPECT_EQ(4u, m_File.Nombre());
    m_File.Close();
    std::vector<char> bytes = ReadAll(m_Path.c_str());
    EXPECT_EQ(3u, At<std::uint32_t>(bytes, 12));                // FreeHead
    EXPECT_EQ(0xFFFFFFFFu, At<std::uint32_t>(bytes, 36 + 32));  // record 3 is marked
    EXPECT_EQ(5u, At<std::uint32_t>(bytes, 36 + 32 + 4));       // and links to 5
    ASSERT_NE(nullptr, m_File.Open(m_Path.c_str()));
    std::vector<std::uint32_t> seen;
    for (int more = m_File.First(); more; more = m_File.Next()) {
        seen.push_back(Tag());
    }
    EXPECT_EQ((std::vector<std::uint32_t>{10, 20, 40, 60}), seen);
    EXPECT_EQ(1, m_File.Last());
    EXPECT_EQ(60u, Tag());
    EXPECT_EQ(1, m_File.Prev());
    EXPECT_EQ(40u, Tag());
    InsertFixed(33);
    EXPECT_EQ(3u, m_File.Courant());
    InsertFixed(55);
    EXPECT_EQ(5u, m_File.Courant());
    InsertFixed(77);
    EXPECT_EQ(7u, m_File.Courant());
    EXPECT_EQ(7u, m_File.Nombre());
}

TEST_F(DataFile, OpenRefusesDamagedHeaders) {
    OpenFixed(16);
    InsertFixed(1);
    m_File.Close();
    std::vector<char> bytes = ReadAll(m_Path.c_str());
    auto refused = [&](std::vector<char> damaged) {
        WriteAll(m_Path.c_str(), damaged);
        EDataFile file;
        return file.Open(m_Path.c_str()) == nullptr;
    };
    std::vector<char> magic = bytes;
    magic[0] = 2;
    EXPECT_TRUE(refused(magic));
    std::vector<char> ragged = bytes;
    ragged.push_back(0);
    EXPECT_TRUE(refused(ragged));
    std::vector<char> counted = bytes;
    Put<std::uint32_t>(counted, 8, 2);
    EXPECT_TRUE(refused(counted));
    EXPECT_TRUE(refused({}));
    // A free head that is not a deleted record is dropped, not followed.
    std::vector<char> head = bytes;
    Put<std::uint32_t>(head, 12, 1);
    EXPECT_FALSE(refused(head));
    ASSERT_NE(nullptr, m_File.Open(m_Path.c_str()));
    InsertFixed(2);
    EXPECT_EQ(2u, m_File.Courant());
    m_File.Read(1, nullptr);
    EXPECT_EQ(1u, Tag());
}

TEST(VariableRecords, HolesAreReusedOnlyWhenLargeEnough) {
    EDataFile file;
    ASSERT_EQ(1, file.Create(nullptr, 0));
    ASSERT_EQ(reinterpret_cast<void*>(~std::uintptr_t{0}), file.Open(nullptr));
    std::vector<char> payload(100, 'p');
    file.Insere(payload.data(), 46);  // L = 50
    const unsigned long hole = file.Courant();
    file.Insere(payload.data(), 20);
    const unsigned long second = file.Courant();
    file.Seek(hole);
    file.Delete();
    file.Insere(payload.data(), 100);  // too big: appended
    EXPECT_GT(file.Courant(), second);
    std::vector<char> small(40, 's');
    file.Insere(small.data(), 40);
    EXPECT_EQ(hole, file.Courant());
    EXPECT_EQ(46u, file.GetTaille(hole));
    // An update writes the stored length's worth and no more.
    std::vector<char> longer(200, 'u');
    file.Seek(hole);
    file.Update(longer.data(), 200);
    std::vector<char> back(46);
    file.Read(hole, back.data());
    EXPECT_EQ(std::vector<char>(46, 'u'), back);
    EXPECT_EQ(0, file.Last());
    EXPECT_EQ(1, file.First());
    EXPECT_EQ(1, file.Next());
    EXPECT_EQ(second, file.Courant());
    EXPECT_EQ(3u, file.Nombre());
}

}  // namespace
}  // namespace nvk::test
