#include <gtest/gtest.h>

#include <string>

#include "nvk/core/chaine.h"
#include "os/api/environment.h"

namespace {

TEST(ChaineSystem, LocaleComparison) {
    const Chaine ete("\xE9t\xE9");
    EXPECT_EQ(ete.CompareLocale("ete", 0, 1036), 1);
    EXPECT_EQ(ete.CompareLocale("f", 0, 1036), -1);
    EXPECT_EQ(Chaine("abc").CompareLocale("ABC", nvk::os::NORM_IGNORECASE, 2055), 0);
    EXPECT_EQ(Chaine("a").CompareLocale("b", 0, 0x1234), -2);  // the system can't compare
}

TEST(ChaineSystem, CodePagesKeepTheLength) {
    const Chaine ansi("\xE9l\xE8ve \x80");
    Chaine oem(ansi);
    oem.AnsiToOem();
    EXPECT_STREQ(ansi, "\xE9l\xE8ve \x80");  // the copy is separate
    EXPECT_EQ(static_cast<unsigned char>(oem[0]), 0x82);
    EXPECT_EQ(oem.Length(), ansi.Length());
    Chaine back("\x82l\x8Ave");
    back.OemToAnsi();
    EXPECT_STREQ(back, "\xE9l\xE8ve");

    // UTF-8 needs two bytes for each accented letter: the text is cut.
    Chaine utf8("\xE9t\xE9");
    utf8.ToCodePage(nvk::os::CP_UTF8);
    EXPECT_EQ(utf8.Length(), 3);
    EXPECT_STREQ(utf8, "\xC3\xA9t");
    Chaine oemPage("\xE9\x80x");
    oemPage.ToCodePage(850);
    EXPECT_EQ(oemPage.Length(), 3);
    EXPECT_EQ(static_cast<unsigned char>(oemPage[0]), 0x82);
    Chaine empty;
    EXPECT_TRUE(empty.ToCodePage(nvk::os::CP_UTF8).IsEmpty());
}

TEST(ChaineSystem, EnvironmentUserAndResources) {
    ASSERT_TRUE(nvk::os::SetEnvironmentVariableA("NVK_CHAINE_TEST", "v\xE9rit\xE9"));
    Chaine value;
    EXPECT_STREQ(value.GetEnv("NVK_CHAINE_TEST"), "v\xE9rit\xE9");
    EXPECT_TRUE(value.GetEnv("NVK_CHAINE_MISSING").IsEmpty());
    const std::string longValue(300, 'x');
    ASSERT_TRUE(nvk::os::SetEnvironmentVariableA("NVK_CHAINE_TEST", longValue.c_str()));
    EXPECT_EQ(value.GetEnv("NVK_CHAINE_TEST").Length(), 300);

    Chaine text("[%NVK_CHAINE_TEST%|%NVK_CHAINE_MISSING%]");
    text.ExpandEnv();
    EXPECT_EQ(std::string(text), "[" + longValue + "|%NVK_CHAINE_MISSING%]");
    nvk::os::SetEnvironmentVariableA("NVK_CHAINE_TEST", nullptr);

    EXPECT_FALSE(Chaine().GetUserName().IsEmpty());

    // 14520 exists in one language only, 14900 has no text.
    Chaine loaded("old");
    EXPECT_TRUE(loaded.LoadString(14520));
    EXPECT_STREQ(loaded, "DDE Error");
    EXPECT_FALSE(loaded.LoadString(14900));
    EXPECT_TRUE(loaded.IsEmpty());
    EXPECT_TRUE(Chaine("old").FormatId(14900, nullptr, 1, 2).IsEmpty());
}

}  // namespace
