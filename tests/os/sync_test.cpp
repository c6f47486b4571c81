#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "os/api/error.h"
#include "os/api/sync.h"

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
    HANDLE first = CreateMutexA(nullptr, FALSE, "nvk-test-mutex");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    HANDLE second = CreateMutexA(nullptr, FALSE, "nvk-test-mutex");
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
    EXPECT_EQ(OpenMutexA(0, FALSE, "nvk-test-mutex"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST(NamedSection, SharedBytesLiveWhileHandlesOrViewsDo) {
    HANDLE mapping = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE | SEC_COMMIT,
                                        0, 12, "nvk-test-section");
    ASSERT_NE(mapping, nullptr);
    auto* view = static_cast<unsigned char*>(MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, 12));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(std::memcmp(view, "\0\0\0\0\0\0\0\0\0\0\0\0", 12), 0);
    view[4] = 42;

    HANDLE again = CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 12,
                                      "nvk-test-section");
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    auto* second = static_cast<unsigned char*>(MapViewOfFile(again, FILE_MAP_WRITE, 0, 0, 12));
    EXPECT_EQ(second[4], 42);
    EXPECT_EQ(MapViewOfFile(again, FILE_MAP_WRITE, 0, 4, 12), nullptr);  // past the end

    EXPECT_TRUE(UnmapViewOfFile(second));
    EXPECT_FALSE(UnmapViewOfFile(second + 1));
    EXPECT_TRUE(CloseHandle(again));
    EXPECT_TRUE(CloseHandle(mapping));
    EXPECT_EQ(view[4], 42);  // the view keeps the bytes alive
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_EQ(OpenFileMappingA(FILE_MAP_WRITE, FALSE, "nvk-test-section"), nullptr);
}

TEST(Identity, ThreadsDifferProcessStays) {
    const DWORD main = GetCurrentThreadId();
    DWORD other = 0;
    std::thread([&] { other = GetCurrentThreadId(); }).join();
    EXPECT_NE(main, other);
    EXPECT_EQ(GetCurrentThreadId(), main);
    EXPECT_NE(GetCurrentProcessId(), 0u);
    const ULONGLONG before = GetTickCount64();
    Sleep(20);
    EXPECT_GE(GetTickCount64() - before, 19u);
}

}  // namespace
