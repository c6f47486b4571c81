#include "nvk/codes/rib.h"

#include <gtest/gtest.h>

#include <cstring>

#include "nvk/codes/swiss_account.h"

namespace {

TEST(Rib, ExpectedKey) {
    EXPECT_EQ(CRIB::ExpectedKey("30006", "00001", "12345678901"), "89");
    EXPECT_EQ(CRIB::ExpectedKey("20041", "01005", "0500013M026"), "06");
    // A letter of the account counts as its table digit.
    EXPECT_EQ(CRIB::ExpectedKey("20041", "01005", "05000134026"), "06");
    EXPECT_EQ(CRIB::ExpectedKey("30006", "00001", "1234567890"), "");
    EXPECT_EQ(CRIB::ExpectedKey("30006", "00001", "12345 78901"), "");
    EXPECT_EQ(CRIB::ExpectedKey("30006", "00001", "1234567890a"), "");
    EXPECT_EQ(CRIB::ExpectedKey(nullptr, "0000130006", "12345678901"), "");
    // A sum divisible by 97 gives "97", never "00".
    EXPECT_EQ(CRIB::ExpectedKey("00000", "00000", "00000000000"), "97");
}

TEST(Rib, BothTestsAgreeOnOrdinaryAccounts) {
    for (const char* cle : {"89", "88"}) {
        const bool good = std::strcmp(cle, "89") == 0;
        EXPECT_EQ(CRIB::TestRIB("30006", "00001", "12345678901", cle), good ? 1 : 0);
        EXPECT_EQ(CRIB::TestRIBEx("30006", "00001", "12345678901", cle), good ? 1 : 0);
    }
    // An empty RIB is acceptable, and so are four nulls.
    EXPECT_EQ(CRIB::TestRIB("", "", "", ""), 1);
    EXPECT_EQ(CRIB::TestRIBEx("", "", "", ""), 1);
    EXPECT_EQ(CRIB::TestRIB(nullptr, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(CRIB::TestRIBEx(nullptr, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(CRIB::TestRIBEx("30006", nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(CRIB::TestRIB(nullptr, "00001", nullptr, nullptr), 0);
    // A zero key ends both tests before any arithmetic.
    EXPECT_EQ(CRIB::TestRIB("00000", "00000", "00000000000", "00"), 0);
    EXPECT_EQ(CRIB::TestRIBEx("00000", "00000", "00000000000", "00"), 0);
    // Ten zeros and an A test like ten zeros and a 1.
    const CString key = CRIB::ExpectedKey("12345", "12345", "00000000001");
    EXPECT_EQ(CRIB::TestRIBEx("12345", "12345", "0000000000A", key), 1);
    EXPECT_EQ(CRIB::TestRIB("12345", "12345", "0000000000A", key), 1);
}

TEST(Rib, WhereTheTwoTestsDiffer) {
    // A short account: the old test computes with what it reads.
    const CString key = CRIB::ExpectedKey("30006", "00001", "01234567890");
    EXPECT_EQ(CRIB::TestRIB("30006", "00001", "1234567890", key), 1);
    EXPECT_EQ(CRIB::TestRIBEx("30006", "00001", "1234567890", key), 0);
    // A letter in the bank code stops atof there; the exact test maps it.
    EXPECT_EQ(CRIB::TestRIBEx("3000F", "00001", "12345678901",
                              CRIB::ExpectedKey("3000F", "00001", "12345678901")),
              1);
    EXPECT_EQ(CRIB::TestRIB("3000F", "00001", "12345678901",
                            CRIB::ExpectedKey("3000F", "00001", "12345678901")),
              0);
    // A lower-case letter in the account: the exact test refuses it.
    EXPECT_EQ(CRIB::TestRIBEx("20041", "01005", "0500013m026", "06"), 0);
}

TEST(Rib, RecordAndComparison) {
    CRIB rib;
    EXPECT_TRUE(rib.IsEmpty());
    rib.SetNomBanque("Banque du Léman");
    rib.SetAgence("30006");
    rib.SetGuichet("00001");
    rib.SetCompte("12345678901");
    rib.SetCle("89");
    EXPECT_TRUE(rib.IsValid());
    EXPECT_TRUE(rib.IsValidEx());
    EXPECT_EQ(rib.ExpectedKey(), "89");

    CRIB other = rib;
    other.SetNomBanque("Autre banque");
    EXPECT_TRUE(rib == other);
    other.SetCle("88");
    EXPECT_FALSE(rib == other);

    // An overlong text runs on into the next fields, never past the record.
    other.SetGuichet("00001-12345678901");
    EXPECT_STREQ(other.szCompte, "12345678901");
    other.SetCle(CString('9', 40));
    EXPECT_EQ(other.szCle[2], 0);
    EXPECT_TRUE(CRIB::IsEmpty(nullptr, "1", "2", "3"));
}

TEST(SwissAccount, FieldsAndValidity) {
    CSwissAccount account;
    EXPECT_TRUE(account.IsEmpty());
    EXPECT_FALSE(account.IsValid());
    account.SetClearing("1234567");
    account.SetCompte("X");
    EXPECT_STREQ(account.szClearing, "12345");
    EXPECT_TRUE(account.IsValid());
    account.SetClearing("1234");
    EXPECT_FALSE(account.IsValid());
    EXPECT_FALSE(CSwissAccount::IsValid(nullptr, "X"));
    EXPECT_TRUE(CSwissAccount::IsEmpty("12345", nullptr));
    const CSwissAccount copy(account);
    EXPECT_TRUE(copy == account);
}

}  // namespace
