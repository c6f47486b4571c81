#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "os/api/error.h"
#include "os/api/sync.h"
#include "os_test_support.h"

namespace {

using namespace nvk::os;

TEST(Interlocked, CountsFromManyThreads) {
    volatile LONG count = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10000; ++i) {
                InterlockedIncrement(&count);
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, 40000);
    EXPECT_EQ(InterlockedDecrement(&count), 39999);
    EXPECT_EQ(InterlockedCompareExchange(&count, 5, 1), 39999);  // no match: unchanged
    EXPECT_EQ(InterlockedCompareExchange(&count, 5, 39999), 39999);
    EXPECT_EQ(InterlockedExchange(&count, 7), 5);
    EXPECT_EQ(InterlockedExchangeAdd(&count, 3), 7);
    EXPECT_EQ(count, 10);
}

TEST(CriticalSection, IsRecursiveAndExcludesOtherThreads) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    EnterCriticalSection(&section);
    std::atomic<bool> entered{false};
    std::thread other([&] { entered = TryEnterCriticalSection(&section) != FALSE; });
    other.join();
    EXPECT_FALSE(entered);
    LeaveCriticalSection(&section);
    LeaveCriticalSection(&section);
    std::thread again([&] {
        entered = TryEnterCriticalSection(&section) != FALSE;
        if (entered) {
            LeaveCriticalSection(&section);
        }
    });
    again.join();
    EXPECT_TRUE(entered);
    DeleteCriticalSection(&section);
}

TEST(NamedMutex, OneObjectPerNameRecursiveForItsOwner) {
    HANDLE first = CreateMutexA(nullptr, FALSE, test::ObjectName("nvk-test-mutex"));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    HANDLE second = CreateMutexA(nullptr, FALSE, test::ObjectName("nvk-test-mutex"));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_NE(first, second);

    EXPECT_EQ(WaitForSingleObject(first, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(second, 0), WAIT_OBJECT_0);  // same owner: recursive
    DWORD otherResult = 0;
    std::thread other([&] { otherResult = WaitForSingleObject(second, 20); });
    other.join();
    EXPECT_EQ(otherResult, WAIT_TIMEOUT);
    std::thread stranger([&] { EXPECT_FALSE(ReleaseMutex(first)); });
    stranger.join();
    EXPECT_TRUE(ReleaseMutex(first));
    EXPECT_TRUE(ReleaseMutex(second));
    EXPECT_FALSE(ReleaseMutex(first));
    EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);

    EXPECT_TRUE(CloseHandle(first));
    EXPECT_TRUE(CloseHandle(second));
    EXPECT_FALSE(CloseHandle(second));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    // The last handle took the object with it.
    EXPECT_EQ(OpenMutexA(SYNCHRONIZE, FALSE, test::ObjectName("nvk-test-mutex")), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST(NamedMutex, NamespaceNamesAndAccessRights) {
    HANDLE mutex = CreateMutexA(nullptr, FALSE, test::ObjectName("nvk-test-names"));
    ASSERT_NE(mutex, nullptr);
    HANDLE local = CreateMutexA(nullptr, FALSE, test::ObjectName("Local\\nvk-test-names"));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);  // "Local\" is the default namespace
    EXPECT_EQ(CreateMutexA(nullptr, FALSE, "nvk\\test"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    // Mutexes and mappings share one table of names.
    EXPECT_EQ(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 16,
                                 test::ObjectName("nvk-test-names")),
              nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(OpenFileMappingA(FILE_MAP_READ, FALSE, test::ObjectName("nvk-test-names")), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);

    EXPECT_EQ(OpenMutexA(SYNCHRONIZE, FALSE, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_FALSE(ReleaseMutex(nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    for (HANDLE handle : {mutex, local}) {
        EXPECT_TRUE(CloseHandle(handle));
    }
}

// Waiting takes SYNCHRONIZE, releasing MUTEX_MODIFY_STATE, and a handle
// without any right is not given.
TEST(NamedMutex, HandlesDoOnlyWhatTheirRightsAllow) {
    HANDLE mutex = CreateMutexA(nullptr, FALSE, test::ObjectName("nvk-test-rights"));
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(OpenMutexA(0, FALSE, test::ObjectName("nvk-test-rights")), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    HANDLE waitOnly = OpenMutexA(SYNCHRONIZE, FALSE, test::ObjectName("nvk-test-rights"));
    ASSERT_NE(waitOnly, nullptr);
    EXPECT_EQ(WaitForSingleObject(waitOnly, 0), WAIT_OBJECT_0);
    EXPECT_FALSE(ReleaseMutex(waitOnly));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    HANDLE releaseOnly = OpenMutexA(MUTEX_MODIFY_STATE, FALSE, test::ObjectName("nvk-test-rights"));
    EXPECT_EQ(WaitForSingleObject(releaseOnly, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(ReleaseMutex(releaseOnly));
    for (HANDLE handle : {mutex, waitOnly, releaseOnly}) {
        EXPECT_TRUE(CloseHandle(handle));
    }
}

TEST(AbandonedMutex, ThreadThatEndsOwningIt) {
    for (const char* name :
         {test::ObjectName("nvk-test-abandoned"), static_cast<const char*>(nullptr)}) {
        HANDLE mutex = CreateMutexA(nullptr, FALSE, name);
        ASSERT_NE(mutex, nullptr);
        std::thread([&] { EXPECT_EQ(WaitForSingleObject(mutex, 5000), WAIT_OBJECT_0); }).join();
        ASSERT_EQ(WaitForSingleObject(mutex, 5000), WAIT_ABANDONED);
        // The next waiter owns it, once, and the mutex works as before.
        DWORD other = 0;
        std::thread([&] { other = WaitForSingleObject(mutex, 0); }).join();
        EXPECT_EQ(other, WAIT_TIMEOUT);
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_FALSE(ReleaseMutex(mutex));
        EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_TRUE(CloseHandle(mutex));
    }
}

// A second process: what it takes, this one waits for, and what it ends
// owning comes back abandoned.
class MutexHelper {
public:
    MutexHelper(const std::string& name, bool abandon)
        : ready_(folder_ / "ready"), release_(abandon ? "-" : folder_ / "release") {
        process_ = test::StartHelper("mutex " + name + " " + ready_ + " " + release_);
        const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!std::filesystem::exists(ready_) && std::chrono::steady_clock::now() < giveUp) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    ~MutexHelper() { Finish(); }
    MutexHelper(const MutexHelper&) = delete;
    MutexHelper& operator=(const MutexHelper&) = delete;

    bool holding() const { return std::filesystem::exists(ready_); }
    void Release() { std::ofstream(release_).put('1'); }
    DWORD Finish() {
        if (release_ != "-") {
            Release();
        }
        return process_.hProcess != nullptr ? test::FinishProcess(process_) : 0;
    }

private:
    test::TempFolder folder_;
    std::string ready_;
    std::string release_;
    PROCESS_INFORMATION process_ = {};
};

TEST(NamedMutex, SharedWithAnotherProcess) {
    HANDLE mutex = CreateMutexA(nullptr, FALSE, test::ObjectName("nvk-test-shared"));
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(
        test::RunHelper(std::string("mutexcreate ") + test::ObjectName("Local\\nvk-test-shared")),
        ERROR_ALREADY_EXISTS);
    MutexHelper helper(test::ObjectName("nvk-test-shared"), false);
    ASSERT_TRUE(helper.holding());
    EXPECT_EQ(WaitForSingleObject(mutex, 50), WAIT_TIMEOUT);
    helper.Release();
    EXPECT_EQ(WaitForSingleObject(mutex, 10000), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(helper.Finish(), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(mutex));
}

TEST(NamedMutex, AnotherUserHasNamesOfItsOwn) {
    HANDLE mutex = CreateMutexA(nullptr, FALSE, test::ObjectName("nvk-test-user"));
    ASSERT_NE(mutex, nullptr);
    const DWORD asNobody =
        test::RunHelper(std::string("asuser 65534 ") + test::ObjectName("nvk-test-user"));
    if (asNobody != 254) {
        EXPECT_EQ(asNobody, ERROR_FILE_NOT_FOUND);
    }
    EXPECT_TRUE(CloseHandle(mutex));
}

TEST(AbandonedMutex, ProcessThatEndsOwningIt) {
    HANDLE mutex = CreateMutexA(nullptr, FALSE, test::ObjectName("nvk-test-abandoned-process"));
    ASSERT_NE(mutex, nullptr);
    MutexHelper helper(test::ObjectName("nvk-test-abandoned-process"), true);
    ASSERT_TRUE(helper.holding());
    EXPECT_EQ(WaitForSingleObject(mutex, 10000), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(helper.Finish(), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(mutex));
}

TEST(Identity, ThreadsDifferProcessStays) {
    const DWORD main = GetCurrentThreadId();
    DWORD other = 0;
    std::thread([&] { other = GetCurrentThreadId(); }).join();
    EXPECT_NE(main, other);
    EXPECT_EQ(GetCurrentThreadId(), main);
    EXPECT_NE(GetCurrentProcessId(), 0u);
    // The tick count moves by the system timer's steps, of up to 16 ms.
    const ULONGLONG before = GetTickCount64();
    Sleep(50);
    EXPECT_GE(GetTickCount64() - before, 50u - 16u);
}

}  // namespace
