#include "nvk/core/big_number.h"

#include <cstdlib>
#include <string>

namespace {

// A group of digits as a number: blanks go, then atoi reads what it can.
std::uint32_t GroupValue(const char* text, int length) {
    std::string group;
    for (int i = 0; i < length; ++i) {
        if (text[i] != ' ') {
            group += text[i];
        }
    }
    return static_cast<std::uint32_t>(std::atoi(group.c_str()));
}

}  // namespace

EBigNumber::EBigNumber(const Chaine& text) {
    const char* p = text.c_str();
    int length = text.Length();
    if (length > 0 && (*p == '+' || *p == '-')) {
        Negative = *p == '-';
        ++p;
        --length;
    }
    while (length > 0 && *p == '0') {
        ++p;
        --length;
    }
    // Groups of nine from the right; the leftmost one may be shorter.
    while (length > 0) {
        const int take = length < 9 ? length : 9;
        Limbs.Add(GroupValue(p + length - take, take));
        length -= take;
    }
}

std::int32_t EBigNumber::Modulo(std::uint32_t divisor) const {
    std::uint64_t r = 0;
    for (int i = Limbs.Size() - 1; i >= 0; --i) {
        r = (r * 1000000000u + Limbs[i]) % divisor;
    }
    const auto value = static_cast<std::int32_t>(r);
    return Negative ? -value : value;
}
