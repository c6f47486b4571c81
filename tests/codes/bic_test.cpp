#include "nvk/codes/bic.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(Bic, WholeCodeSetter) {
    EBIC eight("DEUTDEFF");
    EXPECT_STREQ(eight.szBank, "DEUT");
    EXPECT_STREQ(eight.szLocation, "FF");
    EXPECT_STREQ(eight.szBranch, "");
    EXPECT_TRUE(eight.IsValid());
    EXPECT_FALSE(eight.Validate());  // the branch setter refuses an empty branch

    EBIC eleven("deutdeff500");
    EXPECT_STREQ(eleven.szBranch, "500");
    EXPECT_TRUE(eleven.Validate());
    EXPECT_EQ(eleven.GetBIC(), "DEUTDEFF500");

    // Length counts before cleaning: hyphens count, blanks too.
    EBIC hyphens("deut-de-ff");
    EXPECT_EQ(hyphens.GetBIC(), "DEUTDEFF");
    EBIC spaced;
    EXPECT_FALSE(spaced.SetBIC("DEUT DE FF 500", false));
    EXPECT_TRUE(spaced.SetBIC("DEUT DE FF 500", true));
    EXPECT_TRUE(spaced == eleven);

    EBIC seven;
    EXPECT_FALSE(seven.SetBIC("DEUTDEF", false));
    EXPECT_TRUE(seven.IsEmpty());
    EXPECT_TRUE(seven.SetBIC("DEUTDEF", true));
    EXPECT_STREQ(seven.szLocation, "F");
    EXPECT_FALSE(seven.IsValid());

    EXPECT_TRUE(EBIC().IsEmpty());
    EXPECT_FALSE(EBIC().IsValid());
}

TEST(Bic, PartSetters) {
    EBIC bic("DEUTDEFF500");
    EXPECT_FALSE(bic.SetBranchCode(""));
    EXPECT_FALSE(bic.SetBankCode("DEU"));
    EXPECT_STREQ(bic.szBank, "DEUT");
    EXPECT_TRUE(bic.SetLocationCode("m-"));
    EXPECT_STREQ(bic.szLocation, "M");
    EXPECT_FALSE(bic.IsValid());

    EXPECT_FALSE(bic.SetBIC("BNPA", "FR", "PP", "X"));
    EXPECT_TRUE(bic.SetBIC("bnpa", "fr", "pp", ""));
    EXPECT_EQ(bic.GetBIC(), "BNPAFRPP");

    sBIC record{};
    std::memcpy(record.szBank, "bn a", 4);
    EBIC assigned;
    assigned = record;
    EXPECT_STREQ(assigned.szBank, "bn a");
    EXPECT_EQ(assigned.BankCode(), "BNA");
    EXPECT_STREQ(EBIC(record).szBank, "");  // four characters fail the length
}

}  // namespace
