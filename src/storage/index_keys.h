// The orders of the index keys, by key type. Inline: the page scans call
// them for every entry they pass.
#pragma once

#include <cstdint>
#include <cstring>

namespace nvk {

// The type that hands the comparison to the index file's virtual hook.
inline constexpr int kKeyTypeDerived = 255;

namespace keys_detail {

template <class T>
T Load(const void* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class T>
long Order(T a, T b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

// The 32-bit difference, wrapping: values more than 2^31 apart misorder, as
// files written with this order expect.
inline long Difference32(const void* a, const void* b) {
    return static_cast<std::int32_t>(Load<std::uint32_t>(a) - Load<std::uint32_t>(b));
}

// Keys of this type are only as fine as a whole unit: the difference is
// truncated toward zero.
inline long FloatDifference(const void* a, const void* b) {
    const float diff = Load<float>(a) - Load<float>(b);
    if (!(diff > -2147483648.0f && diff < 2147483648.0f)) {
        return diff > 0 ? 1 : -1;
    }
    return static_cast<std::int32_t>(diff);
}

inline long DoubleOrder(const void* a, const void* b) {
    const double x = Load<double>(a);
    const double y = Load<double>(b);
    if (x == y) {
        return 0;
    }
    return x > y ? 1 : -1;  // unordered counts as below
}

}  // namespace keys_detail

inline long CompareBytes(const void* a, const void* b, int keySize) {
    if (keySize <= 0) {
        return 0;
    }
    const int result = std::memcmp(a, b, static_cast<std::size_t>(keySize));
    return result < 0 ? -1 : (result > 0 ? 1 : 0);
}

inline long CompareKeys(int keyType, int keySize, const void* a, const void* b) {
    switch (keyType) {
        case 0: {
            const int result =
                std::strcmp(static_cast<const char*>(a), static_cast<const char*>(b));
            return result < 0 ? -1 : (result > 0 ? 1 : 0);
        }
        case 1:
            if (keySize == 1) {
                return keys_detail::Load<std::int8_t>(a) - keys_detail::Load<std::int8_t>(b);
            }
            if (keySize == 2) {
                return keys_detail::Load<std::int16_t>(a) - keys_detail::Load<std::int16_t>(b);
            }
            return keys_detail::Difference32(a, b);
        case 2:
            return keys_detail::DoubleOrder(a, b);
        case 4:
        case 5:
        case 12:
            return keys_detail::Difference32(a, b);
        case 14:
            return keys_detail::Order(keys_detail::Load<std::uint8_t>(a),
                                      keys_detail::Load<std::uint8_t>(b));
        case 15:
            return keys_detail::Load<std::int16_t>(a) - keys_detail::Load<std::int16_t>(b);
        case 16:
            return keys_detail::Order(keys_detail::Load<std::uint16_t>(a),
                                      keys_detail::Load<std::uint16_t>(b));
        case 18:
            return keys_detail::Order(keys_detail::Load<std::uint32_t>(a),
                                      keys_detail::Load<std::uint32_t>(b));
        case 20:
        case 29:
            return keys_detail::Order(keys_detail::Load<std::int64_t>(a),
                                      keys_detail::Load<std::int64_t>(b));
        case 23:
            return keys_detail::FloatDifference(a, b);
        default:
            return CompareBytes(a, b, keySize);
    }
}

}  // namespace nvk
