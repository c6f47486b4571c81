#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/path_map.h"
#include "os/api/sync.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

constexpr DWORD kReadWrite = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class FileTest : public ::testing::Test {
protected:
    HANDLE Open(const std::string& path, DWORD access, DWORD share, DWORD disposition) {
        return CreateFileA(path.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL,
                           nullptr);
    }
    void Put(const std::string& path, const std::string& text) {
        std::ofstream(path, std::ios::binary) << text;
    }
    std::string Get(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    // The error of a failed open, or 0 after closing a successful one.
    DWORD OpenError(const std::string& path, DWORD access, DWORD share, DWORD disposition) {
        HANDLE file = Open(path, access, share, disposition);
        if (file == INVALID_HANDLE_VALUE) {
            return GetLastError();
        }
        CloseHandle(file);
        return 0;
    }
    test::TempFolder folder_;
};

TEST_F(FileTest, DispositionsCreateOpenAndTruncate) {
    std::string path = folder_ / "a.dat";
    EXPECT_EQ(OpenError(path, kReadWrite, 0, OPEN_EXISTING), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(OpenError(folder_ / "none/a.dat", kReadWrite, 0, OPEN_EXISTING),
              ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(OpenError(path, kReadWrite, 0, TRUNCATE_EXISTING), ERROR_FILE_NOT_FOUND);

    HANDLE file = Open(path, kReadWrite, 0, OPEN_ALWAYS);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    CloseHandle(file);
    Put(path, "content");
    file = Open(path, kReadWrite, 0, OPEN_ALWAYS);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    CloseHandle(file);
    EXPECT_EQ(Get(path), "content");

    EXPECT_EQ(OpenError(path, kReadWrite, 0, CREATE_NEW), ERROR_FILE_EXISTS);
    file = Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    CloseHandle(file);
    EXPECT_EQ(Get(path), "");

    Put(path, "again");
    EXPECT_EQ(OpenError(path, GENERIC_WRITE, 0, TRUNCATE_EXISTING), 0u);
    EXPECT_EQ(Get(path), "");

    EXPECT_EQ(OpenError(folder_.str(), GENERIC_READ, kShareAll, OPEN_EXISTING),
              ERROR_ACCESS_DENIED);
    EXPECT_EQ(OpenError(path, kReadWrite, 0, 0), ERROR_INVALID_PARAMETER);
}

// Cutting a file takes a handle that may write, whether by its disposition or
// by SetEndOfFile.
TEST_F(FileTest, CuttingTakesWriteAccess) {
    std::string path = folder_ / "cut.dat";
    Put(path, "again");
    EXPECT_EQ(OpenError(path, GENERIC_READ, 0, TRUNCATE_EXISTING), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Get(path), "again");
    HANDLE reader = Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    EXPECT_FALSE(SetEndOfFile(reader));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    CloseHandle(reader);
    EXPECT_EQ(Get(path), "again");
}

TEST_F(FileTest, UnmappedDrivesAndServers) {
    test::ScopedEnv drives("NVK_DRIVES", "Q=");
    EXPECT_EQ(OpenError("Q:\\x.dat", GENERIC_READ, 0, OPEN_EXISTING), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(OpenError("\\\\nvk-nowhere\\share\\x.dat", GENERIC_READ, 0, OPEN_EXISTING),
              ERROR_BAD_NETPATH);
}

class ReadOnlyFileTest : public FileTest {
protected:
    void SetUp() override {
        HANDLE created = CreateFileA(path_.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                     FILE_ATTRIBUTE_READONLY, nullptr);
        ASSERT_NE(created, INVALID_HANDLE_VALUE);
        CloseHandle(created);
    }
    // Windows removes no read-only file, also not the folder's clean-up.
    void TearDown() override { SetFileAttributesA(path_.c_str(), FILE_ATTRIBUTE_NORMAL); }
    std::string path_ = folder_ / "ro.dat";
};

TEST_F(ReadOnlyFileTest, StaysAndStillLocksAndShares) {
    EXPECT_FALSE(DeleteFileA(path_.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    // A reader of a file it can't write still locks and shares as usual.
    HANDLE reader = Open(path_, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(LockFile(reader, 0, 0, 1, 0));
    EXPECT_EQ(OpenError(path_, GENERIC_READ, 0, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
    CloseHandle(reader);
}

// The layer refuses the write itself, also to root.
TEST_F(ReadOnlyFileTest, RefusesWritersEvenToTheSuperUser) {
    EXPECT_EQ(OpenError(path_, GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING),
              ERROR_ACCESS_DENIED);
}

TEST_F(FileTest, HandlesWithoutAnAccessRefuseReadsAndWrites) {
    std::string path = folder_ / "bare.dat";
    HANDLE bare = Open(path, 0, 0, CREATE_NEW);
    ASSERT_NE(bare, INVALID_HANDLE_VALUE);
    char byte = 'x';
    DWORD done = 7;
    EXPECT_FALSE(WriteFile(bare, &byte, 1, &done, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(done, 0u);
    EXPECT_FALSE(ReadFile(bare, &byte, 1, &done, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    CloseHandle(bare);

    HANDLE reader = Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    CloseHandle(reader);
    EXPECT_FALSE(ReadFile(reader, &byte, 1, &done, nullptr));  // closed
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(FileTest, ReadsWritesAndSeeks) {
    // Opened through its drive form, as the library names files.
    std::string windows = ToWindowsPath((folder_ / "seek.dat").c_str());
    HANDLE file = Open(windows, kReadWrite, 0, CREATE_NEW);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD done = 0;
    ASSERT_TRUE(WriteFile(file, "0123456789", 10, &done, nullptr));
    EXPECT_EQ(done, 10u);

    EXPECT_EQ(SetFilePointer(file, -3, nullptr, FILE_END), 7u);
    char buffer[16] = {};
    ASSERT_TRUE(ReadFile(file, buffer, sizeof buffer, &done, nullptr));
    EXPECT_EQ(done, 3u);
    EXPECT_STREQ(buffer, "789");
    ASSERT_TRUE(ReadFile(file, buffer, 4, &done, nullptr));
    EXPECT_EQ(done, 0u);  // end of file: success with nothing read

    EXPECT_EQ(SetFilePointer(file, -11, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_NEGATIVE_SEEK);
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_CURRENT), 10u);
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, 3), INVALID_SET_FILE_POINTER);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);

    // A 64-bit move, and back by a negative high part.
    LONG high = 1;
    EXPECT_EQ(SetFilePointer(file, 5, &high, FILE_BEGIN), 5u);
    EXPECT_EQ(high, 1);
    high = -1;
    EXPECT_EQ(SetFilePointer(file, 0, &high, FILE_CURRENT), 5u);
    EXPECT_EQ(high, 0);

    // Writing past the end fills the gap with zeros; SetEndOfFile cuts.
    SetFilePointer(file, 20, nullptr, FILE_BEGIN);
    ASSERT_TRUE(WriteFile(file, "!", 1, &done, nullptr));
    DWORD sizeHigh = 9;
    EXPECT_EQ(GetFileSize(file, &sizeHigh), 21u);
    EXPECT_EQ(sizeHigh, 0u);
    SetFilePointer(file, 12, nullptr, FILE_BEGIN);
    ASSERT_TRUE(SetEndOfFile(file));
    EXPECT_EQ(GetFileSize(file, nullptr), 12u);
    // Asking the size leaves the pointer where it stood.
    SetFilePointer(file, 3, nullptr, FILE_BEGIN);
    EXPECT_EQ(GetFileSize(file, nullptr), 12u);
    char read = 0;
    ASSERT_TRUE(ReadFile(file, &read, 1, &done, nullptr));
    EXPECT_EQ(read, '3');
    EXPECT_TRUE(FlushFileBuffers(file));
    CloseHandle(file);
    EXPECT_EQ(Get(folder_ / "seek.dat"), std::string("0123456789\0\0", 12));
}

// The file pointer belongs to the handle: a mapping made of the file does not
// move it, and two threads reading through one handle take turns, each read
// going on where the other left off.
TEST_F(FileTest, FilePointerIsTheHandles) {
    HANDLE file = Open(folder_ / "pointer.dat", kReadWrite, 0, CREATE_NEW);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    std::vector<std::uint32_t> words(1000);
    for (std::uint32_t i = 0; i < 1000; ++i) {
        words[i] = i;
    }
    DWORD done = 0;
    ASSERT_TRUE(WriteFile(file, words.data(), 4000, &done, nullptr));
    EXPECT_EQ(SetFilePointer(file, 2, nullptr, FILE_BEGIN), 2u);
    HANDLE mapping = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
    ASSERT_NE(mapping, nullptr);
    CloseHandle(mapping);
    EXPECT_EQ(SetFilePointer(file, 0, nullptr, FILE_CURRENT), 2u);

    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    std::vector<std::uint32_t> seen[2];
    auto reader = [&](int who) {
        std::uint32_t word = 0;
        DWORD got = 0;
        while (ReadFile(file, &word, 4, &got, nullptr) && got == 4) {
            seen[who].push_back(word);
        }
    };
    std::thread other(reader, 1);
    reader(0);
    other.join();
    std::vector<std::uint32_t> all(seen[0]);
    all.insert(all.end(), seen[1].begin(), seen[1].end());
    std::sort(all.begin(), all.end());
    ASSERT_EQ(all.size(), 1000u);
    EXPECT_EQ(all, words);
    CloseHandle(file);
}

TEST_F(FileTest, FileTimesCountFrom1601) {
    HANDLE file = Open(folder_ / "t.dat", kReadWrite, 0, CREATE_NEW);
    FILETIME created = {}, written = {};
    ASSERT_TRUE(GetFileTime(file, &created, nullptr, &written));
    CloseHandle(file);
    auto unixSeconds = [](const FILETIME& time) {
        return static_cast<double>(((ULONGLONG{time.dwHighDateTime} << 32) | time.dwLowDateTime) /
                                   10000000) -
               11644473600.0;
    };
    auto now = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_NEAR(unixSeconds(written), std::chrono::duration<double>(now).count(), 60.0);
    EXPECT_LE(unixSeconds(created), unixSeconds(written));
}

TEST_F(FileTest, LockedRegionsKeepOtherHandlesOut) {
    std::string path = folder_ / "lock.dat";
    Put(path, std::string(64, 'x'));
    HANDLE first = Open(path, kReadWrite, kShareAll, OPEN_EXISTING);
    HANDLE second = Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    ASSERT_NE(second, INVALID_HANDLE_VALUE);
    ASSERT_TRUE(LockFile(first, 0, 0, 10, 0));

    EXPECT_FALSE(LockFile(second, 5, 0, 10, 0));
    EXPECT_EQ(GetLastError(), ERROR_LOCK_VIOLATION);
    EXPECT_FALSE(LockFile(first, 9, 0, 1, 0));  // a handle's regions don't overlap either
    EXPECT_EQ(GetLastError(), ERROR_LOCK_VIOLATION);
    EXPECT_FALSE(UnlockFile(first, 0, 0, 5, 0));
    EXPECT_FALSE(UnlockFile(second, 0, 0, 10, 0));
    ASSERT_TRUE(UnlockFile(first, 0, 0, 10, 0));
    EXPECT_TRUE(LockFile(second, 5, 0, 10, 0));

    // Closing a handle gives its regions back.
    CloseHandle(second);
    EXPECT_TRUE(LockFile(first, 0, 0, 20, 0));
    CloseHandle(first);
}

// Other handles neither read a locked region nor unlock what they did not lock.
TEST_F(FileTest, LockedRegionsRefuseOtherHandlesReads) {
    std::string path = folder_ / "lock.dat";
    Put(path, std::string(64, 'x'));
    HANDLE first = Open(path, kReadWrite, kShareAll, OPEN_EXISTING);
    HANDLE second = Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    ASSERT_NE(second, INVALID_HANDLE_VALUE);
    ASSERT_TRUE(LockFile(first, 0, 0, 10, 0));
    char buffer[8];
    DWORD done = 0;
    SetFilePointer(second, 6, nullptr, FILE_BEGIN);
    EXPECT_FALSE(ReadFile(second, buffer, 8, &done, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_LOCK_VIOLATION);
    SetFilePointer(second, 10, nullptr, FILE_BEGIN);
    EXPECT_TRUE(ReadFile(second, buffer, 8, &done, nullptr));
    EXPECT_TRUE(ReadFile(first, buffer, 8, &done, nullptr));  // the owner reads on

    EXPECT_FALSE(UnlockFile(first, 0, 0, 5, 0));
    EXPECT_EQ(GetLastError(), ERROR_NOT_LOCKED);
    EXPECT_FALSE(UnlockFile(second, 0, 0, 10, 0));
    EXPECT_EQ(GetLastError(), ERROR_NOT_LOCKED);
    CloseHandle(second);
    CloseHandle(first);
}

TEST_F(FileTest, WholeFileLocksLeaveShareModesWorking) {
    std::string path = folder_ / "all.dat";
    HANDLE first = Open(path, kReadWrite, FILE_SHARE_READ, CREATE_NEW);
    ASSERT_TRUE(LockFile(first, 0, 0, 0xFFFFFFFF, 0xFFFFFFFF));
    HANDLE reader = Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    EXPECT_NE(reader, INVALID_HANDLE_VALUE);
    EXPECT_EQ(OpenError(path, GENERIC_WRITE, kShareAll, OPEN_EXISTING), ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(LockFile(reader, 0x7FFFFFFF, 0x10, 1, 0));
    CloseHandle(reader);
    CloseHandle(first);
}

TEST_F(FileTest, DeleteAndMoveHonourOpensAndTargets) {
    std::string path = folder_ / "d.dat";
    std::string moved = folder_ / "m.dat";
    EXPECT_FALSE(DeleteFileA(path.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(DeleteFileA(folder_.str().c_str()));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(MoveFileA(path.c_str(), moved.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);

    Put(path, "data");
    HANDLE open = Open(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
    EXPECT_FALSE(DeleteFileA(path.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(MoveFileA(path.c_str(), moved.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    CloseHandle(open);

    Put(moved, "old");
    EXPECT_FALSE(MoveFileA(path.c_str(), moved.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    ASSERT_TRUE(DeleteFileA(moved.c_str()));

    open = Open(path, GENERIC_READ, kShareAll, OPEN_EXISTING);
    ASSERT_TRUE(MoveFileA(path.c_str(), moved.c_str()));
    EXPECT_EQ(Get(moved), "data");
    EXPECT_FALSE(std::filesystem::exists(path));
    ASSERT_TRUE(DeleteFileA(moved.c_str()));  // shared for deletion
    CloseHandle(open);
}

TEST_F(FileTest, DeleteOnCloseRemovesTheFile) {
    std::string path = folder_ / "tmp.dat";
    HANDLE file = CreateFileA(path.c_str(), kReadWrite, 0, nullptr, CREATE_NEW,
                              FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(std::filesystem::exists(path));
    CloseHandle(file);
    EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace nvk::os
