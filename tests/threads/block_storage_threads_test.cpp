// Each thread keeps a few free blocks of its own in front of the storage's
// shared list: blocks it freed, whoever made them, go back to the list when
// it ends, and a storage may end before a thread that used it.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "nvk/core/block_storage.h"

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

}  // namespace
