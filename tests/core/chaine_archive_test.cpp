#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "nvk/afx/archive.h"
#include "nvk/afx/exceptions.h"
#include "nvk/afx/mem_file.h"
#include "nvk/core/chaine.h"

namespace {

std::vector<unsigned char> Stored(const Chaine& value) {
    CMemFile file;
    {
        CArchive archive(&file, CArchive::store);
        archive << value;
        archive.Close();
    }
    std::vector<unsigned char> bytes(file.GetLength());
    file.SeekToBegin();
    file.Read(bytes.data(), static_cast<unsigned>(bytes.size()));
    return bytes;
}

Chaine Loaded(std::vector<unsigned char> bytes) {
    CMemFile file(bytes.data(), static_cast<unsigned>(bytes.size()));
    CArchive archive(&file, CArchive::load);
    Chaine value("old");
    value.Serialize(archive);
    return value;
}

TEST(ChaineArchive, LengthPrefixesAndRoundTrips) {
    EXPECT_EQ(Stored("abc"), (std::vector<unsigned char>{3, 'a', 'b', 'c'}));
    const Chaine long255(std::string(255, 'z').c_str());
    auto bytes = Stored(long255);
    ASSERT_EQ(bytes.size(), 3u + 255u);
    EXPECT_EQ(bytes[0], 255);
    EXPECT_EQ(bytes[1], 255);
    EXPECT_EQ(bytes[2], 0);
    EXPECT_EQ(Loaded(bytes), long255);

    const Chaine huge(std::string(70000, 'q').c_str());
    bytes = Stored(huge);
    EXPECT_EQ((std::vector<unsigned char>(bytes.begin(), bytes.begin() + 7)),
              (std::vector<unsigned char>{255, 255, 255, 0x70, 0x11, 0x01, 0x00}));
    EXPECT_EQ(Loaded(bytes), huge);
    EXPECT_TRUE(Loaded({0}).IsEmpty());
}

TEST(ChaineArchive, ShortDataThrowsEndOfFile) {
    for (auto bytes : {std::vector<unsigned char>{5, 'a', 'b'},
                       std::vector<unsigned char>{255, 255, 255, 0xFF, 0xFF, 0xFF, 0x7F, 'x'}}) {
        try {
            Loaded(bytes);
            ADD_FAILURE() << "no exception";
        } catch (CArchiveException* e) {
            EXPECT_EQ(e->m_cause, CArchiveException::endOfFile);
            e->Delete();
        }
    }
}

}  // namespace
