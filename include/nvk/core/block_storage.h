// The process-wide pool of fixed-size blocks behind Chaine buffers, with the
// heap for buffers too large for a block. The low bit of a block's Capacity
// tells the two apart on release: even for a pool block, odd for a heap block.
#pragma once

#include <atomic>
#include <cstdint>

#include "nvk/core/chaine_buffer.h"
#include "nvk/core/spin_lock.h"

// The defaults the storage reads once, at its construction.
extern std::uint32_t g_BlockStorageBlockSize;      // 64
extern std::uint32_t g_BlockStorageBlocksPerPage;  // 512

struct PageRecord {
    ChaineBuffer* Blocks;  // BlockCount blocks side by side
    std::uint32_t BlockSize;
    std::uint32_t Stride;  // BlockSize + 12, rounded up to four bytes
    std::uint32_t BlockCount;
    PageRecord* Next;
};

class FBlockStorage;

// A thread's blocks at hand in front of a storage's shared list, so that
// taking and giving back a block takes no lock. Each module copy has one per
// thread; it holds at most kCacheBlocks blocks, and gives them back to the
// shared list when its thread ends. A storage that ends first cuts its caches
// loose, and their blocks go with its pages.
//
// It keeps heap blocks too, a few of each size class, in front of the heap:
// those belong to no storage, so they stay when a storage ends, and go back to
// the heap when the thread ends.
struct ThreadCache {
    static constexpr std::uint32_t kCacheBlocks = 64;
    // Heap blocks are made in classes of kHeapStep bytes, header included, so
    // that a block given back serves any later request of its class.
    static constexpr std::uint32_t kHeapStep = 64;
    static constexpr std::uint32_t kHeapClasses = 8;  // blocks of up to 512 bytes
    static constexpr std::uint32_t kHeapBlocks = 16;  // kept per class

    // Registered with the runtime as the cache starts to serve its thread, so
    // that the cache needs no guard of its own on every use.
    static void ThreadEnds(void* cache);

    // The storage served; null while none. Set under the owner's lock by the
    // cache's thread, which reads it lock-free; cleared by whichever comes
    // first, the thread's end or the storage's.
    std::atomic<FBlockStorage*> Owner{nullptr};
    ChaineBuffer* Head = nullptr;  // linked as the shared list is
    std::uint32_t Count = 0;
    bool Registered = false;  // ThreadEnds is to run at its thread's end
    bool Ended = false;       // ThreadEnds has run
    // The owner's list of caches.
    ThreadCache* Prev = nullptr;
    ThreadCache* Next = nullptr;
    // Heap blocks by class, linked through their first payload bytes.
    ChaineBuffer* HeapHead[kHeapClasses] = {};
    std::uint8_t HeapCount[kHeapClasses] = {};
};

// The pool has no bound of its own: it starts with one page, grows by one page
// of BlocksPerPage blocks whenever its free list runs out, for as long as
// VirtualAlloc grants a page (PoolAlloc then throws CMemoryException), and
// gives nothing back while it lives. So a process reserves no more address
// space than its strings take.
class FBlockStorage {
public:
    // A storage of its own memory; AfxThrowMemoryException when there is none.
    static FBlockStorage* Create(std::uint32_t blockSize, std::uint32_t blocksPerPage);
    // Gives everything back; blocks still in use are left dangling.
    static void Destroy(FBlockStorage* storage);

    // A block with at least `size` payload bytes; RefCount and Size are the
    // caller's to set.
    ChaineBuffer* PoolAlloc(std::uint32_t size);
    // Always a heap block, of Capacity size | 1.
    static ChaineBuffer* HeapAlloc(std::uint32_t size);
    // Takes back a block of either kind.
    void PoolFree(ChaineBuffer* block);

    std::uint32_t BlockSize() const { return m_BlockSize; }
    std::uint32_t BlocksPerPage() const { return m_BlocksPerPage; }
    const PageRecord* FirstPage() const { return m_FirstPage; }

private:
    friend struct ThreadCache;
    friend ChaineBuffer* nvk::AllocateBuffer(std::uint32_t, std::uint32_t);
    friend void nvk::FreeBuffer(ChaineBuffer*);

    FBlockStorage() = default;
    void AddPage();
    PageRecord* BuildPage(ChaineBuffer* last);
    ChaineBuffer* TakeShared(ChaineBuffer* last);
    // A pop from, or a push to, the thread's cache; null or false when the
    // block can't be had or kept so.
    ChaineBuffer* FromCache(std::uint32_t size);
    bool ToCache(ChaineBuffer* block);
    // Everything else.
    ChaineBuffer* PoolAllocSlow(std::uint32_t size);
    void PoolFreeSlow(ChaineBuffer* block);

    // The calling thread's cache, when it serves this storage or can start to.
    ThreadCache* CacheOf();
    // Fills an empty cache from the shared list.
    void Refill(ThreadCache& cache);
    // Moves `count` blocks from the cache to the shared list.
    void Drain(ThreadCache& cache, std::uint32_t count);
    // Under the lock: takes out of the list a cache whose thread ends, or
    // that this storage lets go when it ends.
    void Forget(ThreadCache& cache);
    // The chains that Drain put on the shared list; see m_ChainEnds.
    void ReserveChains(std::uint64_t blocks);
    ChaineBuffer* NewestChain() const;

    nvk::SpinLock m_Lock;
    std::uint32_t m_BlockSize = 0;
    std::uint32_t m_BlocksPerPage = 0;
    PageRecord* m_FirstPage = nullptr;
    ChaineBuffer* m_FreeHead = nullptr;
    ThreadCache* m_Caches = nullptr;
    // The last blocks of the chains of a cache's batch that Drain put on the
    // shared list, the newest ending the chain that starts at m_FreeHead and
    // each older one the chain after the newer's. Refill takes such a chain
    // whole: walking it would wait on every block, since blocks given back
    // lie anywhere in the pages. Any other change at the head of the list
    // forgets them all. There is room for as many chains as the pages hold,
    // made as pages are added, so that giving blocks back never allocates.
    ChaineBuffer** m_ChainEnds = nullptr;
    std::uint64_t m_ChainRoom = 0;
    std::uint64_t m_ChainCount = 0;
};

// The storage of the process ("BlockStorage V2"), made by the first module
// that asks and destroyed by the last holder.
FBlockStorage* BlockStorage();
