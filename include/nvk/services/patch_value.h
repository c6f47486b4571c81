// PATCHVALUE: the patch of an application, as five bytes without gaps: its
// number (0 for none) and its date.
#pragma once

#include <cstddef>
#include <cstdint>

#include "nvk/calendar/cbdate.h"
#include "nvk/nvkutil_export.h"

#pragma pack(push, 1)
struct NVKUTIL_EXPORT PATCHVALUE {
    PATCHVALUE();  // all five bytes zero
    PATCHVALUE(const PATCHVALUE& other);
    PATCHVALUE& operator=(const PATCHVALUE& other);

    // Patches are ordered by number, then by date: the four bytes of the
    // date read as one little-endian number, so year, month, day.
    bool operator==(const PATCHVALUE& other) const;
    bool operator<(const PATCHVALUE& other) const;
    bool operator<=(const PATCHVALUE& other) const;
    bool operator>(const PATCHVALUE& other) const;
    bool operator>=(const PATCHVALUE& other) const;

    std::uint8_t patch;
    bdDate date;
};
#pragma pack(pop)
static_assert(sizeof(PATCHVALUE) == 5);
static_assert(offsetof(PATCHVALUE, patch) == 0 && offsetof(PATCHVALUE, date) == 1);
