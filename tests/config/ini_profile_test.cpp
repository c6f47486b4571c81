// Opening, writing back, the profile calls and the exclusion between opens.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "nvk/config/ini_file.h"
#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/file_replace.h"
#include "os/api/sync.h"

namespace {

namespace fs = std::filesystem;

class IniProfile : public testing::Test {
protected:
    void SetUp() override {
        m_Folder = fs::temp_directory_path() /
                   ("nvk_ini_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
                    "_" + testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(m_Folder);
        fs::create_directories(m_Folder);
        EIniFile::SetTimeOut(1000);
    }
    void TearDown() override {
        EIniFile::SetTimeOut(1000);
        fs::remove_all(m_Folder);
    }

    Chaine Path(const char* name) const { return (m_Folder / name).string().c_str(); }
    void Put(const char* name, const std::string& text) const {
        std::ofstream(m_Folder / name, std::ios::binary) << text;
    }
    std::string Get(const char* name) const {
        std::ostringstream text;
        text << std::ifstream(m_Folder / name, std::ios::binary).rdbuf();
        return text.str();
    }

    fs::path m_Folder;
};

using Clock = std::chrono::steady_clock;
long long MillisecondsSince(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

TEST_F(IniProfile, WritesCreateAndRewriteTheFile) {
    EIniFile ini;
    EXPECT_EQ(ini.WritePrivateProfileStringA("S", "k", "v", Path("new.ini")), 1u);
    EXPECT_EQ(Get("new.ini"), "[S]\r\nk=v\r\n");

    // Later calls keep the object's file name; an empty value removes the key
    // but leaves the section, an empty key removes the section.
    EXPECT_EQ(ini.WritePrivateProfileStringA("T", "a", "1", ""), 1u);
    EXPECT_EQ(ini.WritePrivateProfileStringA("S", "k", "", ""), 1u);
    EXPECT_EQ(Get("new.ini"), "[S]\r\n\r\n[T]\r\na=1\r\n");
    EXPECT_EQ(ini.WritePrivateProfileStringA("S", "", "x", ""), 1u);
    EXPECT_EQ(Get("new.ini"), "[T]\r\na=1\r\n");
}

TEST_F(IniProfile, ReadsTrimQuotesAndCut) {
    Put("r.ini", "[S]\nq=\"abc\"\nn= 42 \nbad=x1\nquoted=\"5\"\n");
    const EIniFile ini(Path("r.ini"));
    char buffer[16] = "untouched";
    EXPECT_EQ(ini.GetPrivateProfileStringA("S", "q", "", buffer, sizeof buffer, ""), 3u);
    EXPECT_STREQ(buffer, "abc");
    // Exactly the length: one character short, and terminated.
    EXPECT_EQ(ini.GetPrivateProfileStringA("S", "q", "", buffer, 3, ""), 2u);
    EXPECT_STREQ(buffer, "ab");
    // No room at all: nothing written, not even a terminator.
    EXPECT_EQ(ini.GetPrivateProfileStringA("S", "q", "", buffer + 1, 0, ""), 0u);
    EXPECT_STREQ(buffer, "ab");
    EXPECT_EQ(ini.GetPrivateProfileStringA("S", "none", "\"dflt\"", buffer, sizeof buffer, ""), 4u);
    EXPECT_STREQ(buffer, "dflt");

    EXPECT_EQ(ini.GetPrivateProfileIntA("S", "n", 7, ""), 42);
    EXPECT_EQ(ini.GetPrivateProfileIntA("S", "bad", 7, ""), 0);
    EXPECT_EQ(ini.GetPrivateProfileIntA("S", "quoted", 7, ""), 0);
    EXPECT_EQ(ini.GetPrivateProfileIntA("S", "none", 7, ""), 7);
    EXPECT_EQ(ini.GetPrivateProfileIntA("S", "n", 7, Path("missing.ini")), 7);

    // Through the model the quotes stay.
    EIniFile open;
    ASSERT_TRUE(open.Open(Path("r.ini"), true));
    EXPECT_EQ(std::string(open["S"]["q"].c_str()), "\"abc\"");
}

TEST_F(IniProfile, FileNameRule) {
    Put("a.ini", "[S]\nk=a\n");
    Put("b.ini", "[S]\nk=b\n");
    EIniFile ini(Path("a.ini"));
    char buffer[8];
    ini.GetPrivateProfileStringA("S", "k", "", buffer, sizeof buffer, Path("b.ini"));
    EXPECT_STREQ(buffer, "b");
    EXPECT_EQ(std::string(ini.GetFileName().c_str()), std::string(Path("b.ini").c_str()));

    // An open object works on what it has open.
    ASSERT_TRUE(ini.Open(Path("a.ini"), true));
    ini.GetPrivateProfileStringA("S", "k", "", buffer, sizeof buffer, Path("b.ini"));
    EXPECT_STREQ(buffer, "a");
    EXPECT_FALSE(ini.Open(Path("b.ini"), true));
    EXPECT_EQ(ini.WritePrivateProfileStringA("S", "k", "x", ""), 0u);
    EXPECT_FALSE(ini.ManageLines("S", "x", true));
    EXPECT_FALSE(ini.RemoveLine("S", "k"));
    EXPECT_TRUE(ini.Close());
    EXPECT_EQ(Get("a.ini"), "[S]\nk=a\n");
}

TEST_F(IniProfile, IntegerWritesStayOutOfTheOrder) {
    Put("i.ini", "[A]\nx=1\n[B]\ny=2\n");
    EIniFile ini;
    ASSERT_TRUE(ini.Open(Path("i.ini"), false));
    EXPECT_EQ(ini.WritePrivateProfileInt("New", "n", 5, ""), 1u);
    EXPECT_EQ(ini.WritePrivateProfileInt("A", "z", -3, ""), 1u);
    EXPECT_EQ(ini.GetSectionNames().Size(), 2);
    EXPECT_EQ(ini.GetSectionNB(), 3u);
    EXPECT_TRUE(ini.SectionExist("new"));
    EXPECT_TRUE(ini.Close());
    EXPECT_EQ(Get("i.ini"), "[A]\r\nx=1\r\nz=-3\r\n\r\n[B]\r\ny=2\r\n\r\n[New]\r\nn=5\r\n");
}

TEST_F(IniProfile, RemoveLineChangesOnlyWhatIsOpenForWriting) {
    Put("l.ini", "[S]\nk=v\nj=w\n");
    EIniFile ini(Path("l.ini"));
    EXPECT_TRUE(ini.RemoveLine("S", "k"));
    EXPECT_FALSE(ini.RemoveLine("T", "k"));
    EXPECT_EQ(Get("l.ini"), "[S]\nk=v\nj=w\n");

    ASSERT_TRUE(ini.Open(false));
    EXPECT_TRUE(ini.RemoveLine("S", "K"));
    EXPECT_FALSE(ini.RemoveLine("S", "k"));
    EXPECT_TRUE(ini.Close());
    EXPECT_EQ(Get("l.ini"), "[S]\r\nj=w\r\n");

    ASSERT_TRUE(ini.Open(false));
    EXPECT_TRUE(ini.RemoveLine("s", ""));
    EXPECT_TRUE(ini.Close());
    EXPECT_EQ(Get("l.ini"), "");
}

TEST_F(IniProfile, ManageLinesIsASetIgnoringCase) {
    EIniFile ini(Path("m.ini"));
    EXPECT_TRUE(ini.ManageLines("S", "Alpha", true));
    EXPECT_TRUE(ini.ManageLines("S", "ALPHA", true));
    EXPECT_TRUE(ini.ManageLines("S", "beta", true));
    EXPECT_EQ(Get("m.ini"), "[S]\r\nAlpha\r\nbeta\r\n");
    EXPECT_TRUE(ini.ManageLines("S", "alpha", false));
    EXPECT_TRUE(ini.ManageLines("S", "gamma", false));
    EXPECT_EQ(Get("m.ini"), "[S]\r\nbeta\r\n");
}

TEST_F(IniProfile, DestructorSavesAWriter) {
    {
        EIniFile ini;
        ASSERT_TRUE(ini.Open(Path("d.ini"), false));
        ini["S"]["k"] = "v";
    }
    EXPECT_EQ(Get("d.ini"), "[S]\r\nk=v\r\n");
    // A reader's changes are discarded.
    {
        EIniFile ini;
        ASSERT_TRUE(ini.Open(Path("d.ini"), true));
        ini["S"]["k"] = "changed";
    }
    EXPECT_EQ(Get("d.ini"), "[S]\r\nk=v\r\n");
}

TEST_F(IniProfile, MissingFileReadsEmpty) {
    EIniFile ini;
    ASSERT_TRUE(ini.Open(Path("none.ini"), true));
    EXPECT_EQ(ini.GetSectionNB(), 0u);
    EXPECT_TRUE(ini.Close());
    EXPECT_FALSE(fs::exists(m_Folder / "none.ini"));
    // A folder that is not there is no missing file.
    EXPECT_FALSE(ini.Open(Path("no/such.ini"), false));
}

TEST_F(IniProfile, AWriterExcludesEveryOtherOpen) {
    Put("x.ini", "[S]\nk=v\n");
    EIniFile writer(Path("x.ini"));
    ASSERT_TRUE(writer.Open(false));

    EIniFile::SetTimeOut(300);
    EIniFile other(Path("x.ini"));
    char buffer[8] = "same";
    auto start = Clock::now();
    EXPECT_EQ(other.GetPrivateProfileStringA("S", "k", "", buffer, sizeof buffer, ""), 0u);
    const long long waited = MillisecondsSince(start);
    EXPECT_GE(waited, 300);
    EXPECT_LT(waited, 1000);
    EXPECT_STREQ(buffer, "same");

    // One attempt and one pause only.
    EIniFile::SetTimeOut(0);
    start = Clock::now();
    EXPECT_EQ(other.GetPrivateProfileIntA("S", "k", 9, ""), 9);
    EXPECT_GE(MillisecondsSince(start), 50);
    EXPECT_LT(MillisecondsSince(start), 250);
    EXPECT_EQ(other.WritePrivateProfileStringA("S", "k", "w", ""), 0u);
    EXPECT_FALSE(other.ManageLines("S", "w", true));
    EXPECT_FALSE(other.RemoveLine("S", "k"));

    // Readers share the file with each other, not with a writer.
    EXPECT_TRUE(writer.Close());
    EIniFile reader(Path("x.ini"));
    ASSERT_TRUE(reader.Open(true));
    EXPECT_EQ(other.GetPrivateProfileIntA("S", "k", 9, ""), 0);
    EXPECT_TRUE(reader.Close());
}

TEST_F(IniProfile, AWriterWaitsForTheHolder) {
    Put("w.ini", "[S]\nn=0\n");
    const Chaine path = Path("w.ini");
    // Holds the file the way a reader of another process does while it reads.
    nvk::os::HANDLE held =
        nvk::os::CreateFileA(path, nvk::os::GENERIC_READ, nvk::os::FILE_SHARE_READ, nullptr,
                             nvk::os::OPEN_EXISTING, nvk::os::FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, nvk::os::INVALID_HANDLE_VALUE);
    EIniFile::SetTimeOut(5000);
    EIniFile writer(path);
    const auto start = Clock::now();
    // The writer retries while the holder lets go after some 200 ms.
    std::thread release([&] {
        nvk::os::Sleep(200);
        nvk::os::CloseHandle(held);
    });
    const bool opened = writer.Open(false);
    release.join();
    EXPECT_TRUE(opened);
    EXPECT_GE(MillisecondsSince(start), 150);
    EXPECT_EQ(writer.WritePrivateProfileInt("S", "n", 1, ""), 1u);
    EXPECT_TRUE(writer.Close());
    EXPECT_EQ(Get("w.ini"), "[S]\r\nn=1\r\n");
}

// Close puts the new text in place while the writer still holds the file,
// and the replacement opens the file for reading and deletion.
TEST_F(IniProfile, ReplacingAHeldFileNeedsItsReadingAndDeletionShared) {
    namespace os = nvk::os;
    Put("h.ini", "[S]\r\nk=1\r\n");
    const Chaine path = Path("h.ini");
    for (const os::DWORD share : {os::FILE_SHARE_DELETE, os::FILE_SHARE_READ}) {
        const os::HANDLE held = os::CreateFileA(path, os::GENERIC_READ | os::GENERIC_WRITE, share,
                                                nullptr, os::OPEN_EXISTING, 0, nullptr);
        Put("n.ini", "[S]\r\nk=2\r\n");
        EXPECT_FALSE(os::ReplaceFileA(path, Path("n.ini"), nullptr, 0, nullptr, nullptr));
        EXPECT_EQ(Get("h.ini"), "[S]\r\nk=1\r\n");
        os::CloseHandle(held);
    }
    const os::HANDLE held = os::CreateFileA(path, os::GENERIC_READ | os::GENERIC_WRITE,
                                            os::FILE_SHARE_READ | os::FILE_SHARE_DELETE, nullptr,
                                            os::OPEN_EXISTING, 0, nullptr);
    EXPECT_TRUE(os::ReplaceFileA(path, Path("n.ini"), nullptr, 0, nullptr, nullptr));
    EXPECT_EQ(Get("h.ini"), "[S]\r\nk=2\r\n");
    os::CloseHandle(held);
}

TEST_F(IniProfile, AccessDeniedFailsAtOnce) {
    // A folder opened as a file is refused to readers and writers alike.
    EIniFile::SetTimeOut(5000);
    EIniFile folder(Path(""));
    auto start = Clock::now();
    EXPECT_FALSE(folder.Open(false));
    EXPECT_FALSE(folder.Open(true));
    EXPECT_LT(MillisecondsSince(start), 50);
}

// The read-only attribute refuses writing to every user, also to those whom
// the POSIX permissions would let through.
TEST_F(IniProfile, AReadOnlyFileIsRefusedToEveryWriterAtOnce) {
    EIniFile::SetTimeOut(5000);
    Put("ro.ini", "[S]\nk=v\n");
    const Chaine readOnly = Path("ro.ini");
    ASSERT_TRUE(nvk::os::SetFileAttributesA(readOnly, nvk::os::FILE_ATTRIBUTE_READONLY));
    EIniFile ini(readOnly);
    const auto start = Clock::now();
    EXPECT_FALSE(ini.Open(false));
    EXPECT_LT(MillisecondsSince(start), 50);
    char buffer[4];
    EXPECT_EQ(ini.GetPrivateProfileStringA("S", "k", "", buffer, sizeof buffer, ""), 1u);
    ini.Close();
    // A read-only file is not deleted either: the folder goes only without it.
    nvk::os::SetFileAttributesA(readOnly, nvk::os::FILE_ATTRIBUTE_NORMAL);
}

TEST_F(IniProfile, AStaleCopyWritesNoOtherFile) {
    Put("f1.ini", "[S]\r\nk=1\r\n");
    Put("f2.ini", "[S]\r\nk=2\r\n");
    auto original = std::make_unique<EIniFile>();
    ASSERT_TRUE(original->Open(Path("f1.ini"), false));
    EIniFile copy(*original);
    (*original)["S"]["k"] = "original";
    EXPECT_TRUE(original->Close());
    original.reset();
    EIniFile third;
    ASSERT_TRUE(third.Open(Path("f2.ini"), false));
    third["S"]["k"] = "third";
    // The copy's handle died with its twin's Close.
    EXPECT_FALSE(copy.Close());
    EXPECT_TRUE(third.Close());
    EXPECT_EQ(Get("f1.ini"), "[S]\r\nk=original\r\n");
    EXPECT_EQ(Get("f2.ini"), "[S]\r\nk=third\r\n");
}

// The POSIX layer never gives a closed handle's number to another file, so a
// stale handle fails as invalid; the system's own layer may reuse numbers.
TEST_F(IniProfile, AClosedHandleNeverComesBackAsAnotherFiles) {
    Put("f1.ini", "[S]\r\nk=1\r\n");
    namespace os = nvk::os;
    const os::HANDLE closed = os::CreateFileA(Path("f1.ini"), os::GENERIC_READ, 0, nullptr,
                                              os::OPEN_EXISTING, 0, nullptr);
    ASSERT_TRUE(os::CloseHandle(closed));
    const os::HANDLE next = os::CreateFileA(Path("f1.ini"), os::GENERIC_WRITE, 0, nullptr,
                                            os::OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(next, closed);
    os::DWORD written = 1;
    EXPECT_FALSE(os::WriteFile(closed, "x", 1, &written, nullptr));
    EXPECT_EQ(os::GetLastError(), os::ERROR_INVALID_HANDLE);
    EXPECT_TRUE(os::CloseHandle(next));
    EXPECT_FALSE(os::CloseHandle(closed));
}

TEST_F(IniProfile, AWriteKeepsPermissionsAndFollowsLinks) {
    Put("real.ini", "[S]\r\nk=1\r\n");
    const fs::perms mode = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
    fs::permissions(m_Folder / "real.ini", mode);
    fs::create_directory(m_Folder / "links");
    fs::create_symlink(m_Folder / "real.ini", m_Folder / "links" / "link.ini");
    EIniFile ini;
    EXPECT_EQ(ini.WritePrivateProfileStringA("S", "k", "2", Path("links/link.ini")), 1u);
    EXPECT_TRUE(fs::is_symlink(m_Folder / "links" / "link.ini"));
    EXPECT_EQ(Get("real.ini"), "[S]\r\nk=2\r\n");
    EXPECT_EQ(fs::status(m_Folder / "real.ini").permissions(), mode);
    // Nothing is left beside the file.
    EXPECT_EQ(std::distance(fs::directory_iterator(m_Folder), fs::directory_iterator()), 2);
    EXPECT_EQ(std::distance(fs::directory_iterator(m_Folder / "links"), fs::directory_iterator()),
              1);
}

}  // namespace
