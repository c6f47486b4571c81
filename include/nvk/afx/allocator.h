// The allocator of the framework layer's own containers: exhausted memory
// leaves as the framework's CMemoryException*, never as std::bad_alloc,
// which the applications' handlers don't catch.
#pragma once

#include <cstddef>

#include "nvk/nvkafx_export.h"

namespace nvk::afx {

// operator new, with std::bad_alloc turned into CMemoryException*.
NVKAFX_EXPORT void* AllocateBytes(std::size_t bytes);
NVKAFX_EXPORT void FreeBytes(void* block) noexcept;

template <class T>
struct FrameworkAllocator {
    using value_type = T;

    FrameworkAllocator() = default;
    template <class U>
    FrameworkAllocator(const FrameworkAllocator<U>& /*other*/) noexcept {}

    // The containers keep `n` within max_size(), so the product can't wrap.
    T* allocate(std::size_t n) { return static_cast<T*>(AllocateBytes(n * sizeof(T))); }
    void deallocate(T* block, std::size_t /*n*/) noexcept { FreeBytes(block); }

    template <class U>
    bool operator==(const FrameworkAllocator<U>& /*other*/) const noexcept {
        return true;
    }
};

}  // namespace nvk::afx
