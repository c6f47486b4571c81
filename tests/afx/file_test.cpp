#include "nvk/afx/file.h"

#include <gtest/gtest.h>

#include <string>

#include "nvk/afx/archive.h"
#include "nvk/afx/exceptions.h"
#include "os/api/file.h"
#include "os/api/sync.h"

namespace {

class CFileTest : public testing::Test {
protected:
    void SetUp() override {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        m_path = testing::TempDir() + "nvk_afx_" + info->name() + "_" +
                 std::to_string(nvk::os::GetCurrentProcessId()) + ".bin";
    }
    void TearDown() override { nvk::os::DeleteFileA(m_path.c_str()); }

    std::string m_path;
};

TEST_F(CFileTest, ReadWriteSeekAndLength) {
    CFile file(m_path.c_str(), CFile::modeCreate | CFile::modeReadWrite);
    EXPECT_EQ(file.GetFilePath(), m_path.c_str());
    file.Write("0123456789", 10);
    EXPECT_EQ(file.GetLength(), 10u);
    EXPECT_EQ(file.Seek(-4, CFile::end), 6u);
    char buffer[8] = {};
    EXPECT_EQ(file.Read(buffer, sizeof buffer), 4u);
    EXPECT_STREQ(buffer, "6789");
    EXPECT_EQ(file.Read(buffer, sizeof buffer), 0u);
    file.SetLength(3);
    EXPECT_EQ(file.GetLength(), 3u);
    file.Close();
    EXPECT_EQ(file.m_hFile, nvk::os::INVALID_HANDLE_VALUE);

    // Opening again without modeCreate keeps the contents.
    CFile again;
    ASSERT_TRUE(again.Open(m_path.c_str(), CFile::modeRead));
    EXPECT_EQ(again.GetLength(), 3u);
}

TEST_F(CFileTest, FailuresCarryTheirCause) {
    CFileException error;
    CFile file;
    EXPECT_FALSE(file.Open(m_path.c_str(), CFile::modeRead, &error));
    EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
    EXPECT_EQ(error.m_strFileName, m_path.c_str());

    try {
        CFile missing(m_path.c_str(), CFile::modeRead);
        ADD_FAILURE() << "opened a missing file";
    } catch (CFileException* e) {
        nvk::afx::ExceptionPtr owner(e);
        EXPECT_EQ(e->m_cause, CFileException::fileNotFound);
    }

    CFile exclusive(m_path.c_str(), CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive);
    CFile second;
    EXPECT_FALSE(second.Open(m_path.c_str(), CFile::modeRead | CFile::shareDenyNone, &error));
    EXPECT_EQ(error.m_cause, CFileException::sharingViolation);
}

TEST_F(CFileTest, ArchiveOverAFile) {
    {
        CFile file(m_path.c_str(), CFile::modeCreate | CFile::modeWrite);
        CArchive ar(&file, CArchive::store);
        ar << CString("Soci\xE9t\xE9") << 2014u;
    }
    CFile file(m_path.c_str(), CFile::modeRead);
    EXPECT_EQ(file.GetLength(), 1u + 7u + 4u);
    CArchive ar(&file, CArchive::load);
    CString name;
    unsigned year = 0;
    ar >> name >> year;
    EXPECT_EQ(name, "Soci\xE9t\xE9");
    EXPECT_EQ(year, 2014u);
}

}  // namespace
