// The stored layout of a record file: a 36-byte header, then the records.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace nvk::data_format {

static_assert(std::endian::native == std::endian::little,
              "stored layouts are read and written as they lie in memory");

inline constexpr std::uint16_t kMagic = 0x0201;
// Marks a deleted record in its first four bytes.
inline constexpr std::uint32_t kDeleted = 0xFFFFFFFF;

struct Header {
    std::uint16_t Magic;
    std::uint16_t Reserved0;
    std::uint32_t RecordSize;   // 0: variable-length records
    std::uint32_t RecordCount;  // live records
    std::uint32_t FreeHead;     // latest deleted record; 0: none
    std::uint8_t Reserved1[20];
};
static_assert(sizeof(Header) == 36);
static_assert(offsetof(Header, RecordSize) == 4);
static_assert(offsetof(Header, RecordCount) == 8);
static_assert(offsetof(Header, FreeHead) == 12);
static_assert(offsetof(Header, Reserved1) == 16);

// Written over the start of a deleted record.
struct DeletedMark {
    std::uint32_t Mark;    // kDeleted
    std::uint32_t Next;    // the FreeHead before this deletion
    std::uint32_t Length;  // variable-length records: the stored length
};
static_assert(sizeof(DeletedMark) == 12);
static_assert(offsetof(DeletedMark, Next) == 4);
static_assert(offsetof(DeletedMark, Length) == 8);

inline constexpr std::uint32_t kHeaderSize = sizeof(Header);

}  // namespace nvk::data_format
