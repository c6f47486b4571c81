#include "nvk/codes/iban.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

namespace {

// The check digits worked out the long way, on text: cleaning, the turn of
// the first four characters, letters replaced one by one with their values,
// and the reduction by nine digits at a time.
std::string Clean(const std::string& text) {
    std::string clean;
    for (char c : text) {
        c = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c;
        if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '#') {
            clean += c;
        }
    }
    return clean;
}

std::string Turn(const std::string& s) {
    const std::size_t head = std::min<std::size_t>(4, s.size());
    return s.substr(head) + s.substr(0, head);
}

// -1 when a placeholder is met and `reject` is set.
int WalkAndReduce(std::string c, bool reject) {
    for (std::size_t i = 0; i < c.size(); ++i) {
        if (c[i] == '#') {
            if (reject) {
                return -1;
            }
            std::replace(c.begin(), c.end(), '#', '0');
        } else if (c[i] >= 'A' && c[i] <= 'Z') {
            c.replace(c.find(c[i]), 1, std::to_string(c[i] - 55));
        }
    }
    while (c.size() > 9) {
        c = std::to_string(std::atoi(c.substr(0, 9).c_str()) % 97) + c.substr(9);
    }
    return std::atoi(c.c_str()) % 97;
}

std::string TextbookChecksum(const std::string& code) {
    const std::string c = Clean(code);
    if (c.size() < 4) {
        return "";
    }
    const std::string digits = std::to_string(98 - WalkAndReduce(Turn(c), false));
    return digits.size() == 1 ? "0" + digits : digits;
}

bool TextbookCheckSumIsOK(const sIBAN& iban) {
    std::string s = iban.szCountry;
    s.resize(std::max<std::size_t>(s.size(), 2), '#');
    s += iban.szCheckSum;
    s += iban.szContent;
    return WalkAndReduce(Clean(Turn(s)), true) == 1;
}

std::string RandomText(std::mt19937& random, std::size_t maxLength) {
    static const char kPool[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789abcxyz# -.\xE9";
    std::string text(random() % (maxLength + 1), ' ');
    for (char& c : text) {
        c = kPool[random() % (sizeof kPool - 1)];
    }
    return text;
}

sIBAN Record(const char* country, const char* checkSum, const char* content) {
    sIBAN record{};
    std::memcpy(record.szCountry, country, std::min<std::size_t>(std::strlen(country), 2));
    std::memcpy(record.szCheckSum, checkSum, std::min<std::size_t>(std::strlen(checkSum), 2));
    std::memcpy(record.szContent, content, std::min<std::size_t>(std::strlen(content), 30));
    return record;
}

TEST(IbanChecksum, EqualsTheTextAlgorithmOnRandomInput) {
    std::mt19937 random(97);
    for (int i = 0; i < 20000; ++i) {
        const std::string country = RandomText(random, 2);
        const std::string content = RandomText(random, 30);
        EIBAN iban;
        iban = Record(country.c_str(), RandomText(random, 2).c_str(), content.c_str());
        ASSERT_EQ(iban.CheckSumIsOK(), TextbookCheckSumIsOK(iban)) << country << '|' << content;

        if (country.size() == 2 && iban.SetIBAN(country.c_str(), content.c_str(), "")) {
            ASSERT_EQ(std::string(iban.szCheckSum), TextbookChecksum(country + "00" + content));
            ASSERT_EQ(iban.CheckSumIsOK(), TextbookCheckSumIsOK(iban));
        }
    }
}

TEST(Iban, CleaningAndTheWholeNumberSetter) {
    const EIBAN bare("FR7630006000011234567890189");
    const EIBAN dressed("iban fr76 3000-6000 0112 3456 7890 189");
    EXPECT_STREQ(dressed.szCountry, "FR");
    EXPECT_STREQ(dressed.szCheckSum, "76");
    EXPECT_STREQ(dressed.szContent, bare.szContent);
    EXPECT_TRUE(bare.IsValid());
    EXPECT_TRUE(dressed == bare);

    EIBAN iban;
    EXPECT_FALSE(iban.SetIBAN("", false));
    EXPECT_TRUE(iban.SetIBAN("", true));
    EXPECT_TRUE(iban.IsEmpty());
    EXPECT_FALSE(iban.SetIBAN("FR76", false));
    EXPECT_TRUE(iban.IsEmpty());
    EXPECT_TRUE(iban.SetIBAN("FR76", true));
    EXPECT_STREQ(iban.szCheckSum, "76");
    EXPECT_STREQ(iban.szContent, "");

    // 29 content characters pass the text setter, 30 only the field setter.
    const std::string c29(29, '1');
    EXPECT_TRUE(iban.SetIBAN(("XX00" + c29).c_str(), false));
    EXPECT_FALSE(iban.SetIBAN(("XX00" + c29 + "1").c_str(), false));
    EXPECT_TRUE(iban.IsEmpty());
    EXPECT_TRUE(iban.SetContent((c29 + "1").c_str()));
    EXPECT_FALSE(iban.SetContent((c29 + "12").c_str()));
    EXPECT_EQ(std::strlen(iban.szContent), 30u);
}

TEST(Iban, FieldSettersAndTheirAsymmetries) {
    EIBAN iban("DE89370400440532013000");
    ASSERT_TRUE(iban.IsValid());
    EXPECT_FALSE(iban.SetCheckSum("8"));
    EXPECT_FALSE(iban.SetCountryCode("DEU"));
    EXPECT_TRUE(iban.SetCheckSum("ab"));
    EXPECT_STREQ(iban.szCheckSum, "AB");
    EXPECT_TRUE(iban.SetCheckSum("89"));

    // The country keeps its case; reading folds it, and the national test,
    // which looks at the raw field, is skipped.
    EIBAN broken("FR0630006000011234567890188");  // a RIB with a wrong key
    ASSERT_TRUE(broken.CheckSumIsOK());
    EXPECT_FALSE(broken.IsValid());
    EXPECT_TRUE(broken.SetCountryCode("fr"));
    EXPECT_STREQ(broken.szCountry, "fr");
    EXPECT_EQ(broken.CountryCode(), "FR");
    EXPECT_TRUE(broken.HasRIB());
    EXPECT_TRUE(broken.IsValid());

    // A placeholder fails the check at once.
    EIBAN placeholder("FR7630006000011234567890189");
    std::memcpy(placeholder.szCheckSum, "##", 2);
    EXPECT_FALSE(placeholder.CheckSumIsOK());

    EIBAN three;
    EXPECT_FALSE(three.SetIBAN("FRA", "1", ""));
    EXPECT_FALSE(three.SetIBAN("FR", "1", "7"));
    EXPECT_TRUE(three.IsEmpty());

    // A record is taken raw by assignment, and cleaned by construction.
    const sIBAN record = Record("de", "89", "3704 0044 0532 0130 00");
    EXPECT_STREQ(EIBAN(record).szCountry, "DE");
    EIBAN spaced;
    spaced = record;
    EXPECT_STREQ(spaced.szCountry, "de");
    EXPECT_TRUE(spaced.Validate());
    EXPECT_STREQ(spaced.szContent, "370400440532013000");
}

TEST(Iban, OutputForms) {
    EIBAN iban("FR1420041010050500013M02606");
    EXPECT_EQ(iban.GetIBAN_EDI(), "FR1420041010050500013M02606");
    EXPECT_EQ(iban.GetIBAN_Printable(), "IBAN FR14 2004 1010 0505 0001 3M02 606");
    EXPECT_EQ(iban.PrintBlockCount(), 8u);
    EXPECT_EQ(iban.PrintBlock(0), "IBAN");
    EXPECT_EQ(iban.PrintBlock(1), "FR14");
    EXPECT_EQ(iban.PrintBlock(7), "606");
    EXPECT_EQ(iban.PrintBlock(8), "");
    EXPECT_EQ(iban.PrintBlock(0xFFFFFFFFu), "");

    // Invalid numbers print nothing whole, block by block they still show,
    // and all of them compare equal.
    EIBAN partial("FR14200410", true);
    EXPECT_EQ(partial.GetIBAN_EDI(), "");
    EXPECT_EQ(partial.PrintBlock(2), "2004");
    EXPECT_TRUE(partial == EIBAN("GB00NWBK60161331926819"));
    EXPECT_EQ(EIBAN().PrintBlockCount(), 0u);

    // The check digits are worked out with the real ones in place.
    iban.RecomputeCheckSum();
    EXPECT_STREQ(iban.szCheckSum, "97");
    partial.RecomputeCheckSum();
    EXPECT_STREQ(partial.szCheckSum, "14");
}

TEST(Iban, FrenchAccounts) {
    CRIB rib;
    rib.SetAgence("30006");
    rib.SetGuichet("00001");
    rib.SetCompte("12345678901");
    rib.SetCle("89");
    const EIBAN iban(rib);
    EXPECT_EQ(iban.GetIBAN_EDI(), "FR7630006000011234567890189");
    EXPECT_TRUE(iban.GetRIB() == rib);
    EXPECT_TRUE(iban.HasRIB());

    // Missing parts become placeholders: the number survives but is invalid.
    CRIB half;
    half.SetGuichet("00001");
    half.SetCle("89");
    const EIBAN partial(half);
    EXPECT_STREQ(partial.szContent, "################0000189");
    EXPECT_STREQ(partial.szCheckSum, "17");
    EXPECT_FALSE(partial.IsValid());
    const CRIB back = partial.GetRIB();
    EXPECT_STREQ(back.szAgence, "");
    EXPECT_STREQ(back.szCompte, "00001");
    EXPECT_STREQ(back.szCle, "89");

    CRIB agencyOnly;
    agencyOnly.SetAgence("300");
    EXPECT_STREQ(EIBAN(agencyOnly).szContent, "300");
    EXPECT_TRUE(EIBAN(CRIB()).IsEmpty());
}

TEST(Iban, SwissAccounts) {
    CSwissAccount account;
    account.SetClearing("762");
    account.SetCompte("011623852957");
    const EIBAN iban(account);
    EXPECT_EQ(iban.GetIBAN_EDI(), "CH9300762011623852957");
    EXPECT_FALSE(iban.HasSwissAccount());  // compares with "CR"
    EXPECT_EQ(iban.CountryCode(), "CH");
    const CSwissAccount back = iban.GetSwissAccount();
    EXPECT_STREQ(back.szClearing, "00762");
    EXPECT_STREQ(back.szCompte, "011623852957");

    EIBAN noAccount;
    ASSERT_TRUE(noAccount.SetIBAN("CH", "00762", ""));
    EXPECT_STREQ(noAccount.szCheckSum, "26");
    EXPECT_TRUE(noAccount.CheckSumIsOK());
    EXPECT_FALSE(noAccount.IsValid());
}

}  // namespace
