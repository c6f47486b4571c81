// CSBlob: a counted block of raw bytes, from the heap when small and straight
// from the system from two pages on; and BlobValue, a typed value word that
// may carry one, and with it a text. The counts are plain integers, so every
// change of a count holds one process-wide lock, "NVK_CSBlob".
#pragma once

#include <cstddef>
#include <cstdint>

class Chaine;

// The header in front of the data.
struct BlobBlock {
    std::uint32_t RefCount;  // changed only under the lock
    std::uint32_t Length;    // bytes of data
    // Bytes of the whole block, header included. From 8,192 on the block
    // came from VirtualAlloc, below from new[].
    std::uint32_t Capacity;

    unsigned char* Data() { return reinterpret_cast<unsigned char*>(this + 1); }
};
static_assert(sizeof(BlobBlock) == 12);
static_assert(offsetof(BlobBlock, Length) == 4);
static_assert(offsetof(BlobBlock, Capacity) == 8);

class CSBlob {
public:
    CSBlob() = default;
    CSBlob(const CSBlob& other);
    CSBlob& operator=(const CSBlob& other);
    ~CSBlob() { Release(); }

    // Null for no data. Takes no lock.
    const void* GetData() const { return m_pBlock != nullptr ? m_pBlock->Data() : nullptr; }
    void* GetWritableData();
    int GetLength() const { return m_pBlock != nullptr ? static_cast<int>(m_pBlock->Length) : 0; }

    // Sizes the data to `n` bytes. The block stays while `n` fits and fills
    // at least half of it; otherwise a new block replaces it and the old
    // data are not kept. 0 (or less) releases. A shared block that stays is
    // separated into a block sized for `n`, not for its old length: a copy
    // at the old length would leave the grown bytes outside the block.
    void SetSize(int n);
    // Drops this reference; the data pointer is null afterwards.
    void Release();
    // Gives this value a block of its own when the block is shared.
    void MakeUnique();

    const BlobBlock* Block() const { return m_pBlock; }

private:
    // Replaces a shared block by a copy with room for at least `length`.
    void Separate(std::uint32_t length);

    BlobBlock* m_pBlock = nullptr;
};

// A value word: the low 7 bits of Header are the type, bit 7 says that the
// value holds a blob, and the upper 24 bits are its length.
struct BlobValue {
    static constexpr std::uint32_t kTypeMask = 0x7F;
    static constexpr std::uint32_t kHoldsBlob = 0x80;

    BlobValue() = default;
    // The text without its terminator.
    explicit BlobValue(const Chaine& text);
    BlobValue& operator=(const Chaine& text);
    // The text of the data, terminator added; empty without data.
    operator Chaine() const;  // NOLINT(google-explicit-constructor): text converts both ways

    static constexpr int kMaxLength = 0xFFFFFF;  // what the header's 24 bits hold

    // Stores a copy of `n` bytes, keeping the type bits. More than kMaxLength
    // bytes throw CNotSupportedException and change nothing.
    void SetBytes(const void* data, int n);
    const void* GetData() const { return Blob.GetData(); }

    std::uint32_t Header = 0;
    CSBlob Blob;
};
