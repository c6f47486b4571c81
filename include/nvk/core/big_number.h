// A signed integer of any length, given as decimal text, kept just far
// enough to take its remainder by a small divisor.
#pragma once

#include <cstdint>

#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"

class EBigNumber {
public:
    // No validation: a group of nine characters reads as far as atoi reads it,
    // blanks removed first.
    explicit EBigNumber(const Chaine& text);

    // The remainder with the sign of the value. The divisor must be small
    // enough that a remainder times 10^9 fits 64 bits; 0 is a division fault.
    std::int32_t Modulo(std::uint32_t divisor) const;

    // Nine decimal digits a limb, the least significant first; a zero value
    // has none and a null array.
    PTableau<std::uint32_t> Limbs;
    bool Negative = false;
};
