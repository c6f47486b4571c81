// The stored layout of an index file: a 612-byte header with 16 index
// descriptors, then pages of equal size, numbered from 1.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace nvk::index_format {

static_assert(std::endian::native == std::endian::little,
              "stored layouts are read and written as they lie in memory");

inline constexpr std::uint16_t kMagic = 0x0201;
inline constexpr int kMaxIndexes = 16;
// The first word of a page on the free list.
inline constexpr std::uint32_t kFreePage = 0xFFFFFFFF;

struct Descriptor {
    std::uint32_t Root;      // 0: the index is empty
    std::uint32_t KeyCount;  // keys in the leaves
    std::uint8_t Height;     // level of the root page
    std::uint8_t KeySize;
    std::uint8_t EntrySize;  // KeySize + 4
    std::uint8_t KeyType;
    std::uint8_t Duplicates;
    std::uint8_t Reserved0;
    std::uint16_t MaxEntries;  // entries that fill a page; even
    std::uint32_t FirstLeaf;
    std::uint32_t LastLeaf;
    std::uint8_t Reserved1[12];
};
static_assert(sizeof(Descriptor) == 36);
static_assert(offsetof(Descriptor, KeyCount) == 4);
static_assert(offsetof(Descriptor, Height) == 8);
static_assert(offsetof(Descriptor, KeySize) == 9);
static_assert(offsetof(Descriptor, EntrySize) == 10);
static_assert(offsetof(Descriptor, KeyType) == 11);
static_assert(offsetof(Descriptor, Duplicates) == 12);
static_assert(offsetof(Descriptor, MaxEntries) == 14);
static_assert(offsetof(Descriptor, FirstLeaf) == 16);
static_assert(offsetof(Descriptor, LastLeaf) == 20);

struct Header {
    std::uint16_t Magic;
    std::uint16_t Reserved0;
    std::uint32_t PageSize;
    std::uint32_t PageCount;  // pages in use
    std::uint32_t FreePage;   // head of the free-page list; 0: none
    std::uint16_t IndexCount;
    std::uint8_t Reserved1[18];
    Descriptor Indexes[kMaxIndexes];
};
static_assert(sizeof(Header) == 612);
static_assert(offsetof(Header, PageSize) == 4);
static_assert(offsetof(Header, PageCount) == 8);
static_assert(offsetof(Header, FreePage) == 12);
static_assert(offsetof(Header, IndexCount) == 16);
static_assert(offsetof(Header, Indexes) == 36);

inline constexpr std::uint32_t kHeaderSize = sizeof(Header);

struct PageHeader {
    std::uint16_t Level;  // 0: leaf
    std::uint16_t Count;  // entries
    std::uint32_t PrevPage;
    std::uint32_t NextPage;
};
static_assert(sizeof(PageHeader) == 12);
static_assert(offsetof(PageHeader, Count) == 2);
static_assert(offsetof(PageHeader, PrevPage) == 4);
static_assert(offsetof(PageHeader, NextPage) == 8);

inline constexpr std::uint32_t kPageHeaderSize = sizeof(PageHeader);
// Every page buffer carries this many zero bytes past its end, so that a
// comparison running off the last key (a string key with no zero byte, an
// 8-byte number in a shorter key) stops inside the buffer.
inline constexpr std::uint32_t kPadding = 16;
// Count is 16 bits; pages larger than a full page of the largest entries are
// taken for damage.
inline constexpr std::uint32_t kMaxPageSize = 16u << 20;

// Entries that fill a page of `pageSize` bytes: always even, so that a split
// leaves two equal halves; 0 if a page can't hold two.
inline std::uint16_t MaxEntries(std::uint32_t pageSize, std::uint32_t entrySize) {
    if (entrySize == 0 || pageSize < kPageHeaderSize) {
        return 0;
    }
    std::uint32_t entries = ((pageSize - kPageHeaderSize) / entrySize) & ~1u;
    if (entries > 0xFFFE) {
        entries = 0xFFFE;
    }
    return static_cast<std::uint16_t>(entries < 2 ? 0 : entries);
}

inline std::uint32_t Load32(const char* p) {
    std::uint32_t v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline void Store32(char* p, std::uint32_t v) {
    std::memcpy(p, &v, sizeof v);
}

inline PageHeader LoadPageHeader(const char* page) {
    PageHeader h;
    std::memcpy(&h, page, sizeof h);
    return h;
}
inline void StorePageHeader(char* page, const PageHeader& h) {
    std::memcpy(page, &h, sizeof h);
}

}  // namespace nvk::index_format

namespace nvk::index_format {

// Fields of the page in a page buffer.
inline int LevelOf(const char* page) {
    return LoadPageHeader(page).Level;
}
inline int CountOf(const char* page) {
    return LoadPageHeader(page).Count;
}
inline std::uint32_t PrevOf(const char* page) {
    return LoadPageHeader(page).PrevPage;
}
inline std::uint32_t NextOf(const char* page) {
    return LoadPageHeader(page).NextPage;
}
inline bool IsFreePage(const char* page) {
    return Load32(page) == kFreePage;
}
inline void SetCount(char* page, int count) {
    const auto value = static_cast<std::uint16_t>(count);
    std::memcpy(page + offsetof(PageHeader, Count), &value, sizeof value);
}
inline void SetPrev(char* page, std::uint32_t prev) {
    Store32(page + offsetof(PageHeader, PrevPage), prev);
}
inline void SetNext(char* page, std::uint32_t next) {
    Store32(page + offsetof(PageHeader, NextPage), next);
}
inline void SetLevel(char* page, int level) {
    const auto value = static_cast<std::uint16_t>(level);
    std::memcpy(page, &value, sizeof value);
}

}  // namespace nvk::index_format
