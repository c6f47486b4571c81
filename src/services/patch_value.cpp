#include "nvk/services/patch_value.h"

#include <cstring>
#include <tuple>

namespace {

std::tuple<std::uint8_t, std::uint32_t> Key(const PATCHVALUE& value) {
    std::uint32_t date = 0;
    std::memcpy(&date, reinterpret_cast<const unsigned char*>(&value) + 1, sizeof date);
    return {value.patch, date};
}

}  // namespace

PATCHVALUE::PATCHVALUE() : patch(0) {
    // bdDate's own constructor gives today: a patch value starts with none.
    std::memset(static_cast<void*>(this), 0, sizeof *this);
}

PATCHVALUE::PATCHVALUE(const PATCHVALUE& other) : patch(other.patch) {
    std::memcpy(static_cast<void*>(this), &other, sizeof *this);
}

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
