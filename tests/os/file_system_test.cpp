// Searches, attributes, folders, copies, the current folder and temporary
// files, on a scratch folder mapped as drive T:.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "os/api/directory.h"
#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/file_copy.h"
#include "os/api/find.h"
#include "os/api/sync.h"
#include "os/api/temp_file.h"
#include "os/api/tree_delete.h"
#include "os/posix/full_path.h"
#include "os/posix/wildcard.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

namespace fs = std::filesystem;

class FileSystemTest : public ::testing::Test {
protected:
    FileSystemTest() : drives_("NVK_DRIVES", ("T=" + folder_.str()).c_str()) {}
    ~FileSystemTest() override { fs::current_path(startFolder_); }

    void Write(const std::string& name, const std::string& content) {
        std::ofstream(folder_ / name, std::ios::binary) << content;
    }
    std::string Read(const std::string& name) {
        std::ifstream in(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    // The names a search finds, or the error code as "#n".
    static std::vector<std::string> Found(const char* pattern) {
        WIN32_FIND_DATAA data;
        HANDLE search = FindFirstFileA(pattern, &data);
        if (search == INVALID_HANDLE_VALUE) {
            return {"#" + std::to_string(GetLastError())};
        }
        std::vector<std::string> names;
        do {
            names.emplace_back(data.cFileName);
        } while (FindNextFileA(search, &data));
        EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
        EXPECT_TRUE(FindClose(search));
        return names;
    }

    test::TempFolder folder_;
    test::ScopedEnv drives_;
    fs::path startFolder_ = fs::current_path();
};

using Names = std::vector<std::string>;

TEST(WildcardTest, MatchesAsWindowsDoes) {
    using posix::MatchWildcard;
    EXPECT_TRUE(MatchWildcard("*.*", "noextension"));
    EXPECT_TRUE(MatchWildcard("*.TXT", "a.b.txt"));
    EXPECT_TRUE(MatchWildcard("a*b*c", "aXbYbZc"));
    EXPECT_FALSE(MatchWildcard("a*b*c", "aXbYcZ"));
    EXPECT_TRUE(MatchWildcard("?x?", "AXB"));
    EXPECT_FALSE(MatchWildcard("?x?", "xb"));
    EXPECT_TRUE(MatchWildcard("*", ""));
    EXPECT_FALSE(MatchWildcard("*.txt", "a.txt2"));
}

TEST_F(FileSystemTest, FindMatchesWildcardsWithoutCaseAndNamesExactly) {
    Write("a.txt", "12345");
    Write("B.TXT", "");
    Write("c.log", "");
    Write(".hidden", "");
    fs::create_directory(folder_ / "Sub");
    EXPECT_EQ(Found("T:\\*.txt"), (Names{"a.txt", "B.TXT"}));
    EXPECT_EQ(Found("T:/?.TxT"), (Names{"a.txt", "B.TXT"}));
    // A drive root has no "." and ".."; another folder has them first.
    EXPECT_EQ(Found("T:\\*"), (Names{".hidden", "a.txt", "B.TXT", "c.log", "Sub"}));
    EXPECT_EQ(Found("T:\\Sub\\*.*"), (Names{".", ".."}));
    EXPECT_EQ(Found("T:\\a.txt"), (Names{"a.txt"}));
    EXPECT_EQ(Found("T:\\A.TXT"), (Names{"a.txt"}));
    EXPECT_EQ(Found("T:\\*.doc"), (Names{"#2"}));
    EXPECT_EQ(Found("T:\\Missing\\*"), (Names{"#3"}));
    EXPECT_EQ(Found("T:\\Sub\\"), (Names{"#2"}));
    EXPECT_EQ(Found("T:\\Missing\\"), (Names{"#3"}));

    WIN32_FIND_DATAA data;
    HANDLE search = FindFirstFileA("T:\\a.*", &data);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    EXPECT_EQ(data.nFileSizeLow, 5u);
    EXPECT_EQ(data.dwFileAttributes, FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_NE(data.ftLastWriteTime.dwHighDateTime, 0u);
    FindClose(search);
    EXPECT_FALSE(FindClose(search));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(FileSystemTest, AttributesFollowTypeOwnerAndName) {
    Write("f", "");
    Write(".dot", "");
    fs::create_directory(folder_ / "d");
    EXPECT_EQ(GetFileAttributesA("T:\\f"), FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_EQ(GetFileAttributesA("T:\\.dot"), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_EQ(GetFileAttributesA("T:\\d\\"), FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_TRUE(SetFileAttributesA("T:\\f", FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(GetFileAttributesA("T:\\f"), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_FALSE(DeleteFileA("T:\\f"));
    EXPECT_TRUE(SetFileAttributesA("T:\\f", FILE_ATTRIBUTE_NORMAL));
    EXPECT_TRUE(DeleteFileA("T:\\f"));
    EXPECT_EQ(GetFileAttributesA("T:\\f"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(GetFileAttributesA("T:\\none\\f"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(GetFileAttributesA("Q:\\f"), INVALID_FILE_ATTRIBUTES);
}

TEST_F(FileSystemTest, FoldersAreMadeAndRemovedWithWin32Errors) {
    EXPECT_TRUE(CreateDirectoryA("T:\\a", nullptr));
    EXPECT_FALSE(CreateDirectoryA("T:\\a", nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_FALSE(CreateDirectoryA("T:\\x\\y", nullptr));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    Write("a/f", "");
    EXPECT_FALSE(RemoveDirectoryA("T:\\a"));
    EXPECT_EQ(GetLastError(), ERROR_DIR_NOT_EMPTY);
    EXPECT_FALSE(RemoveDirectoryA("T:\\a\\f"));
    EXPECT_EQ(GetLastError(), ERROR_DIRECTORY);
    fs::remove(folder_ / "a/f");
    EXPECT_TRUE(RemoveDirectoryA("T:\\a"));
}

TEST_F(FileSystemTest, CurrentFolderAndFullPathsAreInDriveForm) {
    fs::create_directory(folder_ / "Sub");
    ASSERT_TRUE(SetCurrentDirectoryA("t:\\Sub"));
    char buffer[MAX_PATH];
    EXPECT_EQ(GetCurrentDirectoryA(0, nullptr), 7u);
    EXPECT_EQ(GetCurrentDirectoryA(sizeof buffer, buffer), 6u);
    EXPECT_STREQ(buffer, "T:\\Sub");
    LPSTR name = nullptr;
    EXPECT_EQ(GetFullPathNameA("x\\..\\y.txt", sizeof buffer, buffer, &name), 12u);
    EXPECT_STREQ(buffer, "T:\\Sub\\y.txt");
    EXPECT_STREQ(name, "y.txt");
    EXPECT_EQ(GetFullPathNameA("\\z\\", sizeof buffer, buffer, &name), 5u);
    EXPECT_STREQ(buffer, "T:\\z\\");
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(GetFullPathNameA("T:\\Sub\\long", 4, buffer, nullptr), 12u);
    Write("f", "");
    EXPECT_FALSE(SetCurrentDirectoryA("T:\\f"));
    EXPECT_EQ(GetLastError(), ERROR_DIRECTORY);
}

TEST(FullPathTest, ResolvesAgainstTheCurrentFolderAndStopsAtRoots) {
    using posix::FullWindowsPath;
    EXPECT_EQ(FullWindowsPath("C:\\a\\..\\..\\b", "Z:\\"), "C:\\b");
    EXPECT_EQ(FullWindowsPath("c:x", "C:\\w"), "C:\\w\\x");
    EXPECT_EQ(FullWindowsPath("D:x", "C:\\w"), "D:\\x");
    EXPECT_EQ(FullWindowsPath("\\x", "\\\\srv\\share\\w"), "\\\\srv\\share\\x");
    EXPECT_EQ(FullWindowsPath("//srv/share/a/../../b", "C:\\"), "\\\\srv\\share\\b");
    EXPECT_EQ(FullWindowsPath(".\\a\\.\\b\\", "C:\\w"), "C:\\w\\a\\b\\");
    EXPECT_EQ(FullWindowsPath("", "C:\\w"), "");
    EXPECT_TRUE(posix::IsFullRoot("C:\\"));
    EXPECT_TRUE(posix::IsFullRoot("\\\\srv\\share\\"));
    EXPECT_FALSE(posix::IsFullRoot("C:\\a"));
}

TEST_F(FileSystemTest, CopyAndMoveKeepShareModesAndTargets) {
    Write("a", "content");
    fs::permissions(folder_ / "a", fs::perms::owner_write, fs::perm_options::remove);
    ASSERT_TRUE(CopyFileA("T:\\a", "T:\\b", TRUE));
    EXPECT_EQ(Read("b"), "content");
    EXPECT_EQ(GetFileAttributesA("T:\\b"), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_FALSE(CopyFileA("T:\\a", "T:\\b", TRUE));
    EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
    EXPECT_FALSE(CopyFileA("T:\\a", "T:\\b", FALSE));  // a read-only target
    EXPECT_FALSE(CopyFileA("T:\\missing", "T:\\c", FALSE));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);

    Write("c", "new");
    EXPECT_FALSE(MoveFileExA("T:\\c", "T:\\b", MOVEFILE_REPLACE_EXISTING));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    SetFileAttributesA("T:\\b", FILE_ATTRIBUTE_NORMAL);
    EXPECT_FALSE(MoveFileExA("T:\\c", "T:\\b", 0));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    {
        HANDLE held = CreateFileA("T:\\b", GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
        EXPECT_FALSE(MoveFileExA("T:\\c", "T:\\b", MOVEFILE_REPLACE_EXISTING));
        EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
        CloseHandle(held);
    }
    EXPECT_TRUE(MoveFileExA("T:\\c", "T:\\b", MOVEFILE_REPLACE_EXISTING));
    EXPECT_EQ(Read("b"), "new");
    EXPECT_FALSE(fs::exists(folder_ / "c"));
}

TEST_F(FileSystemTest, TemporaryNamesAreUniqueAndCreated) {
    test::ScopedEnv tmp("TMP", "T:\\Temp");
    char buffer[MAX_PATH];
    EXPECT_EQ(GetTempPathA(3, buffer), 9u);
    EXPECT_EQ(GetTempPathA(sizeof buffer, buffer), 8u);
    EXPECT_STREQ(buffer, "T:\\Temp\\");
    EXPECT_EQ(GetTempFileNameA(buffer, "abc", 0, buffer), 0u);
    EXPECT_EQ(GetLastError(), ERROR_DIRECTORY);

    fs::create_directory(folder_ / "Temp");
    char first[MAX_PATH];
    char second[MAX_PATH];
    UINT a = GetTempFileNameA("T:\\Temp", "abcdef", 0, first);
    UINT b = GetTempFileNameA("T:\\Temp\\", "abcdef", 0, second);
    ASSERT_NE(a, 0u);
    ASSERT_NE(b, 0u);
    EXPECT_NE(a, b);
    char expected[MAX_PATH];
    std::snprintf(expected, sizeof expected, "T:\\Temp\\abc%X.tmp", a);
    EXPECT_STREQ(first, expected);
    EXPECT_EQ(GetFileAttributesA(first), FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_NE(GetFileAttributesA(second), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetTempFileNameA("T:\\Temp", nullptr, 0x11234, first), 0x1234u);
    EXPECT_STREQ(first, "T:\\Temp\\1234.tmp");
    EXPECT_EQ(GetFileAttributesA(first), INVALID_FILE_ATTRIBUTES);
}

TEST_F(FileSystemTest, EmptyingATreeGoesIntoReadOnlyFoldersButNeverThroughLinks) {
    test::TempFolder outside;
    std::ofstream(outside / "keep.txt") << "keep";
    fs::create_directories(folder_ / "p/Sub/deep");
    Write("p/Sub/deep/f.txt", "x");
    Write("p/a.txt", "y");
    fs::permissions(folder_ / "p/Sub", fs::perms::owner_read | fs::perms::owner_exec);
    fs::create_directory_symlink(outside.str(), folder_ / "p/Sub/out");
    fs::create_symlink(outside / "keep.txt", folder_ / "p/file-link");
    fs::create_directory_symlink(outside.str(), folder_ / "link");

    EXPECT_TRUE(EmptyFolderA("T:\\P"));
    EXPECT_TRUE(fs::is_empty(folder_ / "p"));
    EXPECT_TRUE(fs::exists(outside / "keep.txt"));
    // A link named as the folder to empty is not entered either.
    EXPECT_FALSE(EmptyFolderA("T:\\link"));
    EXPECT_EQ(GetLastError(), ERROR_DIRECTORY);
    EXPECT_TRUE(fs::exists(outside / "keep.txt"));
    EXPECT_FALSE(EmptyFolderA("T:\\missing"));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

}  // namespace
}  // namespace nvk::os
