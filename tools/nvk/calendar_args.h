// What the date and time commands share: their number arguments and the
// printing of the library's ANSI text on a UTF-8 terminal.
#pragma once

#include <cstdint>
#include <string>

#include "cli.h"
#include "nvk/afx/cstring.h"
#include "nvk/calendar/cbdate.h"

namespace nvk::tool {

// Runs a command's answer on its arguments, or on each line of standard input
// when the only argument is "-".
template <int (*answer)(const Args&)>
int PerLine(const Args& args) {
    return PerInput(args, answer);
}

// A whole number from 0 to 2^32 - 1; prints the failure otherwise.
inline bool ParseU32(const std::string& text, std::uint32_t& value) {
    long long number;
    if (!ParseLong(text, number) || number < 0 || number > UINT32_MAX) {
        Fail("not a number from 0 to 4294967295: " + text);
        return false;
    }
    value = static_cast<std::uint32_t>(number);
    return true;
}

// Any day number, 0 included: the year-0 form counts from 1 January 1901 and
// wraps round to every number.
inline bool ParseDayNumber(const std::string& text, CBDate& date) {
    constexpr std::uint32_t kDay1901 = 2415386;
    std::uint32_t number;
    if (!ParseU32(text, number)) {
        return false;
    }
    date = CBDate(number - kDay1901, 0);
    return true;
}

// Windows-1252 to UTF-8.
inline std::string ToTerminal(const CString& text) {
    static const char16_t kHigh[32] = {
        0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178};
    std::string out;
    for (const char* p = text.GetString(); *p != '\0'; ++p) {
        const auto byte = static_cast<unsigned char>(*p);
        const char16_t c = byte >= 0x80 && byte < 0xA0 ? kHigh[byte - 0x80] : byte;
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

}  // namespace nvk::tool
