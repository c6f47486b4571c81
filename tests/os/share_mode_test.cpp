#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/process.h"
#include "os/api/sync.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

struct Open {
    DWORD access;
    DWORD share;
};

// Every access and share combination an open can make, without DELETE.
std::vector<Open> AllOpens() {
    std::vector<Open> opens;
    for (DWORD access : {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE}) {
        for (DWORD share = 0; share <= (FILE_SHARE_READ | FILE_SHARE_WRITE); ++share) {
            opens.push_back({access, share});
        }
    }
    return opens;
}

// Windows' rule: each open must share every access the other one holds.
bool Compatible(const Open& a, const Open& b) {
    auto shares = [](const Open& holder, const Open& other) {
        return ((other.access & GENERIC_READ) == 0 || (holder.share & FILE_SHARE_READ) != 0) &&
               ((other.access & GENERIC_WRITE) == 0 || (holder.share & FILE_SHARE_WRITE) != 0);
    };
    return shares(a, b) && shares(b, a);
}

class ShareModeTest : public ::testing::Test {
protected:
    void SetUp() override { std::ofstream(path_) << "shared"; }
    HANDLE OpenFile(const Open& open, DWORD disposition = OPEN_EXISTING) {
        return CreateFileA(path_.c_str(), open.access, open.share, nullptr, disposition,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    std::string HelperOpen(const Open& open) {
        return path_ + " " + std::to_string(open.access) + " " + std::to_string(open.share) + " " +
               std::to_string(OPEN_EXISTING);
    }
    test::TempFolder folder_;
    std::string path_ = folder_ / "shared.dat";
};

// Holds each open in turn, and makes each other one in this process or in
// another, expecting success or a sharing violation by Windows' rule.
TEST_F(ShareModeTest, MatrixWithinOneProcessAndAcrossTwo) {
    auto inProcess = [this](const Open& second) -> DWORD {
        HANDLE other = OpenFile(second);
        DWORD code = other == INVALID_HANDLE_VALUE ? GetLastError() : 0;
        CloseHandle(other);
        return code;
    };
    auto inHelper = [this](const Open& second) {
        return test::RunHelper("open " + HelperOpen(second));
    };
    for (const Open& first : AllOpens()) {
        HANDLE held = OpenFile(first);
        ASSERT_NE(held, INVALID_HANDLE_VALUE);
        for (const Open& second : AllOpens()) {
            DWORD expected = Compatible(first, second) ? 0 : ERROR_SHARING_VIOLATION;
            EXPECT_EQ(inProcess(second), expected) << first.access << "/" << first.share << " then "
                                                   << second.access << "/" << second.share;
            EXPECT_EQ(inHelper(second), expected)
                << first.access << "/" << first.share << " then another process's " << second.access
                << "/" << second.share;
        }
        CloseHandle(held);
    }
}

TEST_F(ShareModeTest, AnotherProcessHoldsUntilItEnds) {
    Open exclusive = {GENERIC_READ | GENERIC_WRITE, 0};
    Open reader = {GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE};
    {
        test::HeldByHelper helper(folder_, HelperOpen(exclusive));
        ASSERT_TRUE(helper.holding());
        EXPECT_EQ(OpenFile(reader), INVALID_HANDLE_VALUE);
        EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
        EXPECT_FALSE(DeleteFileA(path_.c_str()));
        EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
        // A process that dies leaves nothing behind.
        ASSERT_TRUE(TerminateProcess(helper.process(), 1));
        HANDLE after = OpenFile(exclusive);
        EXPECT_NE(after, INVALID_HANDLE_VALUE);
        CloseHandle(after);
    }
    HANDLE after = OpenFile(exclusive);
    EXPECT_NE(after, INVALID_HANDLE_VALUE);
    CloseHandle(after);
}

TEST_F(ShareModeTest, LocksHoldAcrossProcesses) {
    Open shared = {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE};
    HANDLE mine = OpenFile(shared);
    ASSERT_TRUE(LockFile(mine, 0, 0, 10, 0));
    EXPECT_EQ(test::RunHelper("open " + HelperOpen(shared) + " lock 9 1"), ERROR_LOCK_VIOLATION);
    EXPECT_EQ(test::RunHelper("open " + HelperOpen(shared) + " lock 10 5"), 0u);
    UnlockFile(mine, 0, 0, 10, 0);
    {
        test::HeldByHelper helper(folder_, HelperOpen(shared) + " lock 0 10");
        ASSERT_TRUE(helper.holding());
        EXPECT_FALSE(LockFile(mine, 0, 0, 1, 0));
        EXPECT_EQ(GetLastError(), ERROR_LOCK_VIOLATION);
    }
    EXPECT_TRUE(LockFile(mine, 0, 0, 1, 0));
    CloseHandle(mine);
}

TEST_F(ShareModeTest, ALockedRegionIsUnreadableToOtherProcesses) {
    Open shared = {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE};
    HANDLE mine = OpenFile(shared);
    ASSERT_TRUE(LockFile(mine, 0, 0, 10, 0));
    EXPECT_EQ(test::RunHelper("open " + HelperOpen(shared) + " read 4 2"), ERROR_LOCK_VIOLATION);
    EXPECT_EQ(test::RunHelper("open " + HelperOpen(shared) + " read 10 2"), 0u);
    CloseHandle(mine);
}

TEST_F(ShareModeTest, DeleteAccessAndSharing) {
    HANDLE reader = OpenFile({GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE});
    EXPECT_EQ(OpenFile({DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE}),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    CloseHandle(reader);
    HANDLE deleter = OpenFile({DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE});
    ASSERT_NE(deleter, INVALID_HANDLE_VALUE);
    EXPECT_EQ(OpenFile({GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE}), INVALID_HANDLE_VALUE);
    CloseHandle(deleter);
}

TEST_F(ShareModeTest, ConcurrentExclusiveOpensAdmitOne) {
    constexpr int kRounds = 200;
    for (int round = 0; round < kRounds; ++round) {
        std::atomic<int> opened{0};
        std::vector<HANDLE> handles(4, INVALID_HANDLE_VALUE);
        std::vector<std::thread> threads;
        for (HANDLE& handle : handles) {
            threads.emplace_back([&] {
                handle = OpenFile({GENERIC_READ | GENERIC_WRITE, 0});
                if (handle != INVALID_HANDLE_VALUE) {
                    ++opened;
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        ASSERT_EQ(opened.load(), 1) << "round " << round;
        for (HANDLE handle : handles) {
            if (handle != INVALID_HANDLE_VALUE) {
                CloseHandle(handle);
            }
        }
    }
}

}  // namespace
}  // namespace nvk::os
