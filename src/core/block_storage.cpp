#include "nvk/core/block_storage.h"

#include <cxxabi.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include "nvk/afx/exceptions.h"
#include "nvk/core/process_singleton.h"
#include "os/api/memory.h"
#include "os/api/module.h"
#include "os/api/sync.h"

// This module's own handle, by which the runtime knows whose code a thread's
// end calls.
extern "C" __attribute__((visibility("hidden"))) void* __dso_handle;

std::uint32_t g_BlockStorageBlockSize = 64;
std::uint32_t g_BlockStorageBlocksPerPage = 512;

namespace {

using namespace nvk::os;

constexpr std::uint32_t kHeader = sizeof(ChaineBuffer);
constexpr std::uint32_t kHeapClasses = ThreadCache::kHeapClasses;
// Blocks moved between a thread's cache and the shared list at once: one lock
// for this many allocations.
constexpr std::uint32_t kBatch = ThreadCache::kCacheBlocks / 2;

#ifdef _WIN32
// Thread-local objects here are emulated, and the runtime may free a thread's
// slots before the ends registered for it run: a cache in a slot would be
// gone when its end gives its blocks back. So a thread's cache is made on the
// heap as it first serves a storage, and its slot only points to it: first to
// the idle cache, which serves nothing, and once the cache has ended to the
// ended one, which takes nothing. Neither is ever written.
constinit ThreadCache g_IdleCache;
constinit ThreadCache g_EndedCache{.Ended = true};
constinit thread_local ThreadCache* t_Cache = &g_IdleCache;

ThreadCache& LocalCache() {
    return *t_Cache;
}
#else
// Trivially destructible, so that using it costs no check: its end is
// registered by hand, once, when it first serves a storage.
constinit thread_local ThreadCache t_Cache;

ThreadCache& LocalCache() {
    return t_Cache;
}
#endif

// Set before the module's static objects go. A cache that starts to serve
// then would register an end to call after the module's code is gone: from
// here on, threads whose cache isn't already in use take the shared list.
std::atomic<bool> g_ModuleEnding{false};
__attribute__((destructor)) void MarkModuleEnding() {
    g_ModuleEnding.store(true, std::memory_order_relaxed);
}

// The thread's cache, its end registered; null while its thread or module is
// ending.
ThreadCache* RegisteredCache() {
    ThreadCache* cache = &LocalCache();
    if (g_ModuleEnding.load(std::memory_order_relaxed) || cache->Ended) {
        return nullptr;
    }
    if (cache->Registered) {
        return cache;
    }
#ifdef _WIN32
    // The runtime keeps a module loaded while an end registered by its code
    // is pending, and lets it go from within the thread's end, under the
    // loader's lock: the module's unloading then waits on that lock and the
    // thread never ends. So the module whose code serves a thread's cache
    // stays loaded until the process ends.
    std::unique_ptr<ThreadCache> own(new (std::nothrow) ThreadCache);
    if (own == nullptr || !PinModule(&__dso_handle)) {
        return nullptr;
    }
    cache = own.get();
#endif
    // While the end is pending the runtime keeps this module loaded, so the
    // cache never outlives its code.
    if (__cxxabiv1::__cxa_thread_atexit(ThreadCache::ThreadEnds, cache, &__dso_handle) != 0) {
        return nullptr;
    }
    cache->Registered = true;
#ifdef _WIN32
    t_Cache = own.release();
#endif
    return cache;
}

void* Commit(void* address, std::uint64_t size, DWORD type) {
    void* memory = VirtualAlloc(address, size, type, PAGE_READWRITE);
    if (memory == nullptr) {
        AfxThrowMemoryException();
    }
    return memory;
}

void Release(void* memory) {
    VirtualFree(memory, 0, MEM_RELEASE);
}

// A free block's link to the next free block is a whole pointer: its low word
// in the header's Size word, which nothing reads while the block is free, and
// its high word in the first four payload bytes, which every block has. So
// pages may lie anywhere, and each is taken from the system as it is needed.
ChaineBuffer* NextOf(const ChaineBuffer* block) {
    std::uint32_t high;
    std::memcpy(&high, block->Text(), sizeof high);
    const std::uint64_t link = (std::uint64_t{high} << 32) | block->Size;
    return reinterpret_cast<ChaineBuffer*>(static_cast<std::uintptr_t>(link));
}

void SetNext(ChaineBuffer* block, ChaineBuffer* next) {
    const std::uint64_t link = reinterpret_cast<std::uintptr_t>(next);
    const auto high = static_cast<std::uint32_t>(link >> 32);
    block->Size = static_cast<std::uint32_t>(link);
    std::memcpy(block->Text(), &high, sizeof high);
}

// A kept heap block links to the next of its class through its first payload
// bytes, of which every class has more than a pointer's worth.
ChaineBuffer* HeapNextOf(const ChaineBuffer* block) {
    ChaineBuffer* next;
    std::memcpy(&next, block->Text(), sizeof next);
    return next;
}

void SetHeapNext(ChaineBuffer* block, ChaineBuffer* next) {
    std::memcpy(block->Text(), &next, sizeof next);
}

// The class of a heap block of `capacity` payload bytes: its bytes, header
// included, rounded up to kHeapStep, less one step. kHeapClasses and above are
// made and given back one by one.
std::uint32_t HeapClass(std::uint32_t capacity) {
    return (capacity + kHeader - 1) / ThreadCache::kHeapStep;
}

// Heap blocks are placed so that their text starts on a 32-byte boundary:
// the vector loads of the comparisons and copies over long texts cost least
// there.
constexpr std::size_t kTextAlignment = 32;
constexpr std::size_t kHeapLead = kTextAlignment - kHeader;

ChaineBuffer* NewHeapBlock(std::size_t bytes) {
    auto* raw =
        static_cast<char*>(::operator new (bytes + kHeapLead, std::align_val_t{kTextAlignment}));
    return reinterpret_cast<ChaineBuffer*>(raw + kHeapLead);
}

void DeleteHeapBlock(ChaineBuffer* block) {
    ::operator delete (reinterpret_cast<char*>(block) - kHeapLead,
                       std::align_val_t{kTextAlignment});
}

// A kept heap block of `capacity`'s class, null when there is none.
[[gnu::always_inline]] inline ChaineBuffer* TakeHeapBlock(ThreadCache& cache,
                                                          std::uint32_t capacity) {
    const std::uint32_t heapClass = HeapClass(capacity);
    if (heapClass >= kHeapClasses || cache.HeapHead[heapClass] == nullptr) {
        return nullptr;
    }
    ChaineBuffer* block = cache.HeapHead[heapClass];
    cache.HeapHead[heapClass] = HeapNextOf(block);
    --cache.HeapCount[heapClass];
    block->Capacity = capacity;
    return block;
}

// Keeps a heap block of any thread or module in `cache`, when its class has
// room: every copy of the frame makes them the size of their class. Only a
// cache whose end is registered and still to come may keep blocks.
[[gnu::always_inline]] inline bool KeepHeapBlock(ThreadCache& cache, ChaineBuffer* block) {
    const std::uint32_t heapClass = HeapClass(block->Capacity);
    if (heapClass >= kHeapClasses || cache.HeapCount[heapClass] >= ThreadCache::kHeapBlocks) {
        return false;
    }
    SetHeapNext(block, cache.HeapHead[heapClass]);
    cache.HeapHead[heapClass] = block;
    ++cache.HeapCount[heapClass];
    return true;
}

void FreePages(PageRecord* page) {
    if (page == nullptr) {
        return;
    }
    FreePages(page->Next);  // the tail first
    Release(page->Blocks);
    Release(page);
}

struct StorageKind {
    using Object = FBlockStorage;
    static constexpr const char* Key = "BlockStorage V2";
    static Object* Make() {
        return FBlockStorage::Create(g_BlockStorageBlockSize, g_BlockStorageBlocksPerPage);
    }
    static void Destroy(Object* storage) { FBlockStorage::Destroy(storage); }
};

}  // namespace

FBlockStorage* BlockStorage() {
    return nvk::ProcessSingleton<StorageKind>::Get();
}

FBlockStorage* FBlockStorage::Create(std::uint32_t blockSize, std::uint32_t blocksPerPage) {
    void* memory = Commit(nullptr, sizeof(FBlockStorage), MEM_COMMIT | MEM_RESERVE);
    auto* storage = new (memory) FBlockStorage;
    try {
        // A block holds at least its free-list link, and its size stays even.
        storage->m_BlockSize = blockSize < 4 ? 4 : blockSize + (blockSize & 1u);
        storage->m_BlocksPerPage = blocksPerPage < 1 ? 1 : blocksPerPage;
        storage->m_FirstPage = storage->BuildPage(nullptr);
        storage->m_FreeHead = storage->m_FirstPage->Blocks;
        storage->ReserveChains(storage->m_BlocksPerPage);
    } catch (...) {
        Destroy(storage);
        throw;
    }
    return storage;
}

void FBlockStorage::Destroy(FBlockStorage* storage) {
    // Every cache is cut loose, so that a thread that ends later finds no
    // storage to give its blocks to. A cache whose thread is ending has taken
    // its owner already: it gives its blocks back and leaves the list under
    // the lock, and the storage waits for it to be gone.
    for (;;) {
        {
            std::lock_guard guard(storage->m_Lock);
            for (ThreadCache* cache = storage->m_Caches; cache != nullptr;) {
                ThreadCache* next = cache->Next;
                FBlockStorage* owner = storage;
                if (cache->Owner.compare_exchange_strong(owner, nullptr,
                                                         std::memory_order_acq_rel)) {
                    storage->Forget(*cache);
                }
                cache = next;
            }
            if (storage->m_Caches == nullptr) {
                break;
            }
        }
        Sleep(0);
    }
    FreePages(storage->m_FirstPage);
    if (storage->m_ChainEnds != nullptr) {
        Release(storage->m_ChainEnds);
    }
    storage->~FBlockStorage();
    Release(storage);
}

// A page of `m_BlocksPerPage` free blocks whose last links to `last`.
PageRecord* FBlockStorage::BuildPage(ChaineBuffer* last) {
    // Rounded up to four bytes, so that every header's interlocked count stays
    // aligned; with an even block size that is a multiple of four (the
    // default 64 among them) it is exactly BlockSize + 12.
    const std::uint32_t stride = (m_BlockSize + kHeader + 3u) & ~3u;
    const std::uint64_t bytes = std::uint64_t{stride} * m_BlocksPerPage;
    auto* page =
        static_cast<PageRecord*>(Commit(nullptr, sizeof(PageRecord), MEM_COMMIT | MEM_RESERVE));
    try {
        auto* blocks = static_cast<char*>(Commit(nullptr, bytes, MEM_COMMIT | MEM_TOP_DOWN));
        for (std::uint32_t i = 0; i < m_BlocksPerPage; ++i) {
            auto* block = reinterpret_cast<ChaineBuffer*>(blocks + std::uint64_t{stride} * i);
            block->RefCount = 0;
            block->Capacity = m_BlockSize;
            SetNext(block, i + 1 < m_BlocksPerPage ? reinterpret_cast<ChaineBuffer*>(
                                                         blocks + std::uint64_t{stride} * (i + 1))
                                                   : last);
        }
        *page = PageRecord{reinterpret_cast<ChaineBuffer*>(blocks), m_BlockSize, stride,
                           m_BlocksPerPage, nullptr};
    } catch (...) {
        Release(page);
        throw;
    }
    return page;
}

void FBlockStorage::AddPage() {
    PageRecord* last = m_FirstPage;
    std::uint64_t pages = 2;
    for (; last->Next != nullptr; last = last->Next) {
        ++pages;
    }
    PageRecord* page = BuildPage(m_FreeHead);
    last->Next = page;
    m_FreeHead = page->Blocks;
    ReserveChains(pages * m_BlocksPerPage);
}

// Under the lock: takes the shared list's blocks up to `last`. The list is
// never left empty between calls, even when the new page can't be had, so
// taking its last block brings the next page.
ChaineBuffer* FBlockStorage::TakeShared(ChaineBuffer* last) {
    ChaineBuffer* first = m_FreeHead;
    m_FreeHead = NextOf(last);
    if (m_FreeHead == nullptr) {
        try {
            AddPage();
        } catch (...) {
            m_FreeHead = first;
            throw;
        }
    } else if (m_ChainCount != 0 && last == NewestChain()) {
        --m_ChainCount;
    } else {
        m_ChainCount = 0;
    }
    SetNext(last, nullptr);
    return first;
}

ThreadCache* FBlockStorage::CacheOf() {
    if (g_ModuleEnding.load(std::memory_order_relaxed)) {
        return nullptr;
    }
    ThreadCache* cache = &LocalCache();
    FBlockStorage* owner = cache->Owner.load(std::memory_order_acquire);
    if (owner == this) {
        return cache;
    }
    // A cache whose thread is ending serves no storage again: it would keep
    // its blocks, and its storage's list would keep it.
    if (owner != nullptr || (cache = RegisteredCache()) == nullptr) {
        return nullptr;
    }
    // Blocks left from a storage that has ended went with its pages.
    cache->Head = nullptr;
    cache->Count = 0;
    std::lock_guard guard(m_Lock);
    cache->Prev = nullptr;
    cache->Next = m_Caches;
    if (m_Caches != nullptr) {
        m_Caches->Prev = cache;
    }
    m_Caches = cache;
    cache->Owner.store(this, std::memory_order_release);
    return cache;
}

void FBlockStorage::Refill(ThreadCache& cache) {
    std::lock_guard guard(m_Lock);
    // The list's last block comes alone, so that the next page comes when a
    // single allocation would have brought it. A chain that Drain gave back
    // is the batch the walk would take.
    ChaineBuffer* last = m_ChainCount != 0 ? NewestChain() : nullptr;
    std::uint32_t count = kBatch;
    if (last == nullptr || NextOf(last) == nullptr) {
        last = m_FreeHead;
        count = 1;
        for (ChaineBuffer* next = NextOf(last);
             count < kBatch && next != nullptr && NextOf(next) != nullptr; next = NextOf(last)) {
            last = next;
            ++count;
        }
    }
    cache.Head = TakeShared(last);
    cache.Count = count;
}

// Forgets the chains, whose room it may move. Without memory for more room
// the chains of the blocks beyond it are not kept: only a walk is lost.
void FBlockStorage::ReserveChains(std::uint64_t blocks) {
    m_ChainCount = 0;
    const std::uint64_t needed = blocks / kBatch + 1;
    if (needed <= m_ChainRoom) {
        return;
    }
    const std::uint64_t room = std::max(needed, 2 * m_ChainRoom);
    void* ends = VirtualAlloc(nullptr, room * sizeof(ChaineBuffer*), MEM_COMMIT | MEM_RESERVE,
                              PAGE_READWRITE);
    if (ends == nullptr) {
        return;
    }
    if (m_ChainEnds != nullptr) {
        Release(m_ChainEnds);
    }
    m_ChainEnds = static_cast<ChaineBuffer**>(ends);
    m_ChainRoom = room;
}

ChaineBuffer* FBlockStorage::NewestChain() const {
    return m_ChainEnds[m_ChainCount - 1];
}

void FBlockStorage::Drain(ThreadCache& cache, std::uint32_t count) {
    if (count == 0) {
        return;
    }
    ChaineBuffer* first = cache.Head;
    ChaineBuffer* last = first;
    for (std::uint32_t i = 1; i < count; ++i) {
        last = NextOf(last);
    }
    cache.Head = NextOf(last);
    cache.Count -= count;
    std::lock_guard guard(m_Lock);
    SetNext(last, m_FreeHead);
    m_FreeHead = first;
    if (count == kBatch && m_ChainCount < m_ChainRoom) {
        m_ChainEnds[m_ChainCount++] = last;
    } else {
        m_ChainCount = 0;
    }
}

void FBlockStorage::Forget(ThreadCache& cache) {
    (cache.Prev != nullptr ? cache.Prev->Next : m_Caches) = cache.Next;
    if (cache.Next != nullptr) {
        cache.Next->Prev = cache.Prev;
    }
}

void ThreadCache::ThreadEnds(void* ending) {
    auto& cache = *static_cast<ThreadCache*>(ending);
    cache.Ended = true;
    for (std::uint32_t i = 0; i < kHeapClasses; ++i) {
        while (ChaineBuffer* block = cache.HeapHead[i]) {
            cache.HeapHead[i] = HeapNextOf(block);
            DeleteHeapBlock(block);
        }
        cache.HeapCount[i] = 0;
    }
    // Taken from the cache before its storage could cut it loose: the storage
    // doesn't end while the cache is in its list, which it leaves here. No
    // other lock is taken, since on Windows a thread ends under the loader's
    // lock, which code holding any lock of ours may be waiting for.
    if (FBlockStorage* owner = cache.Owner.exchange(nullptr, std::memory_order_acq_rel)) {
        owner->Drain(cache, cache.Count);
        std::lock_guard guard(owner->m_Lock);
        owner->Forget(cache);
    }
#ifdef _WIN32
    // No storage knows the cache any more. Should the runtime have freed the
    // thread's slot already, this makes it anew, and frees it again.
    t_Cache = &g_EndedCache;
    delete &cache;
#endif
}

// The fast paths: a pop from or a push to the thread's cache, with no call
// and no lock. Whatever they can't do, the slow paths do.

inline ChaineBuffer* FBlockStorage::FromCache(std::uint32_t size) {
    ThreadCache& cache = LocalCache();
    if (size <= m_BlockSize) [[likely]] {
        ChaineBuffer* block = cache.Head;
        if (cache.Owner.load(std::memory_order_acquire) != this || block == nullptr) {
            return nullptr;
        }
        cache.Head = NextOf(block);
        // The next block's link is read at the next allocation; blocks come
        // from anywhere in the pages, so it is fetched while the caller works.
        __builtin_prefetch(cache.Head, 1);
        --cache.Count;
        return block;
    }
    return TakeHeapBlock(cache, size | 1u);
}

inline bool FBlockStorage::ToCache(ChaineBuffer* block) {
    ThreadCache& cache = LocalCache();
    // A cache that serves a storage has its end registered and still to come
    // (the end lets its storage go), so it keeps heap blocks too.
    if (cache.Owner.load(std::memory_order_acquire) != this) {
        return false;
    }
    if (!block->IsHeapBlock()) [[likely]] {
        if (cache.Count >= ThreadCache::kCacheBlocks) {
            return false;
        }
        block->RefCount = 0;
        SetNext(block, cache.Head);
        cache.Head = block;
        ++cache.Count;
        return true;
    }
    return KeepHeapBlock(cache, block);
}

ChaineBuffer* FBlockStorage::PoolAlloc(std::uint32_t size) {
    ChaineBuffer* block = FromCache(size);
    return block != nullptr ? block : PoolAllocSlow(size);
}

[[gnu::noinline]] ChaineBuffer* FBlockStorage::PoolAllocSlow(std::uint32_t size) {
    if (size > m_BlockSize) {
        return HeapAlloc(size);
    }
    ThreadCache* cache = CacheOf();
    if (cache == nullptr) {
        // The thread's cache serves another storage.
        std::lock_guard guard(m_Lock);
        return TakeShared(m_FreeHead);
    }
    if (cache->Head == nullptr) {
        Refill(*cache);
    }
    ChaineBuffer* block = cache->Head;
    cache->Head = NextOf(block);
    --cache->Count;
    return block;
}

ChaineBuffer* FBlockStorage::HeapAlloc(std::uint32_t size) {
    const std::uint32_t capacity = size | 1u;
    if (capacity > 0x7FFFFFF0u) {
        AfxThrowMemoryException();
    }
    if (ChaineBuffer* kept = TakeHeapBlock(LocalCache(), capacity)) {
        return kept;
    }
    const std::uint32_t heapClass = HeapClass(capacity);
    const std::size_t bytes = heapClass < kHeapClasses
                                  ? std::size_t{heapClass + 1} * ThreadCache::kHeapStep
                                  : std::size_t{capacity} + kHeader;
    ChaineBuffer* block = NewHeapBlock(bytes);
    block->Capacity = capacity;
    return block;
}

void FBlockStorage::PoolFree(ChaineBuffer* block) {
    if (!ToCache(block)) {
        PoolFreeSlow(block);
    }
}

// A block made on another thread or by another module's copy joins this
// thread's cache: every cache of the storage ends in its shared list.
[[gnu::noinline]] void FBlockStorage::PoolFreeSlow(ChaineBuffer* block) {
    if (block->IsHeapBlock()) {
        // Only a block of a kept class registers the thread's cache, which
        // starts to serve this storage if it can: the fast path keeps heap
        // blocks only in a cache that serves its storage.
        ThreadCache* cache = nullptr;
        if (HeapClass(block->Capacity) < kHeapClasses && (cache = CacheOf()) == nullptr) {
            cache = RegisteredCache();
        }
        if (cache == nullptr || !KeepHeapBlock(*cache, block)) {
            DeleteHeapBlock(block);
        }
        return;
    }
    block->RefCount = 0;
    if (ThreadCache* cache = CacheOf()) {
        if (cache->Count >= ThreadCache::kCacheBlocks) {
            Drain(*cache, kBatch);
        }
        SetNext(block, cache->Head);
        cache->Head = block;
        ++cache->Count;
        return;
    }
    std::lock_guard guard(m_Lock);
    m_ChainCount = 0;
    SetNext(block, m_FreeHead);
    m_FreeHead = block;
}

namespace nvk {

// Here rather than with the other block operations, so that the storage's
// fast paths inline into them.

// The slow paths apart, and reached by tail calls, so that the fast paths
// save no registers.

[[gnu::noinline]] ChaineBuffer* AllocateBufferSlow(std::uint32_t capacity, std::uint32_t size) {
    // Lengths are signed 32-bit numbers.
    if (size > 0x7FFF0000u) {
        AfxThrowMemoryException();
    }
    ChaineBuffer* buffer = BlockStorage()->PoolAlloc(capacity);
    buffer->RefCount = 1;
    buffer->Size = size;
    return buffer;
}

ChaineBuffer* AllocateBuffer(std::uint32_t capacity, std::uint32_t size) {
    // A cache holds blocks of a few hundred bytes at most, and size is at most
    // capacity: the limit on lengths is left to the slow path.
    FBlockStorage* storage = ProcessSingleton<StorageKind>::Made();
    if (storage != nullptr) [[likely]] {
        if (ChaineBuffer* buffer = storage->FromCache(capacity)) [[likely]] {
            buffer->RefCount = 1;
            buffer->Size = size;
            return buffer;
        }
    }
    return AllocateBufferSlow(capacity, size);
}

[[gnu::noinline]] void FreeBufferSlow(ChaineBuffer* buffer) {
    BlockStorage()->PoolFree(buffer);
}

void FreeBuffer(ChaineBuffer* buffer) {
    FBlockStorage* storage = ProcessSingleton<StorageKind>::Made();
    if (storage == nullptr || !storage->ToCache(buffer)) [[unlikely]] {
        FreeBufferSlow(buffer);
    }
}

}  // namespace nvk
