#include "nvk/core/dictionnary.h"

#include <gtest/gtest.h>

namespace {

TEST(DictionnaryTest, NoCaseKeysAreOneKey) {
    FDictionnaryNoCase<Chaine> dico;
    dico["Paths"] = "first";
    dico["PATHS"] = "second";
    dico["DBServers"] = "db";
    EXPECT_EQ(dico.Count(), 2);
    EXPECT_NE(dico.Find("paths"), -1);
    const int paths = dico.Find("PATHS");
    ASSERT_NE(paths, -1);
    EXPECT_STREQ(dico.GetKey(paths), "Paths");  // the first spelling stands
    EXPECT_STREQ(dico.GetValue(paths), "second");
    EXPECT_STREQ(dico.GetKey(0), "DBServers");

    // a, b, c: renaming a to bb gives b, bb, c; to z gives b, z, c.
    FDictionnaryNoCase<Chaine> letters;
    for (const char* key : {"a", "b", "c"}) {
        letters[key] = key;
    }
    EXPECT_FALSE(letters.Rename("a", "B"));
    EXPECT_TRUE(letters.Rename("a", "bb"));
    EXPECT_STREQ(letters.GetKey(0), "b");
    EXPECT_STREQ(letters.GetKey(1), "bb");
    EXPECT_STREQ(letters.GetValue(1), "a");
    EXPECT_TRUE(letters.Rename("bb", "z"));
    EXPECT_STREQ(letters.GetKey(1), "z");
    EXPECT_STREQ(letters.GetKey(2), "c");
}

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
