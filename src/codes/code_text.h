// Small text steps shared by the bank and identity codes: the library's
// upper-case folding, the cleaning filters and the copy into fixed fields.
// They work on plain bytes so that validation needs no string buffer.
#pragma once

#include <algorithm>
#include <cstring>

#include "nvk/core/chaine.h"

namespace nvk::codes {

// The library's case table: ASCII letters and the Latin-1 accented letters,
// except 0xED, 0xF0, 0xF7, 0xFE and 0xFF, which stay as they are.
inline char FoldUpper(char c) {
    const auto b = static_cast<unsigned char>(c);
    if ((b >= 0x61 && b <= 0x7A) || (b >= 0xE0 && b <= 0xEC) || b == 0xEE || b == 0xEF ||
        (b >= 0xF1 && b <= 0xF6) || (b >= 0xF8 && b <= 0xFD)) {
        return static_cast<char>(b - 0x20);
    }
    return c;
}

inline bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
inline bool IsUpperLetter(char c) {
    return c >= 'A' && c <= 'Z';
}
inline bool IsAlnum(char c) {
    return IsDigit(c) || IsUpperLetter(c) || (c >= 'a' && c <= 'z');
}

// Length of a zero-terminated field, never reading past its end.
template <std::size_t N>
int FieldLength(const char (&field)[N]) {
    return static_cast<int>(strnlen(field, N));
}

template <std::size_t N>
Chaine FieldText(const char (&field)[N]) {
    return Chaine(field, FieldLength(field));
}

// Copies at most N - 1 characters and clears the rest of the field.
template <std::size_t N>
void StoreField(char (&field)[N], const char* text, int length) {
    const auto n = static_cast<std::size_t>(std::clamp(length, 0, static_cast<int>(N) - 1));
    std::memcpy(field, text, n);
    std::memset(field + n, 0, N - n);
}

template <std::size_t N>
void StoreField(char (&field)[N], const Chaine& text) {
    StoreField(field, text.c_str(), text.Length());
}

// Upper-cases `text` and keeps what `keep` accepts, writing into `out`, which
// has room for `length` bytes; returns the count written.
template <typename Keep>
int FoldAndKeep(const char* text, int length, char* out, Keep keep) {
    int n = 0;
    for (int i = 0; i < length; ++i) {
        const char c = FoldUpper(text[i]);
        if (keep(c)) {
            out[n++] = c;
        }
    }
    return n;
}

}  // namespace nvk::codes
