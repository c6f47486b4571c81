#include "nvk/codes/nir.h"

#include <gtest/gtest.h>

#include <string>

#include "nvk/core/big_number.h"

namespace {

int KeyOf(const char* digits) {
    return 97 - EBigNumber(digits).Modulo(97);
}

TEST(Nir, KeysAndValidity) {
    CNIR nir;
    const int key = KeyOf("1850578006084");
    EXPECT_TRUE(nir.Set("1850578006084", key));
    EXPECT_FALSE(nir.Set("1850578006084", key % 97 + 1));
    EXPECT_EQ(nir.GetStoredKey(), key % 97 + 1);

    // A remainder of 0 gives the key 97.
    EXPECT_TRUE(nir.Set("0000000000097", 97));
    EXPECT_TRUE(nir.Set("0000000000000", "97"));

    // Corsica: "2A" counts as 19 and "2B" as 18, in capitals only.
    EXPECT_TRUE(nir.Set("185052A006084", KeyOf("1850519006084")));
    EXPECT_TRUE(nir.Set("185052B006084", KeyOf("1850518006084")));
    EXPECT_FALSE(nir.Set("185052a006084", KeyOf("1850519006084")));

    // The provisional mark counts as 796592, once.
    EXPECT_TRUE(nir.Set("1PROVIS000012", KeyOf("1796592000012")));
    EXPECT_TRUE(nir.IsTemporary());
    EXPECT_FALSE(nir.Set("PROVISPROVIS1", KeyOf("796592PROVIS1")));

    // A stray letter is refused even when the key happens to fit.
    EXPECT_FALSE(nir.Set("18505780060X4", KeyOf("18505780060")));
}

TEST(Nir, SettingFromOneText) {
    CNIR nir;
    EXPECT_FALSE(nir.Set("185"));
    EXPECT_STREQ(nir.szNum, "1850000000000");
    EXPECT_STREQ(nir.szKey, "0");

    const std::string key = std::to_string(KeyOf("1850578006084"));
    EXPECT_TRUE(nir.Set(("1850578006084" + key).c_str()));
    EXPECT_STREQ(nir.szKey, key.c_str());
    EXPECT_FALSE(nir.Set(("1850578006084" + key + "1").c_str()));
    EXPECT_STREQ(nir.szKey, "0");

    nir.Set("1850578006084", 7);
    EXPECT_STREQ(nir.szKey, "07");
}

TEST(Nir, Display) {
    CNIR nir;
    nir.Set("1850578006084", 12);
    EXPECT_EQ(nir.GetDisplay(0), "1850578006084");
    EXPECT_EQ(nir.GetDisplay('-'), "1850578006084-00");
    nir.Set("1850578006084", KeyOf("1850578006084"));
    CString out;
    nir.GetDisplay(out, ' ');
    EXPECT_EQ(out, CString("1850578006084 ") + nir.szKey);
}

}  // namespace
