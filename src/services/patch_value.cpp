#include "nvk/services/patch_value.h"

#include <bit>
#include <cstring>
#include <tuple>

namespace {

// The date is unaligned in the packed record: it is read and made from its
// bytes, never through a reference or bdDate's own constructor (which would
// give today). As a number, the year weighs most, then the month, the day.
std::uint32_t RawDate(const PATCHVALUE& value) {
    std::uint32_t bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const unsigned char*>(&value) + 1, sizeof bytes);
    return bytes;
}

std::tuple<std::uint8_t, std::uint32_t> Key(const PATCHVALUE& value) {
    return {value.patch, RawDate(value)};
}

}  // namespace

PATCHVALUE::PATCHVALUE() : patch(0), date(std::bit_cast<bdDate>(std::uint32_t{0})) {}

PATCHVALUE::PATCHVALUE(const PATCHVALUE& other)
    : patch(other.patch), date(std::bit_cast<bdDate>(RawDate(other))) {}

PATCHVALUE& PATCHVALUE::operator=(const PATCHVALUE& other) {
    std::memmove(static_cast<void*>(this), &other, sizeof *this);
    return *this;
}

bool PATCHVALUE::operator==(const PATCHVALUE& other) const {
    return Key(*this) == Key(other);
}
bool PATCHVALUE::operator<(const PATCHVALUE& other) const {
    return Key(*this) < Key(other);
}
bool PATCHVALUE::operator<=(const PATCHVALUE& other) const {
    return Key(*this) <= Key(other);
}
bool PATCHVALUE::operator>(const PATCHVALUE& other) const {
    return Key(*this) > Key(other);
}
bool PATCHVALUE::operator>=(const PATCHVALUE& other) const {
    return Key(*this) >= Key(other);
}
