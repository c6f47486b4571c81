#include "nvk/core/big_number.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using Limbs = std::vector<std::uint32_t>;

Limbs LimbsOf(const char* text) {
    const EBigNumber number(text);
    Limbs limbs;
    for (int i = 0; i < number.Limbs.Size(); ++i) {
        limbs.push_back(number.Limbs[i]);
    }
    return limbs;
}

TEST(BigNumber, ParsesGroupsOfNineFromTheRight) {
    EXPECT_EQ(EBigNumber("").Limbs.Body(), nullptr);
    EXPECT_EQ(EBigNumber("000").Limbs.Body(), nullptr);
    EXPECT_EQ(EBigNumber("000").Modulo(97), 0);
    EXPECT_EQ(LimbsOf("123456789"), Limbs({123456789}));
    EXPECT_EQ(LimbsOf("1234567890"), Limbs({234567890, 1}));
    EXPECT_EQ(LimbsOf("1000000000"), Limbs({0, 1}));
    // No validation: atoi reads a group as far as it can, blanks removed.
    EXPECT_EQ(LimbsOf("12x456789"), Limbs({12}));
    EXPECT_EQ(LimbsOf("1 2"), Limbs({12}));
}

TEST(BigNumber, ModuloKeepsTheSign) {
    EXPECT_EQ(EBigNumber("-98").Modulo(97), -1);
    EXPECT_EQ(EBigNumber("+98").Modulo(97), 1);
    EXPECT_EQ(EBigNumber("1000000000000000001").Modulo(97),
              static_cast<int>(1000000000000000001ULL % 97));
    EXPECT_EQ(EBigNumber("1850578006084").Modulo(97), static_cast<int>(1850578006084LL % 97));
    // A remainder of 2^31 by a larger divisor, negated in 64 bits.
    EXPECT_EQ(EBigNumber("-2147483648").Modulo(2147483649u), INT32_MIN);
    EXPECT_EQ(EBigNumber("-4294967294").Modulo(4294967295u), 2);
}

}  // namespace
