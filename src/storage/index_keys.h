// The orders of the index keys, by key type. Inline: the page scans call
// them for every entry they pass.
#pragma once

#include <cstdint>
#include <cstring>

namespace nvk {

// The type that hands the comparison to the index file's virtual hook.
inline constexpr int kKeyTypeDerived = 255;

// Bytes a key of this type compares; 0 for types that take any size.
inline int KeyTypeSize(int keyType, int keySize) {
    switch (keyType) {
        case 1:
            return keySize == 1 || keySize == 2 ? keySize : 4;
        case 2:
        case 20:
        case 29:
            return 8;
        case 4:
        case 5:
        case 12:
        case 18:
        case 23:
            return 4;
        case 14:
            return 1;
        case 15:
        case 16:
            return 2;
        default:
            return 0;
    }
}

namespace keys_detail {

// A number of a key. Index creation refuses a key too short for its type;
// a file made elsewhere may still hold one, and its number then takes the
// key's bytes alone, zero-extended, rather than the bytes that follow it.
template <class T>
T Load(const void* p, int keySize) {
    T v{};
    // A whole number is one load; the copy of a length known only at run
    // time is a call, paid on every comparison of a page scan.
    if (keySize >= static_cast<int>(sizeof v)) {
        std::memcpy(&v, p, sizeof v);
    } else if (keySize > 0) {
        std::memcpy(&v, p, static_cast<std::size_t>(keySize));
    }
    return v;
}

template <class T>
long Order(T a, T b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

template <class T>
long OrderOf(const void* a, const void* b, int keySize) {
    return Order(Load<T>(a, keySize), Load<T>(b, keySize));
}

// Keys of this type are only as fine as a whole unit: equal when less than
// 1 apart, otherwise ordered by the sign of the difference. The difference
// is taken exactly (a double sum and its rounding error), since a float or
// double subtraction rounds up to 1 values just less than 1 apart. Unordered
// values count as below.
inline long FloatDifference(const void* a, const void* b, int keySize) {
    const double x = Load<float>(a, keySize);
    const double y = -static_cast<double>(Load<float>(b, keySize));
    const double sum = x + y;
    if (sum != sum) {
        return -1;
    }
    const double bv = sum - x;
    const double error = (x - (sum - bv)) + (y - bv);
    if (sum >= 1.0) {
        return sum == 1.0 && error < 0 ? 0 : 1;
    }
    if (sum <= -1.0) {
        return sum == -1.0 && error > 0 ? 0 : -1;
    }
    return 0;
}

inline long DoubleOrder(const void* a, const void* b, int keySize) {
    const double x = Load<double>(a, keySize);
    const double y = Load<double>(b, keySize);
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
    using keys_detail::OrderOf;
    // Four bytes (types 1, 4, 5, 12) compare as signed numbers, not by their
    // wrapping difference: that difference has the wrong sign for values more
    // than 2^31 apart, which is no order, and a tree built on it breaks.
    // Where the difference does not wrap the two agree.
    switch (keyType) {
        case 0: {
            // A string ends at its zero byte or at the key's end: a key that
            // fills its size has no zero byte, and the bytes after it (the
            // entry's value, or past the caller's key) are not part of it.
            const int result = keySize <= 0 ? 0
                                            : std::strncmp(static_cast<const char*>(a),
                                                           static_cast<const char*>(b),
                                                           static_cast<std::size_t>(keySize));
            return result < 0 ? -1 : (result > 0 ? 1 : 0);
        }
        case 1:
            if (keySize == 1) {
                return keys_detail::Load<std::int8_t>(a, 1) - keys_detail::Load<std::int8_t>(b, 1);
            }
            if (keySize == 2) {
                return keys_detail::Load<std::int16_t>(a, 2) -
                       keys_detail::Load<std::int16_t>(b, 2);
            }
            return OrderOf<std::int32_t>(a, b, keySize);
        case 2:
            return keys_detail::DoubleOrder(a, b, keySize);
        case 4:
        case 5:
        case 12:
            return OrderOf<std::int32_t>(a, b, keySize);
        case 14:
            return OrderOf<std::uint8_t>(a, b, keySize);
        case 15:
            return keys_detail::Load<std::int16_t>(a, keySize) -
                   keys_detail::Load<std::int16_t>(b, keySize);
        case 16:
            return OrderOf<std::uint16_t>(a, b, keySize);
        case 18:
            return OrderOf<std::uint32_t>(a, b, keySize);
        case 20:
        case 29:
            return OrderOf<std::int64_t>(a, b, keySize);
        case 23:
            return keys_detail::FloatDifference(a, b, keySize);
        default:
            return CompareBytes(a, b, keySize);
    }
}

}  // namespace nvk
