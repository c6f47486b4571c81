#include "nvk/afx/allocator.h"

#include <new>

#include "nvk/afx/exceptions.h"

namespace nvk::afx {

void* AllocateBytes(std::size_t bytes) {
    try {
        return ::operator new(bytes);
    } catch (const std::bad_alloc&) {
        AfxThrowMemoryException();
    }
}

void FreeBytes(void* block) noexcept {
    ::operator delete(block);
}

}  // namespace nvk::afx
