#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "storage_support.h"

namespace nvk::test {
namespace {

// A position past 4 GiB where positions are 64 bits wide; where an unsigned
// long has 32 bits (Windows), the widest position short of ~0.
constexpr unsigned long kBeyondFourGigabytes = sizeof(unsigned long) > 4
                                                   ? static_cast<unsigned long>(1ULL << 32)
                                                   : ~0UL - 1;

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

// A record read again after another writer changed it (another object, or a
// program writing the file's bytes) comes back as changed, also past the end
// the file had when it was first read; and what is written here is in the
// file when the operation returns.
TEST_F(DataFile, ReadsSeeWhatOtherWritersChanged) {
    OpenFixed(16);
    for (std::uint32_t tag = 1; tag <= 8; ++tag) {
        InsertFixed(tag);
    }
    m_File.Read(5, nullptr);
    EXPECT_EQ(5u, Tag());
    EDataFile other;
    ASSERT_NE(nullptr, other.Open(m_Path.c_str()));
    other.Read(5, nullptr);
    const std::uint32_t changed = 55;
    std::memcpy(other.Adresse(), &changed, 4);
    other.Update(nullptr, 0);
    std::memcpy(other.Adresse(), &changed, 4);
    other.Insere(nullptr, 0);  // record 9
    m_File.Read(5, nullptr);
    EXPECT_EQ(55u, Tag());
    m_File.Read(9, nullptr);
    EXPECT_EQ(55u, Tag());
    {
        std::fstream raw(m_Path.c_str(), std::ios::in | std::ios::out | std::ios::binary);
        const std::uint32_t outside = 66;
        raw.seekp(36 + 16 * 5);
        raw.write(reinterpret_cast<const char*>(&outside), 4);
    }
    m_File.Read(6, nullptr);
    EXPECT_EQ(66u, Tag());
    InsertFixed(10);  // record 10, and the header
    other.Read(10, nullptr);
    std::uint32_t tag = 0;
    std::memcpy(&tag, other.Adresse(), 4);
    EXPECT_EQ(10u, tag);
    std::vector<char> bytes = ReadAll(m_Path.c_str());
    EXPECT_EQ(m_File.Nombre(), At<std::uint32_t>(bytes, 8));  // its own count: headers are kept
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

void* const kVariable = reinterpret_cast<void*>(~std::uintptr_t{0});

// Positions with no record behind them: numbers past the slots, numbers whose
// offset wraps 32 bits (onto the header, or onto record 1), variable offsets
// inside the header or past the end. Reads give nothing, and the update and
// deletion that follow change nothing.
TEST_F(DataFile, PositionsWithoutARecordChangeNothing) {
    OpenFixed(16);
    InsertFixed(11);
    InsertFixed(22);
    const std::vector<char> before = ReadAll(m_Path.c_str());
    for (const unsigned long position :
         {~0UL, 0xFFFFFFFFUL, 3UL, 100UL, (1UL << 28) + 1, kBeyondFourGigabytes + 1}) {
        m_File.Read(2, nullptr);
        m_File.Read(position, nullptr);
        EXPECT_EQ(0u, Tag()) << position;
        std::memset(m_File.Adresse(), 0x5A, 16);
        m_File.Update(nullptr, 0);
        m_File.Delete();
        EXPECT_EQ(2u, m_File.Nombre());
        EXPECT_EQ(before, ReadAll(m_Path.c_str())) << position;
    }
    m_File.Close();
    ASSERT_NE(nullptr, m_File.Open(m_Path.c_str()));
    m_File.Read(2, nullptr);
    EXPECT_EQ(22u, Tag());

    TempPath path("variable.dat");
    EDataFile file;
    ASSERT_EQ(1, file.Create(path.c_str(), 0));
    ASSERT_EQ(kVariable, file.Open(path.c_str()));
    std::vector<char> payload(20, 'p');
    file.Insere(payload.data(), 20);
    const std::vector<char> made = ReadAll(path.c_str());
    for (const unsigned long position : {4UL, 8UL, 35UL, 58UL, 60UL, kBeyondFourGigabytes}) {
        EXPECT_EQ(~0UL, file.GetTaille(position)) << position;
        std::vector<char> back(20, 'x');
        file.Read(position, back.data());
        EXPECT_EQ(std::vector<char>(20, 'x'), back);
        std::vector<char> other(64, 'o');
        file.Update(other.data(), 64);
        file.Delete();
        EXPECT_EQ(made, ReadAll(path.c_str())) << position;
    }
}

// Records shorter than the 12-byte deleted mark: fixed ones are not made,
// short variable payloads are stored padded to the mark, and in files made
// elsewhere such records read but are not deleted.
TEST_F(DataFile, RecordsShorterThanTheMarkAreNeverOverrun) {
    for (unsigned long size = 1; size < 12; ++size) {
        EXPECT_EQ(0, m_File.Create(m_Path.c_str(), size)) << size;
        EXPECT_EQ(0, m_File.Create(nullptr, size)) << size;
    }
    EXPECT_EQ(0, m_File.Create(m_Path.c_str(), EDataFile::kMaxRecordSize + 1));
    OpenFixed(12);
    m_File.Close();

    std::vector<char> image = ReadAll(m_Path.c_str());
    Put<std::uint32_t>(image, 4, 5);  // record size 5, two records
    Put<std::uint32_t>(image, 8, 2);
    for (char byte : {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i', 'j'}) {
        image.push_back(byte);
    }
    WriteAll(m_Path.c_str(), image);
    ASSERT_NE(nullptr, m_File.Open(m_Path.c_str()));
    m_File.Read(2, nullptr);
    EXPECT_EQ(0, std::memcmp(m_File.Adresse(), "fghij", 5));
    m_File.Read(1, nullptr);
    m_File.Delete();
    EXPECT_EQ(2u, m_File.Nombre());
    m_File.Close();
    EXPECT_EQ(image, ReadAll(m_Path.c_str()));

    // A variable record of three bytes is stored as eight.
    TempPath path("short.dat");
    EDataFile file;
    ASSERT_EQ(1, file.Create(path.c_str(), 0));
    ASSERT_EQ(kVariable, file.Open(path.c_str()));
    file.Insere(const_cast<char*>("abc"), 3);
    const unsigned long first = file.Courant();
    file.Insere(const_cast<char*>("xy"), 2);
    const unsigned long second = file.Courant();
    EXPECT_EQ(8u, file.GetTaille(first));
    std::vector<char> back(8, 'z');
    file.Read(first, back.data());
    EXPECT_EQ(std::vector<char>({'a', 'b', 'c', 0, 0, 0, 0, 0}), back);
    file.Seek(first);
    file.Delete();
    file.Close();
    EXPECT_EQ(60u, ReadAll(path.c_str()).size());
    ASSERT_EQ(kVariable, file.Open(path.c_str()));
    file.Read(second, back.data());
    EXPECT_EQ(0, std::memcmp(back.data(), "xy\0\0\0\0\0\0", 8));
    file.Insere(const_cast<char*>("q"), 1);  // takes the hole
    EXPECT_EQ(first, file.Courant());
    file.Close();

    // A six-byte record made elsewhere reads, and is not deleted.
    std::vector<char> odd = ReadAll(path.c_str());
    odd.resize(36);
    Put<std::uint32_t>(odd, 8, 2);
    Put<std::uint32_t>(odd, 12, 0);
    const char records[] = {6, 0,   0,   0,   'h', 'i', 12,  0,   0,
                            0, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
    odd.insert(odd.end(), std::begin(records), std::end(records));
    WriteAll(path.c_str(), odd);
    ASSERT_EQ(kVariable, file.Open(path.c_str()));
    EXPECT_EQ(2u, file.GetTaille(36));
    file.Read(36, back.data());
    EXPECT_EQ(0, std::memcmp(back.data(), "hi", 2));
    file.Seek(36);
    file.Delete();
    file.Close();
    EXPECT_EQ(odd, ReadAll(path.c_str()));
}

// An update writes the record's whole stored length, whatever size it is told.
TEST(VariableRecords, UpdateWritesTheStoredLength) {
    EDataFile file;
    ASSERT_EQ(1, file.Create(nullptr, 0));
    ASSERT_EQ(kVariable, file.Open(nullptr));
    std::vector<char> payload(30, 'p');
    file.Insere(payload.data(), 30);
    const unsigned long record = file.Courant();
    std::vector<char> update(30, 'u');
    file.Seek(record);
    file.Update(update.data(), 5);
    std::vector<char> back(30);
    file.Read(record, back.data());
    EXPECT_EQ(update, back);
}

// The guards of the engine against what the format would otherwise let happen.
TEST_F(DataFile, GuardsAgainstShortFilesEmptyDeletesAndBadFreeHeads) {
    OpenFixed(16);
    m_File.Delete();  // nothing to delete: the file keeps its size and count
    EXPECT_EQ(0u, m_File.Nombre());
    m_File.Close();
    const std::vector<char> header = ReadAll(m_Path.c_str());
    ASSERT_EQ(36u, header.size());
    for (std::size_t size = 1; size < 36; ++size) {
        WriteAll(m_Path.c_str(), std::vector<char>(header.begin(), header.begin() + size));
        EXPECT_EQ(nullptr, m_File.Open(m_Path.c_str())) << size;
    }

    EDataFile file;
    ASSERT_EQ(1, file.Create(nullptr, 0));
    ASSERT_EQ(kVariable, file.Open(nullptr));
    file.Delete();
    EXPECT_EQ(36u, file.getFile()->Taille());
    std::vector<char> payload(20, 'p');
    file.Insere(payload.data(), 20);
    const unsigned long live = file.Courant();
    file.Close();

    // A free head on a live variable record is dropped, not handed out.
    TempPath path("head.dat");
    ASSERT_EQ(1, file.Create(path.c_str(), 0));
    ASSERT_EQ(kVariable, file.Open(path.c_str()));
    file.Insere(payload.data(), 20);
    file.Close();
    std::vector<char> bytes = ReadAll(path.c_str());
    Put<std::uint32_t>(bytes, 12, static_cast<std::uint32_t>(live));
    WriteAll(path.c_str(), bytes);
    ASSERT_EQ(kVariable, file.Open(path.c_str()));
    std::vector<char> other(8, 'o');
    file.Insere(other.data(), 8);
    EXPECT_EQ(60u, file.Courant());
    std::vector<char> back(20);
    file.Read(live, back.data());
    EXPECT_EQ(payload, back);
}

// The engine against a model of its records, in both modes, on a file closed
// and reopened after every change and in memory: every record's stored bytes,
// the count, the file's size, and the numbers or offsets that Insere gives.
class RecordModel {
public:
    RecordModel(unsigned long recordSize, bool named, unsigned seed)
        : m_Fixed(recordSize != 0), m_Size(recordSize), m_Random(seed) {
        if (named) {
            m_Path = std::make_unique<TempPath>("model.dat");
        }
        EXPECT_EQ(1, m_File.Create(Name(), recordSize));
        Open();
    }

    void Step() {
        const unsigned choice = m_Random() % 10;
        if (choice < 4 || m_Live.empty()) {
            Insert();
        } else if (choice < 6) {
            Update();
        } else if (choice < 8) {
            Delete();
        } else {
            Elsewhere();
        }
        if (m_Path != nullptr) {
            m_File.Close();
            Open();
        }
        Compare();
    }

private:
    const char* Name() const { return m_Path != nullptr ? m_Path->c_str() : nullptr; }
    void Open() {
        void* opened = m_File.Open(Name());
        ASSERT_EQ(m_Fixed ? m_File.Adresse() : kVariable, opened);
    }
    std::vector<char> Bytes(std::size_t count) {
        std::vector<char> bytes(count);
        for (char& byte : bytes) {
            byte = static_cast<char>('a' + m_Random() % 26);
        }
        return bytes;
    }
    std::uint32_t Pick() {
        auto it = m_Live.begin();
        std::advance(it, m_Random() % m_Live.size());
        return *it;
    }
    template <class T>
    static void Store(std::vector<char>& image, std::size_t offset, T value) {
        std::memcpy(image.data() + offset, &value, sizeof value);
    }

    void Insert() {
        std::uint32_t at = 0;
        if (m_Fixed) {
            const std::vector<char> record = Bytes(m_Size);
            std::memcpy(m_File.Adresse(), record.data(), m_Size);
            m_File.Insere(nullptr, 0);
            if (!m_Free.empty()) {
                at = m_Free.back();
                m_Free.pop_back();
            } else {
                at = static_cast<std::uint32_t>(m_Images.size() + 1);
                m_End += m_Size;
            }
            m_Images[at] = record;
        } else {
            const std::vector<char> payload = Bytes(m_Random() % 24);
            m_File.Insere(const_cast<char*>(payload.data()), payload.size());
            if (!m_Free.empty() && m_Images[m_Free.back()].size() >= payload.size() + 4) {
                at = m_Free.back();
                m_Free.pop_back();
                std::vector<char>& image = m_Images[at];
                Store<std::uint32_t>(image, 0, static_cast<std::uint32_t>(image.size()));
                std::copy(payload.begin(), payload.end(), image.begin() + 4);
            } else {
                at = m_End;
                std::vector<char> image(4 + std::max<std::size_t>(payload.size(), 8), 0);
                Store<std::uint32_t>(image, 0, static_cast<std::uint32_t>(image.size()));
                std::copy(payload.begin(), payload.end(), image.begin() + 4);
                m_End += static_cast<std::uint32_t>(image.size());
                m_Images[at] = image;
            }
        }
        EXPECT_EQ(at, m_File.Courant());
        m_Live.insert(at);
    }

    void Update() {
        const std::uint32_t at = Pick();
        std::vector<char>& image = m_Images[at];
        if (m_Fixed) {
            m_File.Read(at, nullptr);
            image = Bytes(m_Size);
            std::memcpy(m_File.Adresse(), image.data(), m_Size);
            m_File.Update(nullptr, 0);
        } else {
            const std::vector<char> payload = Bytes(image.size() - 4);
            std::memcpy(image.data() + 4, payload.data(), payload.size());
            m_File.Seek(at);
            m_File.Update(const_cast<char*>(payload.data()), m_Random() % 4);
        }
    }

    void Delete() {
        const std::uint32_t at = Pick();
        if (m_Fixed) {
            m_File.Read(at, nullptr);
        } else {
            m_File.Seek(at);
        }
        m_File.Delete();
        std::vector<char>& image = m_Images[at];
        const std::uint32_t length = m_Fixed ? 0 : static_cast<std::uint32_t>(image.size());
        Store<std::uint32_t>(image, 0, 0xFFFFFFFF);
        Store<std::uint32_t>(image, 4, m_Free.empty() ? 0 : m_Free.back());
        Store<std::uint32_t>(image, 8, length);
        m_Free.push_back(at);
        m_Live.erase(at);
    }

    // A position with no record: the update and deletion after it do nothing.
    void Elsewhere() {
        std::vector<char> junk(256, 'J');
        if (m_Fixed) {
            const unsigned long wrap = 0xFFFFFFFFUL / m_Size + 2;
            const unsigned long numbers[] = {
                static_cast<unsigned long>(m_Images.size() + 1 + m_Random() % 3), ~0UL, wrap};
            m_File.Read(numbers[m_Random() % 3], nullptr);
            std::memset(m_File.Adresse(), 'J', m_Size);
        } else {
            const unsigned long offsets[] = {4 + m_Random() % 30UL, m_End + m_Random() % 3UL};
            m_File.Read(offsets[m_Random() % 2], junk.data());
        }
        m_File.Update(junk.data(), junk.size());
        m_File.Delete();
    }

    void Compare() {
        ASSERT_EQ(m_Live.size(), m_File.Nombre());
        ASSERT_EQ(m_End, m_File.getFile()->Taille());
        for (const auto& [at, image] : m_Images) {
            const bool live = m_Live.count(at) != 0;
            if (m_Fixed) {
                m_File.Read(at, nullptr);
                ASSERT_EQ(0, std::memcmp(m_File.Adresse(), image.data(), m_Size)) << at;
                continue;
            }
            ASSERT_EQ(live ? image.size() - 4 : ~0UL, m_File.GetTaille(at)) << at;
            if (live) {
                std::vector<char> back(image.size() - 4);
                m_File.Read(at, back.data());
                ASSERT_EQ(std::vector<char>(image.begin() + 4, image.end()), back) << at;
            }
        }
        if (m_Fixed) {
            std::vector<std::uint32_t> walked;
            for (int more = m_File.First(); more; more = m_File.Next()) {
                walked.push_back(static_cast<std::uint32_t>(m_File.Courant()));
            }
            ASSERT_EQ(std::vector<std::uint32_t>(m_Live.begin(), m_Live.end()), walked);
        }
    }

    bool m_Fixed;
    unsigned long m_Size;
    std::mt19937 m_Random;
    std::unique_ptr<TempPath> m_Path;
    EDataFile m_File;
    std::map<std::uint32_t, std::vector<char>> m_Images;  // every record's stored bytes
    std::set<std::uint32_t> m_Live;
    std::vector<std::uint32_t> m_Free;  // the free list, head last
    std::uint32_t m_End = 36;
};

TEST(DataFileModel, RandomChangesMatchTheModel) {
    for (const unsigned long recordSize : {0UL, 12UL, 13UL, 20UL}) {
        for (const bool named : {true, false}) {
            for (unsigned seed = 1; seed <= 2; ++seed) {
                SCOPED_TRACE(testing::Message()
                             << "record size " << recordSize << ", " << (named ? "file" : "memory")
                             << ", seed " << seed);
                RecordModel model(recordSize, named, seed);
                for (int step = 0; step < 120 && !testing::Test::HasFatalFailure(); ++step) {
                    model.Step();
                }
            }
        }
    }
}

}  // namespace
}  // namespace nvk::test
