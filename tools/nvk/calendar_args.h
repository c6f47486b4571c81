// What the date and time commands share: their number arguments.
#pragma once

#include <cstdint>
#include <string>

#include "cli.h"
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

}  // namespace nvk::tool
