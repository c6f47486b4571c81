#include "nvk/afx/sync_objects.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

TEST(CSingleLockTest, RecursionAndScope) {
    CCriticalSection section;
    {
        CSingleLock outer(&section, true);
        EXPECT_TRUE(outer.IsLocked());
        // The owner takes the section again without blocking.
        CSingleLock inner(&section);
        EXPECT_FALSE(inner.IsLocked());
        EXPECT_TRUE(inner.Lock());
        EXPECT_TRUE(inner.Lock());  // already held: no second count
        EXPECT_TRUE(inner.Unlock());
        EXPECT_FALSE(inner.IsLocked());
        EXPECT_TRUE(inner.Unlock());
    }
    // Both scopes gave their counts back: another thread can enter.
    std::atomic<bool> entered{false};
    std::thread other([&] {
        CSingleLock lock(&section, true);
        entered = lock.IsLocked();
    });
    other.join();
    EXPECT_TRUE(entered);
}

TEST(CSingleLockTest, ExcludesOtherThreads) {
    CCriticalSection section;
    long counter = 0;
    auto work = [&] {
        for (int i = 0; i < 20000; ++i) {
            CSingleLock lock(&section, true);
            CSingleLock again(&section, true);
            ++counter;
        }
    };
    std::thread a(work);
    std::thread b(work);
    a.join();
    b.join();
    EXPECT_EQ(counter, 40000);
}

}  // namespace
