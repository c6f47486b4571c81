// The counted block a Chaine points into. Its header is the block header of
// the block storage: the text follows the three words.
#pragma once

#include <ext/atomicity.h>

#include <cstdint>

#include "nvk/os/types.h"

struct ChaineBuffer {
    nvk::os::LONG RefCount;  // values sharing the block; 0 while it is free
    std::uint32_t Size;      // length + 1: the terminator counts
    std::uint32_t Capacity;  // payload bytes; odd for a heap block, even for a pool block

    char* Text() { return reinterpret_cast<char*>(this + 1); }
    const char* Text() const { return reinterpret_cast<const char*>(this + 1); }
    static ChaineBuffer* FromText(const char* text) {
        return reinterpret_cast<ChaineBuffer*>(const_cast<char*>(text)) - 1;
    }
    bool IsHeapBlock() const { return (Capacity & 1u) != 0; }
    // A plain read: enough for the test against 1, since only the holder that
    // sees 1 can change the block.
    nvk::os::LONG Count() const { return __atomic_load_n(&RefCount, __ATOMIC_RELAXED); }
};
static_assert(sizeof(ChaineBuffer) == 12);
static_assert(offsetof(ChaineBuffer, Size) == 4);
static_assert(offsetof(ChaineBuffer, Capacity) == 8);

namespace nvk {

// Block-level operations. Each may return another block than it was given;
// the caller keeps the result.

// A block of its own (RefCount 1), copying a shared one.
ChaineBuffer* MakeUnique(ChaineBuffer* buffer);
// Always a fresh block of exactly Size, giving back an oversized one.
ChaineBuffer* TrimToFit(ChaineBuffer* buffer);
// A block the holder may resize in place: its own, with room for n bytes
// below its Capacity.
inline bool FitsInPlace(const ChaineBuffer* buffer, std::uint32_t n) {
    return buffer->Count() == 1 && n < buffer->Capacity;
}
// DiscardBuffer and GrowBuffer for a block that doesn't fit in place.
ChaineBuffer* DiscardToNew(ChaineBuffer* buffer, std::uint32_t n);
ChaineBuffer* GrowToNew(ChaineBuffer* buffer, std::uint32_t n);
// Size becomes n; the text isn't kept. Inline up to the move to a new block.
inline ChaineBuffer* DiscardBuffer(ChaineBuffer* buffer, std::uint32_t n) {
    if (FitsInPlace(buffer, n)) {
        buffer->Size = n;
        return buffer;
    }
    return DiscardToNew(buffer, n);
}
// Size becomes n, keeping as much of the text as fits.
inline ChaineBuffer* GrowBuffer(ChaineBuffer* buffer, std::uint32_t n) {
    if (FitsInPlace(buffer, n)) {
        buffer->Size = n;
        return buffer;
    }
    return GrowToNew(buffer, n);
}
// A copy in a heap block (odd Capacity).
ChaineBuffer* ToHeap(ChaineBuffer* buffer);

// Gives a block whose last reference has gone back to its storage.
void FreeBuffer(ChaineBuffer* buffer);

// While the process has a single thread nothing can race for a count, so the
// counts change without the bus lock, as the standard library's shared
// pointers do; the first thread a process starts ends that for good, and its
// creation orders the plain changes before anything the thread does.
inline bool SingleThreaded() {
    return __gnu_cxx::__is_single_threaded();
}

// One more reference: a single instruction, inline because every copy of a
// value does it.
inline void AddReference(ChaineBuffer* buffer) {
    if (SingleThreaded()) {
        __atomic_store_n(&buffer->RefCount, buffer->Count() + 1, __ATOMIC_RELAXED);
    } else {
        __atomic_add_fetch(&buffer->RefCount, 1, __ATOMIC_SEQ_CST);
    }
}

// One reference given back; the last frees the block. A holder that finds
// itself the only one frees without the locked instruction: with no other
// reference to copy from, nobody can raise the count meanwhile, and the
// acquiring read orders the other holders' earlier releases before the free.
inline void ReleaseBuffer(ChaineBuffer* buffer) {
    const nvk::os::LONG count = __atomic_load_n(&buffer->RefCount, __ATOMIC_ACQUIRE);
    if (count == 1) {
        FreeBuffer(buffer);
    } else if (SingleThreaded()) {
        __atomic_store_n(&buffer->RefCount, count - 1, __ATOMIC_RELAXED);
    } else if (__atomic_sub_fetch(&buffer->RefCount, 1, __ATOMIC_SEQ_CST) == 0) {
        FreeBuffer(buffer);
    }
}
// A fresh block of at least `capacity` payload bytes, with RefCount 1 and
// Size `size`, which is at most `capacity`.
ChaineBuffer* AllocateBuffer(std::uint32_t capacity, std::uint32_t size);
// A fresh block of `size` with RefCount 1 and Size `size`.
inline ChaineBuffer* NewBuffer(std::uint32_t size) {
    return AllocateBuffer(size, size);
}

// The capacity GrowBuffer and DiscardBuffer ask for when a block must move.
std::uint32_t GrowthRequest(std::uint32_t oldCapacity, std::uint32_t n);

}  // namespace nvk
