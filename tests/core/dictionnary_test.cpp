#include "nvk/core/dictionnary.h"

#include <gtest/gtest.h>

namespace {

TEST(DictionnaryTest, CaseSensitiveFormsCompareBytes) {
    FDictionnary<int> dico;
    dico["b"] = 1;
    dico["B"] = 2;
    EXPECT_EQ(dico.Count(), 2);
    EXPECT_STREQ(dico.GetKey(0), "B");

    EAssociative<EPair<Chaine, int>> plain;
    plain["x"] = 1;
    EXPECT_EQ(plain.Find("X"), -1);
    EXPECT_EQ(plain.Find("x"), 0);
}

TEST(DictionnaryTest, ArraysOfChaineShareTheirTexts) {
    PTableau<Chaine> texts;
    texts.Add(Chaine("one"));
    texts.Add(Chaine("two"));
    PTableau<Chaine> copy = texts;
    copy[0] = "uno";
    EXPECT_STREQ(texts[0], "one");
    EXPECT_EQ(texts[1].c_str(), copy[1].c_str());  // the copy shares the text
}

}  // namespace
