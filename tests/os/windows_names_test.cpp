// The file layer answers as Windows does: names without regard to case,
// trailing dots and blanks, the DOS wildcards, copies of open files,
// read-only files even for root, and the error codes callers test.
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
#include "os/posix/wildcard.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

namespace fs = std::filesystem;

class WindowsNamesTest : public ::testing::Test {
protected:
    WindowsNamesTest() : drives_("NVK_DRIVES", ("T=" + folder_.str()).c_str()) {}
    ~WindowsNamesTest() override { fs::current_path(start_); }

    void Write(const std::string& name, const std::string& content) {
        std::ofstream(folder_ / name, std::ios::binary) << content;
    }
    std::string Read(const std::string& name) {
        std::ifstream in(folder_ / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    std::vector<std::string> Names() {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder_.str())) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    static HANDLE Open(const char* name, DWORD access, DWORD share, DWORD disposition) {
        return CreateFileA(name, access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                           nullptr);
    }
    // The first name a search finds, or "#error".
    static std::string First(const char* pattern) {
        WIN32_FIND_DATAA data;
        HANDLE search = FindFirstFileA(pattern, &data);
        if (search == INVALID_HANDLE_VALUE) {
            return "#" + std::to_string(GetLastError());
        }
        FindClose(search);
        return data.cFileName;
    }

    test::TempFolder folder_;
    test::ScopedEnv drives_;
    fs::path start_ = fs::current_path();
};

TEST_F(WindowsNamesTest, NamesAreFoundWithoutRegardToCase) {
    fs::create_directory(folder_ / "test-dir");
    Write("test-dir/compta.dat", "old");
    HANDLE file = Open("T:\\TEST-DIR\\COMPTA.DAT", GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    CloseHandle(file);
    // Creating over another case writes the file that is there.
    file = Open("T:\\Test-Dir\\Compta.Dat", GENERIC_WRITE, 0, CREATE_ALWAYS);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD put = 0;
    WriteFile(file, "new", 3, &put, nullptr);
    CloseHandle(file);
    EXPECT_EQ(Read("test-dir/compta.dat"), "new");
    EXPECT_EQ(Open("T:\\test-dir\\COMPTA.dat", GENERIC_WRITE, 0, CREATE_NEW), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
    EXPECT_EQ(GetFileAttributesA("T:\\TEST-DIR\\COMPTA.DAT"), FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_EQ(First("T:\\TEST-DIR\\*.DAT"), "compta.dat");

    ASSERT_TRUE(CopyFileA("T:\\TEST-DIR\\COMPTA.DAT", "T:\\Backup.DAT", FALSE));
    ASSERT_TRUE(MoveFileExA("T:\\BACKUP.dat", "T:\\TEST-DIR\\Moved.dat", 0));
    EXPECT_TRUE(fs::exists(folder_ / "test-dir/Moved.dat"));  // a new name as given
    EXPECT_TRUE(DeleteFileA("T:\\Test-Dir\\MOVED.DAT"));
    // A change of case of the file itself is a rename, not a clash.
    EXPECT_TRUE(MoveFileA("T:\\test-dir\\compta.dat", "T:\\test-dir\\Compta.dat"));
    EXPECT_TRUE(MoveFileA("T:\\test-dir\\Compta.dat", "T:\\test-dir\\Compta.dat"));
    EXPECT_TRUE(fs::exists(folder_ / "test-dir/Compta.dat"));

    ASSERT_TRUE(SetCurrentDirectoryA("T:\\TEST-DIR"));
    fs::current_path(start_);
    EXPECT_TRUE(DeleteFileA("T:\\TEST-DIR\\compta.DAT"));
    EXPECT_TRUE(RemoveDirectoryA("T:\\Test-DIR"));
    EXPECT_EQ(Names(), std::vector<std::string>{});
}

TEST_F(WindowsNamesTest, TrailingDotsAndBlanksAreDropped) {
    fs::create_directory(folder_ / "test");
    Write("test/file", "x");
    Write("noext", "");
    Write("a.txt", "");
    char full[MAX_PATH];
    ASSERT_NE(GetFullPathNameA("T:\\test.", MAX_PATH, full, nullptr), 0u);
    EXPECT_STREQ(full, "T:\\test");
    ASSERT_NE(GetFullPathNameA("T:\\test   ", MAX_PATH, full, nullptr), 0u);
    EXPECT_STREQ(full, "T:\\test");
    ASSERT_NE(GetFullPathNameA("T:\\test\\.. ", MAX_PATH, full, nullptr), 0u);
    EXPECT_STREQ(full, "T:\\");
    EXPECT_EQ(GetFileAttributesA("T:\\test.\\file"), FILE_ATTRIBUTE_ARCHIVE);
    HANDLE file = Open("T:\\test. \\file..", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    CloseHandle(file);
    EXPECT_EQ(First("T:\\noext."), "noext");
    EXPECT_EQ(First("T:\\a.txt."), "a.txt");
}

TEST(DosWildcardTest, FollowTheRulesOfWindowsSearches) {
    using posix::MatchWildcard;
    EXPECT_TRUE(MatchWildcard("*.", "noext"));
    EXPECT_FALSE(MatchWildcard("*.", "a.txt"));
    EXPECT_FALSE(MatchWildcard("*.", "."));
    EXPECT_FALSE(MatchWildcard("*.", ".."));
    EXPECT_TRUE(MatchWildcard("a.*", "a"));
    EXPECT_TRUE(MatchWildcard("a.*", "A.TXT"));
    EXPECT_FALSE(MatchWildcard("a.*", "ab"));
    EXPECT_TRUE(MatchWildcard("??.txt", "a.txt"));
    EXPECT_TRUE(MatchWildcard("??.txt", "ab.txt"));
    EXPECT_FALSE(MatchWildcard("??.txt", "abc.txt"));
    EXPECT_TRUE(MatchWildcard("a??", "a"));
    EXPECT_TRUE(MatchWildcard("*.*", "noext"));
    EXPECT_TRUE(MatchWildcard("*.*", "."));
    EXPECT_TRUE(MatchWildcard("*.txt", "a.b.txt"));
    EXPECT_FALSE(MatchWildcard("*.txt", "a.txt2"));
    // A pattern that backtracks a great deal still answers at once.
    EXPECT_FALSE(MatchWildcard("*a*a*a*a*a*a*a*a*a*b", std::string(250, 'a')));
}

TEST_F(WindowsNamesTest, CopiesTakeFilesTheApplicationHasOpen) {
    Write("open.dat", "data");
    HANDLE writer =
        Open("T:\\open.dat", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING);
    ASSERT_NE(writer, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(CopyFileA("T:\\open.dat", "T:\\copy1", FALSE));
    CloseHandle(writer);
    HANDLE deleter = Open("T:\\open.dat", DELETE, FILE_SHARE_READ, OPEN_EXISTING);
    ASSERT_NE(deleter, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(CopyFileA("T:\\open.dat", "T:\\copy2", FALSE));
    CloseHandle(deleter);
    HANDLE target =
        Open("T:\\copy1", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
    ASSERT_NE(target, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(CopyFileA("T:\\open.dat", "T:\\copy1", FALSE));
    CloseHandle(target);
    EXPECT_EQ(Read("copy1"), "data");
    // Where Windows refuses: a source held without read sharing.
    HANDLE exclusive = Open("T:\\open.dat", GENERIC_READ, 0, OPEN_EXISTING);
    EXPECT_FALSE(CopyFileA("T:\\open.dat", "T:\\copy3", FALSE));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    // Running a file counts as reading it.
    EXPECT_EQ(Open("T:\\open.dat", GENERIC_EXECUTE, FILE_SHARE_READ, OPEN_EXISTING),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    CloseHandle(exclusive);
}

TEST_F(WindowsNamesTest, ReadOnlyFilesAreNotChangedEvenByRoot) {
    Write("ro", "keep");
    Write("other", "x");
    ASSERT_TRUE(SetFileAttributesA("T:\\ro", FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(Open("T:\\ro", GENERIC_WRITE, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Open("T:\\ro", GENERIC_WRITE, 0, TRUNCATE_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(Open("T:\\ro", GENERIC_WRITE, 0, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(MoveFileExA("T:\\other", "T:\\ro", MOVEFILE_REPLACE_EXISTING));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(DeleteFileA("T:\\ro"));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Read("ro"), "keep");
    HANDLE reader = Open("T:\\ro", GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_NE(reader, INVALID_HANDLE_VALUE);
    CloseHandle(reader);
}

TEST_F(WindowsNamesTest, ErrorCodesAreWindowsOwn) {
    fs::create_directory(folder_ / "dir");
    Write("f", "x");
    EXPECT_EQ(Open("T:\\a*b", GENERIC_WRITE, 0, CREATE_ALWAYS), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_NAME);
    EXPECT_FALSE(MoveFileA("T:\\f", "T:\\g?"));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_NAME);
    EXPECT_EQ(Names(), (std::vector<std::string>{"dir", "f"}));
    EXPECT_EQ(Open("T:\\dir\\", GENERIC_READ, 0, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(Open("T:\\dir", GENERIC_WRITE, 0, CREATE_NEW), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(First("T:\\missing\\"), "#" + std::to_string(ERROR_PATH_NOT_FOUND));
    EXPECT_TRUE(MoveFileA("T:\\f", "T:\\f"));

    HANDLE file = Open("T:\\f", GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    char buffer[10];
    DWORD done = 0;
    SetLastError(1234);
    EXPECT_TRUE(ReadFile(file, buffer, 0, &done, nullptr));
    EXPECT_TRUE(WriteFile(file, buffer, 0, &done, nullptr));
    EXPECT_EQ(GetLastError(), 1234u);
    EXPECT_FALSE(ReadFile(file, nullptr, 10, &done, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_NOACCESS);
    EXPECT_FALSE(WriteFile(file, nullptr, 10, &done, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_USER_BUFFER);
    CloseHandle(file);
}

TEST_F(WindowsNamesTest, ByteRangeLocksOfZeroLengthAndAtTheTop) {
    Write("locks", std::string(64, 'x'));
    const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE;
    HANDLE one = Open("T:\\locks", GENERIC_READ | GENERIC_WRITE, share, OPEN_EXISTING);
    HANDLE two = Open("T:\\locks", GENERIC_READ | GENERIC_WRITE, share, OPEN_EXISTING);
    ASSERT_NE(one, INVALID_HANDLE_VALUE);
    ASSERT_NE(two, INVALID_HANDLE_VALUE);
    // A zero-length lock at 50 refuses the regions across 50 only.
    ASSERT_TRUE(LockFile(one, 50, 0, 0, 0));
    EXPECT_FALSE(LockFile(two, 40, 0, 20, 0));
    EXPECT_EQ(GetLastError(), ERROR_LOCK_VIOLATION);
    EXPECT_TRUE(LockFile(two, 40, 0, 10, 0));
    EXPECT_TRUE(LockFile(two, 50, 0, 0, 0));
    // It locks no byte: reading across it goes on.
    char buffer[64];
    DWORD done = 0;
    SetFilePointer(one, 0, nullptr, FILE_BEGIN);
    EXPECT_FALSE(ReadFile(one, buffer, 64, &done, nullptr));  // 40 to 49 are two's
    SetFilePointer(one, 50, nullptr, FILE_BEGIN);
    EXPECT_TRUE(ReadFile(one, buffer, 14, &done, nullptr));
    // The last byte of the offsets can be locked, one past it cannot.
    ASSERT_TRUE(LockFile(one, 0xFFFFFFFF, 0xFFFFFFFF, 1, 0));
    EXPECT_FALSE(LockFile(two, 0xFFFFFFFF, 0xFFFFFFFF, 1, 0));
    EXPECT_EQ(GetLastError(), ERROR_LOCK_VIOLATION);
    EXPECT_FALSE(LockFile(two, 0xFFFFFFFF, 0xFFFFFFFF, 2, 0));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_LOCK_RANGE);
    EXPECT_FALSE(LockFile(two, 0, 0, 0xFFFFFFFF, 0xFFFFFFFF));
    EXPECT_TRUE(UnlockFile(one, 0xFFFFFFFF, 0xFFFFFFFF, 1, 0));
    EXPECT_TRUE(UnlockFile(one, 50, 0, 0, 0));
    EXPECT_FALSE(LockFile(one, 45, 0, 3, 0));  // still two's
    CloseHandle(one);
    CloseHandle(two);
}

}  // namespace
}  // namespace nvk::os
