#include "nvk/core/block_storage.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class BlockStorageTest : public ::testing::Test {
protected:
    void TearDown() override {
        if (storage != nullptr) {
            FBlockStorage::Destroy(storage);
        }
    }
    FBlockStorage* Make(std::uint32_t blockSize = 64, std::uint32_t perPage = 512) {
        storage = FBlockStorage::Create(blockSize, perPage);
        return storage;
    }
    FBlockStorage* storage = nullptr;
};

TEST_F(BlockStorageTest, RequestsUpToTheBlockSizeUseThePoolLargerOnesTheHeap) {
    FBlockStorage* s = Make();
    ChaineBuffer* pool = s->PoolAlloc(64);
    ChaineBuffer* heap = s->PoolAlloc(65);
    ChaineBuffer* heapEven = s->PoolAlloc(66);
    EXPECT_EQ(pool->Capacity, 64u);
    EXPECT_EQ(heap->Capacity, 65u);
    EXPECT_EQ(heapEven->Capacity, 67u);
    EXPECT_FALSE(pool->IsHeapBlock());
    EXPECT_TRUE(heapEven->IsHeapBlock());
    ChaineBuffer* heapOnly = s->HeapAlloc(10);
    EXPECT_EQ(heapOnly->Capacity, 11u);
    for (ChaineBuffer* block : {pool, heap, heapEven, heapOnly}) {
        s->PoolFree(block);
    }
}

TEST_F(BlockStorageTest, HeapBlocksGivenBackServeLargerRequestsOfTheirClass) {
    FBlockStorage* s = Make();
    // Made, kept and handed out again in every order across the kept classes;
    // each block takes a fill of its whole capacity, which the address
    // sanitizer checks against what was allocated.
    std::vector<ChaineBuffer*> blocks;
    for (int round = 0; round < 3; ++round) {
        for (std::uint32_t size = 65; size < 700; size += 37) {
            ChaineBuffer* block = s->PoolAlloc(size);
            ASSERT_EQ(block->Capacity, size | 1u);
            std::fill(block->Text(), block->Text() + block->Capacity, 'h');
            blocks.push_back(block);
        }
        for (std::size_t i = round; i < blocks.size(); i += 2) {
            s->PoolFree(blocks[i]);
            blocks[i] = s->HeapAlloc(static_cast<std::uint32_t>(i * 13 % 600));
            std::fill(blocks[i]->Text(), blocks[i]->Text() + blocks[i]->Capacity, 'k');
        }
    }
    for (ChaineBuffer* block : blocks) {
        s->PoolFree(block);
    }
}

TEST_F(BlockStorageTest, LastReleasedBlockIsHandedOutFirst) {
    FBlockStorage* s = Make();
    ChaineBuffer* a = s->PoolAlloc(10);
    ChaineBuffer* b = s->PoolAlloc(10);
    EXPECT_EQ(reinterpret_cast<char*>(b) - reinterpret_cast<char*>(a), 76);
    s->PoolFree(a);
    EXPECT_EQ(s->PoolAlloc(20), a);
    s->PoolFree(b);
    s->PoolFree(a);
    EXPECT_EQ(s->PoolAlloc(1), a);
    EXPECT_EQ(s->PoolAlloc(1), b);
}

TEST_F(BlockStorageTest, TheLastBlockOfAPageBringsTheNextPage) {
    FBlockStorage* s = Make();
    std::vector<ChaineBuffer*> blocks;
    for (int i = 0; i < 511; ++i) {
        blocks.push_back(s->PoolAlloc(8));
    }
    EXPECT_EQ(s->FirstPage()->Next, nullptr);
    blocks.push_back(s->PoolAlloc(8));
    ASSERT_NE(s->FirstPage()->Next, nullptr);
    EXPECT_EQ(s->FirstPage()->Next->BlockCount, 512u);
    EXPECT_EQ(s->FirstPage()->Stride, 76u);
    // Every block is distinct and writable up to its capacity.
    for (ChaineBuffer* block : blocks) {
        EXPECT_EQ(block->Capacity, 64u);
        std::fill(block->Text(), block->Text() + 64, 'x');
    }
    ChaineBuffer* next = s->PoolAlloc(8);
    EXPECT_EQ(next, s->FirstPage()->Next->Blocks);
}

TEST_F(BlockStorageTest, BlockSizesStayEvenAndHoldALink) {
    EXPECT_EQ(Make(3, 4)->BlockSize(), 4u);
    FBlockStorage::Destroy(storage);
    EXPECT_EQ(Make(65, 4)->BlockSize(), 66u);
    EXPECT_EQ(storage->FirstPage()->Stride, 80u);  // headers stay aligned
    // Small pages grow one after the other.
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(storage->PoolAlloc(66)->Capacity, 66u);
    }
}

}  // namespace
