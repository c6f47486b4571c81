// The process-wide pool of fixed-size blocks behind Chaine buffers, with the
// heap for buffers too large for a block. The low bit of a block's Capacity
// tells the two apart on release: even for a pool block, odd for a heap block.
#pragma once

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
    ChaineBuffer* HeapAlloc(std::uint32_t size);
    // Takes back a block of either kind.
    void PoolFree(ChaineBuffer* block);

    std::uint32_t BlockSize() const { return m_BlockSize; }
    std::uint32_t BlocksPerPage() const { return m_BlocksPerPage; }
    const PageRecord* FirstPage() const { return m_FirstPage; }

private:
    FBlockStorage() = default;
    void AddPage();
    PageRecord* BuildPage(ChaineBuffer* last);

    nvk::SpinLock m_Lock;
    std::uint32_t m_BlockSize = 0;
    std::uint32_t m_BlocksPerPage = 0;
    PageRecord* m_FirstPage = nullptr;
    ChaineBuffer* m_FreeHead = nullptr;
};

// The storage of the process ("BlockStorage V2"), made by the first module
// that asks and destroyed by the last holder.
FBlockStorage* BlockStorage();
