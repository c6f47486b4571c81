// Names on disk are UTF-8, as the system's other programs write them; the
// library sees them in its ANSI code page, and still finds the raw ANSI names
// that builds before the conversion wrote.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "os/api/directory.h"
#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/find.h"
#include "os/api/temp_file.h"
#include "os/posix/native_names.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

namespace fs = std::filesystem;

class NativeNamesTest : public ::testing::Test {
protected:
    NativeNamesTest() : drives_("NVK_DRIVES", ("T=" + folder_.str()).c_str()) {}
    ~NativeNamesTest() override { fs::current_path(start_); }

    // A file made by another program (or an earlier build) under the native name.
    void Put(const std::string& nativeName, const std::string& content) {
        std::ofstream(folder_ / nativeName, std::ios::binary) << content;
    }
    static std::string Read(const std::string& windowsName) {
        HANDLE file = CreateFileA(windowsName.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            return "#" + std::to_string(GetLastError());
        }
        char buffer[64];
        DWORD got = 0;
        ReadFile(file, buffer, sizeof buffer, &got, nullptr);
        CloseHandle(file);
        return std::string(buffer, got);
    }
    static bool Make(const std::string& windowsName, const std::string& content) {
        HANDLE file = CreateFileA(windowsName.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            return false;
        }
        DWORD put = 0;
        WriteFile(file, content.data(), static_cast<DWORD>(content.size()), &put, nullptr);
        return CloseHandle(file) != FALSE;
    }
    // The names a search finds, in its order, or "#error".
    static std::string Found(const std::string& pattern) {
        WIN32_FIND_DATAA data;
        HANDLE search = FindFirstFileA(pattern.c_str(), &data);
        if (search == INVALID_HANDLE_VALUE) {
            return "#" + std::to_string(GetLastError());
        }
        std::string names = data.cFileName;
        while (FindNextFileA(search, &data)) {
            names += std::string("|") + data.cFileName;
        }
        FindClose(search);
        return names;
    }

    test::TempFolder folder_;
    test::ScopedEnv drives_;
    fs::path start_ = fs::current_path();
};

TEST_F(NativeNamesTest, TheLibrarysNamesAreUtf8OnDiskAndAnsiInSearches) {
    ASSERT_TRUE(Make("T:\\\xe9t\xe9.txt", "summer"));
    ASSERT_TRUE(CreateDirectoryA("T:\\Soci\xe9t\xe9", nullptr));
    EXPECT_TRUE(fs::is_regular_file(folder_ / "\xc3\xa9t\xc3\xa9.txt"));
    EXPECT_TRUE(fs::is_directory(folder_ / "Soci\xc3\xa9t\xc3\xa9"));
    EXPECT_EQ(Found("T:\\*"), "Soci\xe9t\xe9|\xe9t\xe9.txt");
    // Case is ignored across the accented letters too, in every call.
    EXPECT_EQ(Found("T:\\\xc9T\xc9.TXT"), "\xe9t\xe9.txt");
    EXPECT_EQ(Found("T:\\\xc9*"), "\xe9t\xe9.txt");
    EXPECT_EQ(Read("T:\\\xc9t\xc9.txt"), "summer");
    EXPECT_EQ(GetFileAttributesA("T:\\SOCI\xc9T\xc9"), FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_FALSE(Make("T:\\\xc9T\xc9.txt", "winter"));
    EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);

    // Paths handed out come back in ANSI.
    ASSERT_TRUE(SetCurrentDirectoryA("T:\\soci\xe9t\xe9"));
    char path[MAX_PATH];
    ASSERT_GT(GetCurrentDirectoryA(MAX_PATH, path), 0u);
    EXPECT_EQ(std::string(path), "T:\\Soci\xe9t\xe9");
    ASSERT_GT(GetFullPathNameA("fen\xeatre.txt", MAX_PATH, path, nullptr), 0u);
    EXPECT_EQ(std::string(path), "T:\\Soci\xe9t\xe9\\fen\xeatre.txt");
    test::ScopedEnv temp("TMP", (folder_ / "Soci\xc3\xa9t\xc3\xa9").c_str());
    ASSERT_GT(GetTempPathA(MAX_PATH, path), 0u);
    EXPECT_EQ(std::string(path), "T:\\Soci\xe9t\xe9\\");
}

TEST_F(NativeNamesTest, NamesBeyondTheCodePageComeBackWithQuestionMarks) {
    Put("\xe6\x97\xa5.txt", "day");    // U+65E5
    Put("\xe6\x9c\x88.txt", "month");  // U+6708
    Put("\xef\xbc\xbc.txt", "slash");  // a fullwidth backslash is no separator
    Put("\xc2\xa3.txt", "pound");
    EXPECT_EQ(Found("T:\\*.txt"), "?.txt|?.txt|?.txt|\xa3.txt");
    // Such a name cannot be opened through the A calls, nor stand for another.
    EXPECT_EQ(Read("T:\\?.txt"), "#" + std::to_string(ERROR_INVALID_NAME));
    EXPECT_EQ(Read("T:\\\xa3.TXT"), "pound");
    EXPECT_EQ(posix::AnsiName("/a/\xe6\x97\xa5/\xc3\xa9\\\xe9/\xc0\xaf"),
              "/a/?/\xe9\\\xe9/\xc0\xaf");
}

TEST_F(NativeNamesTest, RawAnsiNamesOfEarlierBuildsStayReachable) {
    Put("caf\xe9.dat", "old");
    fs::create_directory(folder_ / "Soci\xe9t\xe9");
    Put("Soci\xe9t\xe9/bilan.dat", "balance");
    EXPECT_EQ(Found("T:\\*"), "caf\xe9.dat|Soci\xe9t\xe9");
    EXPECT_EQ(Read("T:\\caf\xe9.dat"), "old");
    EXPECT_EQ(Read("T:\\CAF\xc9.DAT"), "old");
    EXPECT_EQ(Read("T:\\soci\xe9t\xe9\\BILAN.dat"), "balance");
    // A new file goes into the folder that is there, under a UTF-8 name.
    ASSERT_TRUE(Make("T:\\Soci\xe9t\xe9\\r\xe9sultat.dat", "result"));
    EXPECT_TRUE(fs::is_regular_file(folder_ / "Soci\xe9t\xe9/r\xc3\xa9sultat.dat"));
    // The exact raw name wins over another spelling of it in UTF-8.
    Put("CAF\xc3\x89.dat", "upper");
    EXPECT_EQ(Read("T:\\caf\xe9.dat"), "old");
    EXPECT_TRUE(DeleteFileA("T:\\caf\xe9.dat"));
    EXPECT_TRUE(fs::exists(folder_ / "CAF\xc3\x89.dat"));
}

}  // namespace
}  // namespace nvk::os
