// Damaged index files: every answer is one of the documented ones (0, 128, a
// refused Open), and nothing loops or reads outside its buffers.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "storage_support.h"

namespace nvk::test {
namespace {

constexpr std::uint32_t kPage = 44;  // 4 entries of a 4-byte key
constexpr std::size_t kDescriptor = 36;

std::size_t PageAt(std::uint32_t page) {
    return 612 + (page - 1) * std::size_t{kPage};
}

class DamagedIndex : public ::testing::Test {
protected:
    void SetUp() override {
        EIndexFile index;
        ASSERT_EQ(1, index.Create(m_Path.c_str(), kPage));
        ASSERT_EQ(1, index.Open(m_Path.c_str()));
        ASSERT_EQ(1, index.CreateIndex(4, 18, 0));
        for (std::uint32_t k = 1; k <= 40; ++k) {
            ASSERT_EQ(0, index.Insere(1, &k, k));
        }
        index.Close();
        m_Bytes = ReadAll(m_Path.c_str());
    }
    std::uint32_t Field(std::size_t offset) const { return At<std::uint32_t>(m_Bytes, offset); }
    std::uint32_t FirstLeaf() const { return Field(kDescriptor + 16); }
    std::uint32_t Root() const { return Field(kDescriptor); }
    // Writes the damaged bytes and opens them.
    void Reopen() {
        m_Index.Close();
        WriteAll(m_Path.c_str(), m_Bytes);
        ASSERT_EQ(1, m_Index.Open(m_Path.c_str()));
    }
    unsigned long ScanLength() {
        unsigned long length = 0;
        for (unsigned long v = m_Index.First(1); v != 0 && length < 1000; v = m_Index.Next()) {
            ++length;
        }
        return length;
    }

    TempPath m_Path{"damaged.idx"};
    std::vector<char> m_Bytes;
    CheckedIndex m_Index;
};

TEST_F(DamagedIndex, CycleInTheLeafChainEndsWalks) {
    Put<std::uint32_t>(m_Bytes, PageAt(FirstLeaf()) + 8, FirstLeaf());
    Reopen();
    EXPECT_LT(ScanLength(), 1000u);
    std::uint32_t k = 39;
    EXPECT_EQ(39u, m_Index.Equal(1, &k));
    EXPECT_NE("", m_Index.Check());
}

TEST_F(DamagedIndex, PagePastTheEndOfTheFile) {
    Put<std::uint32_t>(m_Bytes, kDescriptor, 999);  // Root
    Reopen();
    std::uint32_t k = 5;
    EXPECT_EQ(0u, m_Index.Equal(1, &k));
    EXPECT_EQ(0u, m_Index.GreaterEqual(1, &k));
    EXPECT_EQ(EIndexFile::kDamaged, m_Index.Insere(1, &k, 5));
    EXPECT_EQ(EIndexFile::kDamaged, m_Index.Delete(1, &k, 5));
    EXPECT_EQ(40u, ScanLength());  // the leaves are still there
}

TEST_F(DamagedIndex, CountAboveWhatAPageHolds) {
    Put<std::uint16_t>(m_Bytes, PageAt(FirstLeaf()) + 2, 0xFFF0);
    Reopen();
    std::uint32_t k = 1;
    EXPECT_EQ(0u, m_Index.First(1));
    EXPECT_EQ(0u, m_Index.Equal(1, &k));
    EXPECT_EQ(EIndexFile::kDamaged, m_Index.Insere(1, &k, 1));
    EXPECT_EQ(0u, m_Index.Nombre(1, &k, 4));
    EXPECT_EQ(-1, m_Index.GetFocus(1, &k, 4));
}

TEST_F(DamagedIndex, LevelThatDoesNotDescend) {
    const std::uint16_t rootLevel = At<std::uint16_t>(m_Bytes, PageAt(Root()));
    ASSERT_GT(rootLevel, 0);
    const std::uint32_t child = Field(PageAt(Root()) + 12 + 4);
    Put<std::uint16_t>(m_Bytes, PageAt(child), rootLevel);
    Reopen();
    std::uint32_t k = 1;
    EXPECT_EQ(0u, m_Index.Equal(1, &k));
    EXPECT_EQ(0u, m_Index.LessEqual(1, &k));
    EXPECT_EQ(EIndexFile::kDamaged, m_Index.Insere(1, &k, 1));
    // A root that points to itself.
    Put<std::uint32_t>(m_Bytes, PageAt(Root()) + 12 + 4, Root());
    Reopen();
    EXPECT_EQ(0u, m_Index.Equal(1, &k));
}

TEST_F(DamagedIndex, CycleInTheFreeList) {
    Reopen();
    for (std::uint32_t k = 1; k <= 12; ++k) {
        ASSERT_EQ(0, m_Index.Delete(1, &k, k));
    }
    m_Index.Close();
    m_Bytes = ReadAll(m_Path.c_str());
    const std::uint32_t free = Field(12);
    ASSERT_NE(0u, free);
    Put<std::uint32_t>(m_Bytes, PageAt(free) + 4, free);
    Reopen();
    int damaged = 0;
    for (std::uint32_t k = 100; k < 140; ++k) {
        const int result = m_Index.Insere(1, &k, k);
        ASSERT_TRUE(result == 0 || result == EIndexFile::kDamaged) << result;
        damaged += result == EIndexFile::kDamaged;
    }
    EXPECT_GT(damaged, 0);
}

// Keys out of order between neighbours, in a page and across two pages.
TEST_F(DamagedIndex, CheckFindsKeysOutOfOrder) {
    const std::vector<char> sound = m_Bytes;
    const std::size_t leaf = PageAt(FirstLeaf());
    const std::uint32_t second = Field(leaf + 8);
    const std::uint16_t count = At<std::uint16_t>(m_Bytes, leaf + 2);
    Put<std::uint32_t>(m_Bytes, leaf + 12 + 8 * 1, Field(leaf + 12 + 8 * 2) + 1);
    Reopen();
    EXPECT_NE(m_Index.Check().find("out of order"), std::string::npos);
    m_Bytes = sound;
    Put<std::uint32_t>(m_Bytes, leaf + 12 + 8 * (count - 1), Field(PageAt(second) + 12) + 1);
    Reopen();
    EXPECT_NE(m_Index.Check().find("out of order"), std::string::npos);
}

TEST_F(DamagedIndex, ZeroKeySizeStillAnswers) {
    m_Bytes[kDescriptor + 9] = 0;   // KeySize
    m_Bytes[kDescriptor + 10] = 4;  // EntrySize
    Put<std::uint16_t>(m_Bytes, kDescriptor + 14, 8);
    Reopen();
    std::uint32_t k = 3;
    m_Index.Equal(1, &k);
    m_Index.First(1);
    while (m_Index.Next() != 0) {
    }
    const int result = m_Index.Insere(1, &k, 3);
    EXPECT_TRUE(result == 0 || result == EIndexFile::kDuplicate || result == EIndexFile::kDamaged);
}

TEST_F(DamagedIndex, OpenRefusesInconsistentHeaders) {
    const std::vector<char> sound = m_Bytes;
    const std::vector<std::function<void(std::vector<char>&)>> damages = {
        [](auto& b) { b[kDescriptor + 10] = 9; },                     // EntrySize
        [](auto& b) { Put<std::uint32_t>(b, 4, 0); },                 // PageSize 0
        [](auto& b) { Put<std::uint32_t>(b, 4, 8); },                 // under a page header
        [](auto& b) { Put<std::uint16_t>(b, 16, 17); },               // IndexCount
        [](auto& b) { Put<std::uint16_t>(b, kDescriptor + 14, 5); },  // odd MaxEntries
        [](auto& b) { Put<std::uint16_t>(b, kDescriptor + 14, 6); },  // above a page
        [](auto& b) { Put<std::uint32_t>(b, 8, 1000); },              // PageCount
        [](auto& b) { b.resize(300); },                               // short header
    };
    for (std::size_t i = 0; i < damages.size(); ++i) {
        std::vector<char> bytes = sound;
        damages[i](bytes);
        WriteAll(m_Path.c_str(), bytes);
        EIndexFile index;
        EXPECT_EQ(0, index.Open(m_Path.c_str())) << "damage " << i;
    }
}

}  // namespace
}  // namespace nvk::test
