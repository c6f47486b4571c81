// The library's own case tables over the Windows Latin-1 code page. They are
// built in, independent of the system's locale, and deliberately not inverses
// of each other: UpperTable leaves 0xED (and 0xF0, 0xF7, 0xFE, 0xFF) alone,
// while LowerTable maps the whole of 0xC0-0xCF. Every operation that ignores
// case folds through UpperTable.
#pragma once

#include <array>
#include <cstdint>

namespace nvk {

using CaseTable = std::array<std::uint8_t, 256>;

namespace detail {

constexpr CaseTable MakeCaseTable(std::initializer_list<std::array<int, 3>> ranges) {
    CaseTable table{};
    for (int c = 0; c < 256; ++c) {
        table[c] = static_cast<std::uint8_t>(c);
    }
    // Each range {first, last, target of first}.
    for (const auto& [first, last, target] : ranges) {
        for (int c = first; c <= last; ++c) {
            table[c] = static_cast<std::uint8_t>(target + c - first);
        }
    }
    return table;
}

}  // namespace detail

inline constexpr CaseTable UpperTable = detail::MakeCaseTable({{0x61, 0x7A, 0x41},
                                                               {0xE0, 0xEC, 0xC0},
                                                               {0xEE, 0xEF, 0xCE},
                                                               {0xF1, 0xF6, 0xD1},
                                                               {0xF8, 0xFD, 0xD8}});

inline constexpr CaseTable LowerTable = detail::MakeCaseTable(
    {{0x41, 0x5A, 0x61}, {0xC0, 0xCF, 0xE0}, {0xD1, 0xD6, 0xF1}, {0xD8, 0xDD, 0xF8}});

inline std::uint8_t FoldUpper(char c) {
    return UpperTable[static_cast<std::uint8_t>(c)];
}
inline std::uint8_t FoldLower(char c) {
    return LowerTable[static_cast<std::uint8_t>(c)];
}

}  // namespace nvk
