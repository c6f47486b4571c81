#include "nvk/platform/flag.h"

#include <cstdarg>

namespace {

unsigned Mask(long bit) {
    return 1u << (static_cast<unsigned long>(bit) & 31u);
}

}  // namespace

void SetBit(long& word, long bit) {
    word |= static_cast<long>(Mask(bit - 1));
}

void ClearBit(long& word, long bit) {
    word &= ~static_cast<long>(Mask(bit - 1));
}

int IsBitSet(long word, long bit) {
    return (static_cast<unsigned long>(word) & Mask(bit - 1)) != 0 ? 1 : 0;
}

bdFlag& bdFlag::operator=(int value) {
    if (m_pFlags != nullptr) {
        *m_pFlags = value;
    }
    return *this;
}

bdFlag& bdFlag::operator=(const bdFlag& other) {
    return *this = other.GetFlags();
}

bool bdFlag::Is(int bit) const {
    return (static_cast<unsigned>(GetFlags()) & Mask(bit)) != 0;
}

void bdFlag::SetFlag(int bit) {
    *this = static_cast<int>(static_cast<unsigned>(GetFlags()) | Mask(bit));
}

void bdFlag::ResetFlag(int bit) {
    *this = static_cast<int>(static_cast<unsigned>(GetFlags()) & ~Mask(bit));
}

void bdFlag::SetOpposite(int bit) {
    *this = static_cast<int>(static_cast<unsigned>(GetFlags()) ^ Mask(bit));
}

bool bdFlag::IsAllOf(int first, ...) const {
    va_list bits;
    va_start(bits, first);
    bool all = true;
    for (int bit = first; bit != -1 && all; bit = va_arg(bits, int)) {
        all = Is(bit);
    }
    va_end(bits);
    return all;
}

bool bdFlag::IsOneOf(int first, ...) const {
    va_list bits;
    va_start(bits, first);
    bool one = false;
    for (int bit = first; bit != -1 && !one; bit = va_arg(bits, int)) {
        one = Is(bit);
    }
    va_end(bits);
    return one;
}

CFlag& CFlag::operator=(const CFlag& other) {
    bdFlag::operator=(other);
    m_Flags = other.m_Flags;
    return *this;
}
