#include "nvk/core/block_storage.h"

#include <cstring>
#include <mutex>
#include <new>

#include "nvk/afx/exceptions.h"
#include "nvk/core/process_singleton.h"
#include "os/api/memory.h"

std::uint32_t g_BlockStorageBlockSize = 64;
std::uint32_t g_BlockStorageBlocksPerPage = 512;

namespace {

using namespace nvk::os;

constexpr std::uint32_t kHeader = sizeof(ChaineBuffer);

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
    } catch (...) {
        Destroy(storage);
        throw;
    }
    return storage;
}

void FBlockStorage::Destroy(FBlockStorage* storage) {
    FreePages(storage->m_FirstPage);
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
    while (last->Next != nullptr) {
        last = last->Next;
    }
    PageRecord* page = BuildPage(m_FreeHead);
    last->Next = page;
    m_FreeHead = page->Blocks;
}

ChaineBuffer* FBlockStorage::PoolAlloc(std::uint32_t size) {
    std::unique_lock guard(m_Lock);
    ChaineBuffer* block = m_FreeHead;
    if (block->Capacity < size) {
        guard.unlock();
        return HeapAlloc(size);
    }
    m_FreeHead = NextOf(block);
    if (m_FreeHead == nullptr) {
        // The list is never left empty between calls, even when the new page
        // can't be had.
        try {
            AddPage();
        } catch (...) {
            SetNext(block, nullptr);
            m_FreeHead = block;
            throw;
        }
    }
    return block;
}

ChaineBuffer* FBlockStorage::HeapAlloc(std::uint32_t size) {
    const std::uint32_t capacity = size | 1u;
    if (capacity > 0x7FFFFFF0u) {
        AfxThrowMemoryException();
    }
    auto* block = reinterpret_cast<ChaineBuffer*>(new char[std::size_t{capacity} + kHeader]);
    block->Capacity = capacity;
    return block;
}

void FBlockStorage::PoolFree(ChaineBuffer* block) {
    if (block->IsHeapBlock()) {
        delete[] reinterpret_cast<char*>(block);
        return;
    }
    std::lock_guard guard(m_Lock);
    block->RefCount = 0;
    SetNext(block, m_FreeHead);
    m_FreeHead = block;
}
