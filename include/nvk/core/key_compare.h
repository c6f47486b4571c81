// How the maps compare keys. Unsorted maps only ask whether a key is equal
// (0) or not; sorted maps need -1, 0 or 1, since the bisection counts any
// other result as a hit. Word keys (integers and enumerations) order as
// unsigned words; a key type of another kind specialises KeyCompare next to
// its own definition.
#pragma once

#include <type_traits>

namespace nvk {

template <class K>
struct KeyCompare {
    static int Equal(const K& key, const K& other) { return key != other ? 1 : 0; }

    static int Order(const K& key, const K& other) {
        const auto a = Word(key);
        const auto b = Word(other);
        return a < b ? -1 : (a == b ? 0 : 1);
    }

private:
    static auto Word(const K& key) {
        if constexpr (std::is_enum_v<K>) {
            return static_cast<std::make_unsigned_t<std::underlying_type_t<K>>>(key);
        } else {
            static_assert(std::is_integral_v<K>, "specialise nvk::KeyCompare for this key");
            return static_cast<std::make_unsigned_t<K>>(key);
        }
    }
};

}  // namespace nvk
