// Each thread keeps a few free blocks of its own in front of the storage's
// shared list: blocks it freed, whoever made them, go back to the list when
// it ends, and a storage may end before a thread that used it.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include "nvk/core/block_storage.h"
#include "nvk/core/process_singleton.h"
#include "support/start_gate.h"

namespace {

int PageCount(const FBlockStorage* storage) {
    int count = 0;
    for (const PageRecord* page = storage->FirstPage(); page != nullptr; page = page->Next) {
        ++count;
    }
    return count;
}

bool InPages(const FBlockStorage* storage, const ChaineBuffer* block) {
    for (const PageRecord* page = storage->FirstPage(); page != nullptr; page = page->Next) {
        const auto* begin = reinterpret_cast<const char*>(page->Blocks);
        const auto* at = reinterpret_cast<const char*>(block);
        if (at >= begin && at < begin + std::size_t{page->Stride} * page->BlockCount) {
            return true;
        }
    }
    return false;
}

void WaitFor(const std::atomic<int>& step, int value) {
    while (step.load() != value) {
        std::this_thread::yield();
    }
}

// A thread that runs the steps given to it one at a time, each to its end
// before Run returns: its cache goes on from one step to the next.
class Runner {
public:
    Runner() : m_Thread([this] { Loop(); }) {}
    ~Runner() {
        Run(nullptr);
        m_Thread.join();
    }
    Runner(const Runner&) = delete;
    Runner& operator=(const Runner&) = delete;

    void Run(std::function<void()> step) {
        std::unique_lock lock(m_Lock);
        m_Step = std::move(step);
        m_Pending = true;
        m_Changed.notify_all();
        m_Changed.wait(lock, [this] { return !m_Pending; });
    }

private:
    void Loop() {
        for (;;) {
            std::unique_lock lock(m_Lock);
            m_Changed.wait(lock, [this] { return m_Pending; });
            if (!m_Step) {
                m_Pending = false;
                m_Changed.notify_all();
                return;
            }
            m_Step();
            m_Pending = false;
            m_Changed.notify_all();
        }
    }

    std::mutex m_Lock;
    std::condition_variable m_Changed;
    std::function<void()> m_Step;
    bool m_Pending = false;
    std::thread m_Thread;
};

TEST(BlockStorageThreads, BlocksFreedOnAnEndedThreadAreHandedOutAgain) {
    FBlockStorage* storage = FBlockStorage::Create(64, 16);
    std::vector<ChaineBuffer*> blocks(100);
    for (auto& block : blocks) {
        block = storage->PoolAlloc(10);
    }
    const int pages = PageCount(storage);
    for (int round = 0; round < 20; ++round) {
        std::thread([&] {
            for (ChaineBuffer* block : blocks) {
                storage->PoolFree(block);
            }
        }).join();
        for (auto& block : blocks) {
            block = storage->PoolAlloc(10);
        }
        EXPECT_EQ(std::set<ChaineBuffer*>(blocks.begin(), blocks.end()).size(), blocks.size());
    }
    // Blocks kept by the ended threads would have brought new pages.
    EXPECT_EQ(PageCount(storage), pages);
    for (ChaineBuffer* block : blocks) {
        storage->PoolFree(block);
    }
    FBlockStorage::Destroy(storage);
}

TEST(BlockStorageThreads, AThreadOfHeapBlocksOnlyGetsItsOwnBack) {
    // The thread's cache serves no storage until the first block goes back,
    // which makes it serve this one; from then on the same heap block comes
    // and goes, and the thread's end gives it back to the heap. A block given
    // to the heap instead would go to the next allocation of its size.
    FBlockStorage* storage = FBlockStorage::Create(64, 16);
    std::thread([&] {
        ChaineBuffer* block = storage->PoolAlloc(200);
        for (int i = 0; i < 3; ++i) {
            storage->PoolFree(block);
            const std::unique_ptr<char[]> other(new char[256]);
            asm volatile("" : : "r"(other.get()) : "memory");  // kept, not elided
            ChaineBuffer* again = storage->PoolAlloc(180);
            EXPECT_EQ(again, block);
            block = again;
        }
        storage->PoolFree(block);
    }).join();
    FBlockStorage::Destroy(storage);
}

TEST(BlockStorageThreads, AStorageEndsBeforeTheThreadsThatUsedIt) {
    FBlockStorage* first = FBlockStorage::Create(64, 16);
    FBlockStorage* second = nullptr;
    std::atomic<int> step{0};
    bool fromSecond = false;
    // Both threads hold blocks of `first` in their caches when it ends; one
    // then ends, the other goes on with another storage, which may well
    // have `first`'s address.
    std::thread ending([&] {
        first->PoolFree(first->PoolAlloc(10));
        step.fetch_add(1);
        WaitFor(step, 3);
    });
    std::thread goingOn([&] {
        first->PoolFree(first->PoolAlloc(10));
        step.fetch_add(1);
        WaitFor(step, 3);
        for (int i = 0; i < 40; ++i) {
            ChaineBuffer* block = second->PoolAlloc(10);
            fromSecond = InPages(second, block);
            second->PoolFree(block);
            if (!fromSecond) {
                break;
            }
        }
    });
    WaitFor(step, 2);
    FBlockStorage::Destroy(first);
    second = FBlockStorage::Create(64, 16);
    step.store(3);
    ending.join();
    goingOn.join();
    EXPECT_TRUE(fromSecond);
    FBlockStorage::Destroy(second);
}

// Threads end while their storage ends: each either gives its blocks back
// before the storage is gone or finds its cache cut loose, never a storage
// half gone (its pages are given back to the system, so that a late write
// faults).
TEST(BlockStorageThreads, ThreadsEndWhileTheirStorageEnds) {
    constexpr int kThreads = 4;
    for (int round = 0; round < 100; ++round) {
        FBlockStorage* storage = FBlockStorage::Create(64, 16);
        nvk::test::StartGate ending(kThreads + 1);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&] {
                std::vector<ChaineBuffer*> blocks(40);
                for (auto& block : blocks) {
                    block = storage->PoolAlloc(10);
                }
                for (ChaineBuffer* block : blocks) {
                    storage->PoolFree(block);
                }
                ending.ArriveAndWait();
            });
        }
        ending.ArriveAndWait();
        // Later in each round, so that some rounds end the storage while a
        // thread is ending.
        const auto start = std::chrono::steady_clock::now();
        while (std::chrono::steady_clock::now() - start < std::chrono::microseconds(round)) {
        }
        FBlockStorage::Destroy(storage);
        for (auto& thread : threads) {
            thread.join();
        }
    }
}

// On Windows a thread ends under the loader's lock, which a thread holding
// the process lock may be waiting for (to find a resource, say): the end of
// a thread whose cache serves a storage must not wait for the process lock.
TEST(BlockStorageThreads, AThreadEndsWhileTheProcessLockIsHeld) {
    FBlockStorage* storage = FBlockStorage::Create(64, 16);
    std::thread user;
    std::future<void> joined;
    std::future_status status;
    {
        ProcessLock process;
        user = std::thread([&] { storage->PoolFree(storage->PoolAlloc(10)); });
        joined = std::async(std::launch::async, [&] { user.join(); });
        status = joined.wait_for(std::chrono::seconds(30));
    }
    joined.wait();
    EXPECT_EQ(status, std::future_status::ready);
    FBlockStorage::Destroy(storage);
}

// One thread's cache gives blocks back to the shared list and takes them in
// batches; another thread, whose cache serves another storage, gives back and
// takes single blocks at the head of the same list between those batches.
// Checked against the blocks handed out: none twice, each one's bytes left as
// its holder wrote them; and once both threads have ended, none missing.
TEST(BlockStorageThreads, BatchesAndSingleBlocksAreEachHandedOutOnce) {
    constexpr int kPerPage = 40;
    FBlockStorage* storage = FBlockStorage::Create(16, kPerPage);
    FBlockStorage* other = FBlockStorage::Create(16, kPerPage);
    std::map<ChaineBuffer*, std::uint32_t> live;  // block -> its stamp
    std::uint32_t stamps = 0;
    std::mt19937 random(11);
    const auto take = [&](std::size_t count) {
        for (; count > 0; --count) {
            ChaineBuffer* block = storage->PoolAlloc(16);
            ASSERT_TRUE(InPages(storage, block));
            ASSERT_TRUE(live.emplace(block, ++stamps).second) << "handed out twice";
            std::memcpy(block->Text(), &stamps, sizeof stamps);
        }
    };
    const auto giveBack = [&](std::size_t count) {
        for (; count > 0 && !live.empty(); --count) {
            auto at = std::next(live.begin(), static_cast<long>(random() % live.size()));
            std::uint32_t stamp = 0;
            std::memcpy(&stamp, at->first->Text(), sizeof stamp);
            ASSERT_EQ(stamp, at->second) << "written by another holder";
            storage->PoolFree(at->first);
            live.erase(at);
        }
    };
    {
        Runner batches;
        Runner singles;
        singles.Run([&] { other->PoolFree(other->PoolAlloc(8)); });
        for (int round = 0; round < 300 && !HasFailure(); ++round) {
            batches.Run([&] {
                take(random() % 150);
                giveBack(random() % (live.size() + 1));
            });
            singles.Run([&] {
                if (random() % 2 == 0) {
                    giveBack(random() % 4);
                } else {
                    take(random() % 40);
                }
            });
        }
        batches.Run([&] { giveBack(live.size()); });
    }
    // All but the last block of the pages come without a new page.
    const int pages = PageCount(storage);
    std::set<ChaineBuffer*> all;
    for (int i = 1; i < pages * kPerPage; ++i) {
        all.insert(storage->PoolAlloc(16));
    }
    EXPECT_EQ(PageCount(storage), pages);
    EXPECT_EQ(all.size(), std::size_t(pages * kPerPage - 1));
    for (ChaineBuffer* block : all) {
        storage->PoolFree(block);
    }
    FBlockStorage::Destroy(storage);
    FBlockStorage::Destroy(other);
}

}  // namespace
