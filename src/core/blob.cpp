#include "nvk/core/blob.h"

#include <algorithm>
#include <cstring>

#include "nvk/afx/exceptions.h"
#include "nvk/afx/sync_objects.h"
#include "nvk/core/chaine.h"
#include "nvk/core/process_singleton.h"
#include "os/api/memory.h"

namespace {

struct BlobLockKind {
    using Object = CCriticalSection;
    static constexpr const char* Key = "NVK_CSBlob";
    static Object* Make() { return new CCriticalSection; }
    static void Destroy(Object* lock) { delete lock; }
};

CCriticalSection* BlobLock() {
    return nvk::ProcessSingleton<BlobLockKind>::Get();
}

constexpr std::size_t kHeader = sizeof(BlobBlock);
constexpr std::size_t kPage = 4096;
constexpr std::uint32_t kSystemBlock = 8192;

std::size_t RoundUp(std::size_t n, std::size_t unit) {
    return (n + unit - 1) / unit * unit;
}

// A block for `n` data bytes, or null for none. Blocks of two pages or more
// come from the system, so Capacity tells where any block came from.
BlobBlock* Allocate(std::uint32_t n) {
    if (n == 0) {
        return nullptr;
    }
    const std::size_t total = kHeader + n;
    const std::size_t pages = RoundUp(total, kPage);
    BlobBlock* block;
    std::size_t capacity;
    if (pages < kSystemBlock) {
        capacity = RoundUp(total, 256);
        block = reinterpret_cast<BlobBlock*>(new unsigned char[capacity]);
    } else {
        capacity = pages;
        block = static_cast<BlobBlock*>(
            nvk::os::VirtualAlloc(nullptr, capacity, nvk::os::MEM_COMMIT, nvk::os::PAGE_READWRITE));
        if (block == nullptr) {
            AfxThrowMemoryException();
        }
    }
    block->RefCount = 1;
    block->Length = n;
    block->Capacity = static_cast<std::uint32_t>(capacity);
    return block;
}

// Drops one reference; the caller holds the lock.
void Drop(BlobBlock* block) {
    if (block == nullptr || --block->RefCount != 0) {
        return;
    }
    if (block->Capacity >= kSystemBlock) {
        nvk::os::VirtualFree(block, 0, nvk::os::MEM_RELEASE);
    } else {
        delete[] reinterpret_cast<unsigned char*>(block);
    }
}

}  // namespace

CSBlob::CSBlob(const CSBlob& other) {
    CSingleLock lock(BlobLock(), true);
    m_pBlock = other.m_pBlock;
    if (m_pBlock != nullptr) {
        ++m_pBlock->RefCount;
    }
}

CSBlob& CSBlob::operator=(const CSBlob& other) {
    CSingleLock lock(BlobLock(), true);
    if (m_pBlock != other.m_pBlock) {
        BlobBlock* shared = other.m_pBlock;
        if (shared != nullptr) {
            ++shared->RefCount;
        }
        Drop(m_pBlock);
        m_pBlock = shared;
    }
    return *this;
}

void* CSBlob::GetWritableData() {
    MakeUnique();
    return m_pBlock != nullptr ? m_pBlock->Data() : nullptr;
}

void CSBlob::Release() {
    if (m_pBlock == nullptr) {
        return;
    }
    CSingleLock lock(BlobLock(), true);
    Drop(m_pBlock);
    m_pBlock = nullptr;
}

void CSBlob::MakeUnique() {
    if (m_pBlock == nullptr) {
        return;
    }
    CSingleLock lock(BlobLock(), true);
    Separate(m_pBlock->Length);
}

void CSBlob::Separate(std::uint32_t length) {
    if (m_pBlock->RefCount <= 1) {
        return;
    }
    BlobBlock* copy = Allocate(std::max(length, m_pBlock->Length));
    std::memcpy(copy->Data(), m_pBlock->Data(), m_pBlock->Length);
    copy->Length = m_pBlock->Length;
    Drop(m_pBlock);
    m_pBlock = copy;
}

void CSBlob::SetSize(int n) {
    if (n <= 0) {
        Release();
        return;
    }
    const auto size = static_cast<std::uint32_t>(n);
    CSingleLock lock(BlobLock(), true);
    if (m_pBlock == nullptr) {
        m_pBlock = Allocate(size);
    } else {
        const std::uint32_t room = m_pBlock->Capacity - static_cast<std::uint32_t>(kHeader);
        if (size <= room && room <= 2 * std::size_t{size}) {
            // A shared block is copied with room for the new size: its
            // capacity may have been set by an earlier, larger size.
            Separate(size);
        } else {
            BlobBlock* fresh = Allocate(size);
            Drop(m_pBlock);
            m_pBlock = fresh;
        }
    }
    m_pBlock->Length = size;
}

BlobValue::BlobValue(const Chaine& text) {
    SetBytes(text.c_str(), text.Length());
}

BlobValue& BlobValue::operator=(const Chaine& text) {
    SetBytes(text.c_str(), text.Length());
    return *this;
}

BlobValue::operator Chaine() const {
    const void* data = Blob.GetData();
    if (Header <= 0xFF || data == nullptr) {
        return Chaine();
    }
    // The header may claim more than the block holds; the block's length is
    // the limit.
    const auto length = std::min<std::uint32_t>(Header >> 8, Blob.Block()->Length);
    return Chaine(data, static_cast<int>(length));
}

void BlobValue::SetBytes(const void* data, int n) {
    // The header's 24 bits can't say a longer length: such a value is refused
    // rather than cut, and the value stays as it was.
    if (n > kMaxLength) {
        AfxThrowNotSupportedException();
    }
    n = std::max(n, 0);
    // Bytes of our own block must outlive its replacement.
    CSBlob keep;
    const auto* own = static_cast<const unsigned char*>(Blob.GetData());
    const auto* bytes = static_cast<const unsigned char*>(data);
    if (own != nullptr && bytes >= own && bytes < own + Blob.GetLength()) {
        keep = Blob;
    }
    Header |= kHoldsBlob;
    Blob.SetSize(n);
    Header = (Header & kTypeMask) + (static_cast<std::uint32_t>(n) << 8) + kHoldsBlob;
    if (n > 0) {
        std::memcpy(Blob.GetWritableData(), data, static_cast<std::size_t>(n));
    }
}
