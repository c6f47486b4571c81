// Small byte-level steps shared by the bank and identity codes: the cleaning
// filters and the copy into fixed fields. They work on plain bytes so that
// validation needs no string buffer.
#pragma once

#include <algorithm>
#include <cstring>

#include "nvk/core/case_tables.h"
#include "nvk/core/chaine.h"

namespace nvk::codes {

// Through the library's case table.
inline char FoldUpper(char c) {
    return static_cast<char>(nvk::FoldUpper(c));
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
