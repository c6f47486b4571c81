// Remainder by 97 of a long decimal number, fed digit by digit, where a
// letter may stand for its two-digit value (A = 10 ... Z = 35) as in the
// international account check. Equal to reducing the whole decimal text, but
// with one 64-bit accumulator that is reduced only when it grows large.
#pragma once

#include <cstdint>

#include "codes/code_text.h"

namespace nvk::codes {

class Mod97 {
public:
    void Digit(unsigned digit) { Push(10, digit); }
    // An upper-case letter, by its two-digit value.
    void Letter(char c) { Push(100, static_cast<unsigned>(c - 'A' + 10)); }
    unsigned Value() const { return static_cast<unsigned>(m_Value % 97); }

    // What "#", the placeholder of an unknown position, does to the number.
    enum class Placeholder { Reject, Zero };

    // Feeds a text as its cleaned form would read: folded to upper case,
    // keeping letters, digits and the placeholder. False on a placeholder
    // when it is rejected.
    bool Feed(const char* text, int length, Placeholder placeholder) {
        for (int i = 0; i < length; ++i) {
            const char c = FoldUpper(text[i]);
            if (IsDigit(c)) {
                Digit(static_cast<unsigned>(c - '0'));
            } else if (IsUpperLetter(c)) {
                Letter(c);
            } else if (c == '#') {
                if (placeholder == Placeholder::Reject) {
                    return false;
                }
                Digit(0);
            }
        }
        return true;
    }

private:
    // Below 2^56 the next step (at most * 100 + 35) stays far from overflow.
    static constexpr std::uint64_t kReduceAt = std::uint64_t{1} << 56;

    void Push(unsigned factor, unsigned value) {
        m_Value = m_Value * factor + value;
        if (m_Value >= kReduceAt) {
            m_Value %= 97;
        }
    }

    std::uint64_t m_Value = 0;
};

}  // namespace nvk::codes
