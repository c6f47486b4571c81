#include "nvk/core/chaine_buffer.h"

#include <algorithm>
#include <cstring>

#include "nvk/core/block_storage.h"

namespace nvk {

namespace {

ChaineBuffer* CopyOf(ChaineBuffer* buffer) {
    ChaineBuffer* copy = NewBuffer(buffer->Size);
    std::memcpy(copy->Text(), buffer->Text(), buffer->Size);
    ReleaseBuffer(buffer);
    return copy;
}

}  // namespace

std::uint32_t GrowthRequest(std::uint32_t oldCapacity, std::uint32_t n) {
    if (n < 256) {
        return n;
    }
    if (oldCapacity >= 32768 || n >= oldCapacity * 2) {
        return n + 32768;
    }
    return oldCapacity * 2;
}

ChaineBuffer* MakeUnique(ChaineBuffer* buffer) {
    return buffer->Count() == 1 ? buffer : CopyOf(buffer);
}

ChaineBuffer* TrimToFit(ChaineBuffer* buffer) {
    return CopyOf(buffer);
}

ChaineBuffer* DiscardToNew(ChaineBuffer* buffer, std::uint32_t n) {
    // The new block comes before the old reference goes, unlike the growth
    // rule's release-then-allocate: when the allocation throws, the caller
    // still holds the block it gave, and a later release can't free a block
    // that another value shares.
    ChaineBuffer* fresh = AllocateBuffer(GrowthRequest(buffer->Capacity, n), n);
    ReleaseBuffer(buffer);
    return fresh;
}

ChaineBuffer* GrowToNew(ChaineBuffer* buffer, std::uint32_t n) {
    ChaineBuffer* grown = AllocateBuffer(GrowthRequest(buffer->Capacity, n), n);
    std::memcpy(grown->Text(), buffer->Text(), std::min(buffer->Size, n));
    ReleaseBuffer(buffer);
    return grown;
}

ChaineBuffer* ToHeap(ChaineBuffer* buffer) {
    ChaineBuffer* copy = BlockStorage()->HeapAlloc(buffer->Size);
    copy->RefCount = 1;
    copy->Size = buffer->Size;
    std::memcpy(copy->Text(), buffer->Text(), buffer->Size);
    ReleaseBuffer(buffer);
    return copy;
}

}  // namespace nvk
