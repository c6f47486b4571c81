#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <vector>

#include "storage_support.h"

namespace nvk::test {
namespace {

std::vector<char> Key32(std::uint32_t value) {
    std::vector<char> key(4 + 16, 0);
    std::memcpy(key.data(), &value, 4);
    return key;
}

std::uint32_t KeyOf(const EIndexFile& index) {
    std::uint32_t value;
    std::memcpy(&value, index.AdrCle(), 4);
    return value;
}

using Entries = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

class MemoryIndex : public ::testing::Test {
protected:
    // An index of unsigned 32-bit keys (type 18) in memory; a page of 44
    // bytes holds 4 entries.
    void Make(unsigned long pageSize, int duplicates) {
        ASSERT_EQ(1, m_Index.Create(nullptr, pageSize));
        ASSERT_EQ(1, m_Index.Open(nullptr));
        ASSERT_EQ(1, m_Index.CreateIndex(4, 18, duplicates));
    }
    int Insert(std::uint32_t key, std::uint32_t value) {
        auto k = Key32(key);
        return m_Index.Insere(1, k.data(), value);
    }
    int Remove(std::uint32_t key, std::uint32_t value) {
        auto k = Key32(key);
        return m_Index.Delete(1, k.data(), value);
    }
    unsigned long Find(unsigned long (EIndexFile::*search)(int, void*), std::uint32_t key) {
        auto k = Key32(key);
        return (m_Index.*search)(1, k.data());
    }
    Entries Scan() {
        Entries seen;
        for (unsigned long v = m_Index.First(1); v != 0 && seen.size() < 100000;
             v = m_Index.Next()) {
            seen.emplace_back(KeyOf(m_Index), v);
        }
        return seen;
    }

    CheckedIndex m_Index;
};

TEST(IndexFormat, EntriesPerPageAndIndexLimit) {
    CheckedIndex index;
    ASSERT_EQ(1, index.Create(nullptr, 1024));
    ASSERT_EQ(1, index.Open(nullptr));
    EXPECT_EQ(1, index.CreateIndex(8, 20, 0));
    EXPECT_EQ(2, index.CreateIndex(9, 99, 0));
    EXPECT_EQ(84u, index.Descriptor32(1, 12) >> 16);
    EXPECT_EQ(76u, index.Descriptor32(2, 12) >> 16);
    for (int i = 3; i <= 16; ++i) {
        EXPECT_EQ(i, index.CreateIndex(4, 18, 0));
    }
    EXPECT_EQ(0, index.CreateIndex(4, 18, 0));
    // A key whose entry size can't fit one byte makes no index.
    EIndexFile small;
    ASSERT_EQ(1, small.Create(nullptr, 1024));
    EXPECT_EQ(0, small.CreateIndex(252, 0, 0));
}

TEST_F(MemoryIndex, SplitGrowsTheRootAndKeepsTheTreeSound) {
    Make(44, 0);
    EXPECT_EQ(0, Insert(1, 101));
    EXPECT_EQ(m_Index.Descriptor32(1, 0), m_Index.Descriptor32(1, 16));  // Root = FirstLeaf
    for (std::uint32_t k = 2; k <= 5; ++k) {
        EXPECT_EQ(0, Insert(k, 100 + k));
    }
    EXPECT_EQ(1, m_Index.Height(1));
    EXPECT_EQ(5u, m_Index.Nombre(1));
    EXPECT_EQ("", m_Index.Check());
    // The leaves split in (1, 2) and (3, 4, 5): rank 2 is the first of the right leaf.
    EXPECT_EQ(103u, m_Index.GetAt(1, 2));
    EXPECT_EQ(m_Index.Descriptor32(1, 20), 3u);  // LastLeaf: the right page, made third
    auto prefix = Key32(3);
    EXPECT_EQ(2, m_Index.GetFocus(1, prefix.data(), 4));
    // A key below all others changes the parent's first key.
    EXPECT_EQ(0, Insert(0, 100));
    EXPECT_EQ("", m_Index.Check());
    EXPECT_EQ(1, Insert(3, 999));
    EXPECT_EQ(Entries({{0, 100}, {1, 101}, {2, 102}, {3, 103}, {4, 104}, {5, 105}}), Scan());
}

TEST_F(MemoryIndex, SearchesAroundMissingKeys) {
    Make(44, 0);
    for (std::uint32_t k : {10u, 20u, 30u}) {
        ASSERT_EQ(0, Insert(k, k));
    }
    EXPECT_EQ(20u, Find(&EIndexFile::GreaterEqual, 15));
    EXPECT_EQ(10u, Find(&EIndexFile::LessEqual, 15));
    EXPECT_EQ(0u, Find(&EIndexFile::LessEqual, 5));
    EXPECT_EQ(0u, Find(&EIndexFile::GreaterEqual, 35));
    EXPECT_EQ(0u, Find(&EIndexFile::Equal, 15));
    EXPECT_EQ(30u, Find(&EIndexFile::Equal, 30));
    // One "next" position for both directions.
    EXPECT_EQ(10u, m_Index.First(1));
    EXPECT_EQ(20u, m_Index.Prev());
    EXPECT_EQ(10u, m_Index.Prev());
    EXPECT_EQ(0u, m_Index.Prev());
    EXPECT_EQ(30u, m_Index.Last(1));
    EXPECT_EQ(20u, m_Index.Next());
    EXPECT_EQ(30u, m_Index.Next());
    EXPECT_EQ(0u, m_Index.Next());
    EXPECT_EQ(0u, m_Index.GetAt(1, 3));
    EXPECT_EQ(30u, m_Index.GetAt(1, 2));
    // The index after the last one reads as empty; changing it is refused.
    EXPECT_EQ(0u, m_Index.First(2));
    EXPECT_EQ(-1, m_Index.GetFocus(2, Key32(1).data(), 4));
    EXPECT_EQ(0, m_Index.GetFocus(3, Key32(1).data(), 4));
    EXPECT_EQ(EIndexFile::kBadIndex, m_Index.Insere(2, Key32(1).data(), 1));
    EXPECT_EQ(EIndexFile::kDamaged, Remove(11, 11));
}

TEST_F(MemoryIndex, CursorSurvivesDeletionOfTheDeliveredEntry) {
    Make(44, 0);
    for (std::uint32_t k = 1; k <= 12; ++k) {
        ASSERT_EQ(0, Insert(k, k));
    }
    EXPECT_EQ(5u, Find(&EIndexFile::Equal, 5));
    ASSERT_EQ(0, Remove(5, 5));
    EXPECT_EQ(6u, m_Index.Next());
    EXPECT_EQ(7u, m_Index.Next());
    // A cursor in a leaf that was emptied and freed stops.
    EXPECT_EQ(1u, m_Index.First(1));
    ASSERT_EQ(0, Remove(1, 1));
    ASSERT_EQ(0, Remove(2, 2));
    EXPECT_EQ("", m_Index.Check());
}

TEST_F(MemoryIndex, DuplicatesAcrossLeaves) {
    Make(44, 1);
    ASSERT_EQ(0, Insert(1, 1));
    for (std::uint32_t v = 10; v < 20; ++v) {
        ASSERT_EQ(0, Insert(7, v));
    }
    ASSERT_EQ(0, Insert(9, 9));
    EXPECT_EQ("", m_Index.Check());
    EXPECT_EQ(10u, Find(&EIndexFile::Equal, 7));
    for (std::uint32_t v = 11; v < 20; ++v) {
        EXPECT_EQ(v, m_Index.Next());
    }
    EXPECT_EQ(9u, m_Index.Next());
    // Equal neighbours do not stop a walk.
    ASSERT_EQ(0, Insert(9, 9));
    EXPECT_EQ(9u, Find(&EIndexFile::Equal, 9));
    EXPECT_EQ(9u, m_Index.Next());
    EXPECT_EQ(0u, m_Index.Next());
    ASSERT_EQ(0, Remove(9, 9));
    EXPECT_EQ(EIndexFile::kDamaged, Remove(7, 99));
    EXPECT_EQ(12u, m_Index.Nombre(1));
    EXPECT_EQ(0, Remove(7, 15));
    EXPECT_EQ(9u, m_Index.Nombre(1, Key32(7).data(), 4));
    EXPECT_EQ(0, m_Index.Update(1, Key32(7).data(), Key32(8).data(), 16));
    EXPECT_EQ(16u, Find(&EIndexFile::Equal, 8));
    EXPECT_EQ("", m_Index.Check());
}

// Random insertions and deletions against a model, down to an empty index;
// the tree is verified as it changes.
TEST_F(MemoryIndex, RandomChangesMatchAModel) {
    for (int duplicates : {0, 1}) {
        m_Index.Close();
        Make(76, duplicates);  // 8 entries a page
        std::mt19937 random(42 + duplicates);
        std::multimap<std::uint32_t, std::uint32_t> model;
        std::uint32_t serial = 1;
        for (int round = 0; round < 3000; ++round) {
            const std::uint32_t key = random() % 400;
            if (random() % 3 != 0 || model.empty()) {
                const int result = Insert(key, serial);
                const bool present = model.count(key) != 0;
                ASSERT_EQ(!duplicates && present ? 1 : 0, result);
                if (result == 0) {
                    model.emplace(key, serial);
                }
                ++serial;
            } else {
                auto it = std::next(model.begin(), random() % model.size());
                ASSERT_EQ(0, Remove(it->first, it->second));
                model.erase(it);
            }
            if (round % 500 == 0) {
                ASSERT_EQ("", m_Index.Check()) << "round " << round;
            }
        }
        Entries expected;
        for (auto [k, v] : model) {
            expected.emplace_back(k, v);
        }
        Entries seen = Scan();
        std::sort(seen.begin(), seen.end());
        std::sort(expected.begin(), expected.end());
        ASSERT_EQ(expected, seen);
        ASSERT_EQ(model.size(), m_Index.Nombre(1));
        const auto middle = std::next(model.begin(), model.size() / 2);
        EXPECT_EQ(middle->first, (m_Index.GetAt(1, model.size() / 2), KeyOf(m_Index)));
        while (!model.empty()) {
            ASSERT_EQ(0, Remove(model.begin()->first, model.begin()->second));
            model.erase(model.begin());
            ASSERT_EQ("", m_Index.Check()) << model.size() << " dup " << duplicates;
        }
        EXPECT_EQ("", m_Index.Check());
        EXPECT_EQ(0u, m_Index.Descriptor32(1, 0));  // Root
        EXPECT_EQ(0u, m_Index.Height(1));
        EXPECT_EQ(0u, m_Index.Header32(8));  // PageCount: every page is free
        EXPECT_EQ(0, Insert(3, 3));
        EXPECT_EQ(3u, m_Index.First(1));
    }
}

TEST_F(MemoryIndex, PrefixOperations) {
    ASSERT_EQ(1, m_Index.Create(nullptr, 128));
    ASSERT_EQ(1, m_Index.Open(nullptr));
    ASSERT_EQ(1, m_Index.CreateIndex(6, 99, 0));  // raw bytes
    const char* names[] = {"AB0001", "AB0002", "AC0001", "BA0001", "BA0002", "BA0003",
                           "BB0001", "CA0001", "CA0002", "CA0003", "CB0001"};
    std::uint32_t value = 1;
    for (const char* name : names) {
        std::vector<char> key(name, name + 6);
        key.resize(22, 0);
        ASSERT_EQ(0, m_Index.Insere(1, key.data(), value++));
    }
    char ba[] = "BA";
    EXPECT_EQ(3u, m_Index.Nombre(1, ba, 2));
    EXPECT_EQ(5u, m_Index.GetAt(1, 1, ba, 2));
    EXPECT_EQ(0u, m_Index.GetAt(1, 3, ba, 2));
    EXPECT_EQ(3, m_Index.GetFocus(1, ba, 2));
    char bz[] = "BZ";
    EXPECT_EQ(0u, m_Index.Nombre(1, bz, 2));
    EXPECT_EQ(7, m_Index.GetFocus(1, bz, 2));
    char zz[] = "ZZ";
    EXPECT_EQ(0, m_Index.GetFocus(1, zz, 2));
    EXPECT_EQ(-1, m_Index.GetFocus(1, nullptr, 2));
}

TEST_F(MemoryIndex, SplitAmongDuplicatesKeepsTheWalkInOrder) {
    Make(44, 1);
    std::uint32_t value = 1;
    for (std::uint32_t k : {2u, 1u, 1u, 1u, 0u, 0u, 0u, 2u}) {
        ASSERT_EQ(0, Insert(k, value++));
    }
    std::vector<std::uint32_t> keys;
    for (auto [k, v] : Scan()) {
        keys.push_back(k);
    }
    EXPECT_EQ(std::vector<std::uint32_t>({0, 0, 0, 1, 1, 1, 2, 2}), keys);
    EXPECT_EQ("", m_Index.Check());
}

// The file is closed and opened again after each refusal: what is on it must
// be a sound tree holding exactly the keys that stayed.
TEST(IndexFile, RefusedChangesLeaveASoundFile) {
    TempPath path("refused.idx");
    CheckedIndex index;
    ASSERT_EQ(1, index.Create(path.c_str(), 44));
    ASSERT_EQ(1, index.Open(path.c_str()));
    ASSERT_EQ(1, index.CreateIndex(4, 18, 0));
    for (std::uint32_t k = 1; k <= 4; ++k) {
        ASSERT_EQ(0, index.Insere(1, Key32(k).data(), k));
    }
    const std::vector<char> before = ReadAll(path.c_str());
    EXPECT_EQ(1, index.Insere(1, Key32(3).data(), 9));
    index.Close();
    EXPECT_EQ(before, ReadAll(path.c_str()));  // a refused key changes nothing
    ASSERT_EQ(1, index.Open(path.c_str()));
    EXPECT_EQ(3u, index.Equal(1, Key32(3).data()));
    EXPECT_EQ(4u, index.Equal(1, Key32(4).data()));

    // An update whose deletion frees the first leaf, and whose new key is refused.
    ASSERT_EQ(0, index.Insere(1, Key32(5).data(), 5));  // leaves (1, 2) (3, 4, 5)
    ASSERT_EQ(0, index.Delete(1, Key32(1).data(), 1));
    EXPECT_EQ(1, index.Update(1, Key32(2).data(), Key32(4).data(), 2));
    index.Close();
    ASSERT_EQ(1, index.Open(path.c_str()));
    EXPECT_EQ("", index.Check());
    EXPECT_EQ(3u, index.First(1));
    EXPECT_EQ(3u, index.Nombre(1));
}

TEST(IndexKeys, FloatKeysAreOnlyAsFineAsAUnit) {
    EIndexFile index;
    ASSERT_EQ(1, index.Create(nullptr, 512));
    ASSERT_EQ(1, index.Open(nullptr));
    ASSERT_EQ(1, index.CreateIndex(4, 23, 0));
    float a = 1.0f;
    float b = 1.5f;
    float c = -3.0f;
    EXPECT_EQ(0, index.Insere(1, &a, 1));
    EXPECT_EQ(1, index.Insere(1, &b, 2));
    EXPECT_EQ(0, index.Insere(1, &c, 3));
    EXPECT_EQ(3u, index.First(1));

    // Signed 64-bit keys order across the sign.
    ASSERT_EQ(2, index.CreateIndex(8, 20, 0));
    for (std::int64_t k : {std::int64_t{5}, std::int64_t{-1}, std::int64_t{1} << 40}) {
        EXPECT_EQ(0, index.Insere(2, &k, static_cast<unsigned long>(k & 0xFF) + 1));
    }
    EXPECT_EQ(0x100u, index.First(2));
    EXPECT_EQ(6u, index.Next());
    EXPECT_EQ(1u, index.Next());
    // Less than 1 apart, though a float subtraction rounds the difference to 1.
    ASSERT_EQ(3, index.CreateIndex(4, 23, 0));
    float d = 0.99999994f;
    float e = -3.0e-8f;
    EXPECT_EQ(0, index.Insere(3, &d, 4));
    EXPECT_EQ(1, index.Insere(3, &e, 5));
}

TEST(IndexKeys, CreationRefusesKeysShorterThanTheirType) {
    EIndexFile index;
    ASSERT_EQ(1, index.Create(nullptr, 512));
    ASSERT_EQ(1, index.Open(nullptr));
    EXPECT_EQ(0, index.CreateIndex(4, 2, 0));
    EXPECT_EQ(0, index.CreateIndex(3, 1, 0));
    EXPECT_EQ(0, index.CreateIndex(2, 18, 0));
    EXPECT_EQ(0, index.CreateIndex(7, 20, 1));
    EXPECT_EQ(1, index.CreateIndex(8, 1, 0));  // compares its first four bytes
    EXPECT_EQ(2, index.CreateIndex(1, 0, 0));
    // A string that fills its key ends there.
    char a[] = "ABCD1";
    char b[] = "ABCD2";
    ASSERT_EQ(3, index.CreateIndex(4, 0, 0));
    EXPECT_EQ(0, index.Insere(3, a, 1));
    EXPECT_EQ(1, index.Insere(3, b, 2));
    EXPECT_EQ(1u, index.Equal(3, b));
}

TEST(IndexFile, NamedFileKeepsItsTreesAndRefusesBadSizes) {
    TempPath path("customers.idx");
    {
        EIndexFile index;
        ASSERT_EQ(1, index.Create(path.c_str(), 256));
        EXPECT_EQ(0, index.Create(path.c_str(), 256));
        ASSERT_EQ(1, index.Open(path.c_str()));
        ASSERT_EQ(1, index.CreateIndex(4, 18, 0));
        for (std::uint32_t k = 1; k <= 200; ++k) {
            ASSERT_EQ(0, index.Insere(1, Key32(k * 7 % 201).data(), k));
        }
    }
    CheckedIndex again;
    ASSERT_EQ(1, again.Open(path.c_str()));
    EXPECT_EQ(200u, again.Nombre(1));
    EXPECT_EQ("", again.Check());
    EXPECT_EQ(1u, again.Equal(1, Key32(7).data()));
    EXPECT_EQ(EIndexFile::kNoFile, EIndexFile().Insere(1, Key32(1).data(), 1));
    again.Close();

    std::vector<char> bytes = ReadAll(path.c_str());
    bytes.push_back(0);  // no longer a whole number of pages
    WriteAll(path.c_str(), bytes);
    EXPECT_EQ(0, again.Open(path.c_str()));
    bytes.resize(612);  // the header alone: the root now lies past the end
    Put<std::uint32_t>(bytes, 8, 0);
    WriteAll(path.c_str(), bytes);
    ASSERT_EQ(1, again.Open(path.c_str()));
    EXPECT_EQ(0u, again.First(1));
    EXPECT_EQ(EIndexFile::kDamaged, again.Insere(1, Key32(1).data(), 1));
    again.Close();
    std::fill(bytes.begin() + 36, bytes.begin() + 44, 0);  // Root, KeyCount
    bytes[44] = 0;                                         // Height
    WriteAll(path.c_str(), bytes);
    ASSERT_EQ(1, again.Open(path.c_str()));
    EXPECT_EQ(0, again.Insere(1, Key32(1).data(), 1));
    EXPECT_EQ("", again.Check());
}

}  // namespace
}  // namespace nvk::test
