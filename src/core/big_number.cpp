#include "nvk/core/big_number.h"

EBigNumber::EBigNumber(const Chaine& text) {
    if (text.IsEmpty()) {
        return;
    }
    Chaine work = text;
    if (work.c_str()[0] == '+' || work.c_str()[0] == '-') {
        Negative = work.RemoveAt(0) == '-';
    }
    work.TrimLeft('0');
    // Groups of nine from the right; the leftmost one may be shorter.
    while (!work.IsEmpty()) {
        Limbs.Add(static_cast<std::uint32_t>(work.Right(9).ToInt()));
        work = work.Length() > 9 ? work.Left(work.Length() - 9) : Chaine();
    }
}

std::int32_t EBigNumber::Modulo(std::uint32_t divisor) const {
    std::uint64_t r = 0;
    for (int i = Limbs.Size() - 1; i >= 0; --i) {
        r = (r * 1000000000u + Limbs[i]) % divisor;
    }
    // In 64 bits: a remainder by a divisor above 2^31 may not fit the result,
    // and its negation would overflow.
    const auto value = static_cast<std::int64_t>(r);
    return static_cast<std::int32_t>(Negative ? -value : value);
}
