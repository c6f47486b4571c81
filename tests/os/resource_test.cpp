#include "os/api/resource.h"

#include <gtest/gtest.h>

#include <vector>

#include "os/api/error.h"
#include "os/api/locale.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

const char kNeutral[] = "neutral";
const char kFrench[] = "french";
const char kSwiss[] = "swiss";
const char kBelgian[] = "belgian";

// A module of our own making: "TXT" 1 in three languages, "TXT" 2 only in
// Belgian French, and a numbered type.
const ResourceEntry kEntries[] = {
    {"TXT", 0, nullptr, 1, 0x0807, sizeof kSwiss, kSwiss},
    {"TXT", 0, nullptr, 1, 0x040C, sizeof kFrench, kFrench},
    {"TXT", 0, nullptr, 1, 0x0000, sizeof kNeutral, kNeutral},
    {"TXT", 0, nullptr, 2, 0x080C, sizeof kBelgian, kBelgian},
    {nullptr, 10, "NAMED", 0, 0x0409, 0, kNeutral},
};
const ResourceTable kTable = {5, kEntries};

class ResourceTest : public ::testing::Test {
protected:
    void SetUp() override { RegisterResourceTable(m_Module, &kTable); }
    void TearDown() override { UnregisterResourceTable(&kTable); }

    const char* Text(HRSRC resource) {
        return static_cast<const char*>(LockResource(LoadResource(m_Module, resource)));
    }

    HMODULE m_Module = reinterpret_cast<HMODULE>(0x5000);
};

TEST_F(ResourceTest, ExactLanguageOrTheReasonWhyNot) {
    EXPECT_STREQ(Text(FindResourceExA(m_Module, "txt", MAKEINTRESOURCEA(1), 0x0807)), kSwiss);
    EXPECT_STREQ(Text(FindResourceExA(m_Module, "TXT", "#1", 0x040C)), kFrench);
    EXPECT_EQ(SizeofResource(m_Module, FindResourceExA(m_Module, "TXT", "#1", 0x040C)),
              sizeof kFrench);

    // A language that is missing gets the neutral resource, but never
    // another sublanguage of its own.
    EXPECT_STREQ(Text(FindResourceExA(m_Module, "TXT", MAKEINTRESOURCEA(1), 0x0409)), kNeutral);
    EXPECT_EQ(FindResourceExA(m_Module, "TXT", MAKEINTRESOURCEA(2), 0x040C), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_LANG_NOT_FOUND);
    EXPECT_EQ(FindResourceExA(m_Module, "TXT", MAKEINTRESOURCEA(3), 0x040C), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_NAME_NOT_FOUND);
    EXPECT_EQ(FindResourceExA(m_Module, RT_STRING, MAKEINTRESOURCEA(1), 0x040C), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_TYPE_NOT_FOUND);
    EXPECT_EQ(FindResourceA(reinterpret_cast<HMODULE>(0x6000), "#1", "TXT"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_DATA_NOT_FOUND);

    EXPECT_NE(FindResourceA(m_Module, "named", RT_RCDATA), nullptr);
    EXPECT_EQ(FindResourceA(m_Module, "#0", RT_RCDATA), nullptr);
    EXPECT_EQ(FreeResource(LoadResource(m_Module, FindResourceA(m_Module, "#1", "TXT"))), FALSE);
}

TEST_F(ResourceTest, SearchTakesNeutralThenTheThreadsLanguageThenAnyOther) {
    test::ScopedEnv swiss("LC_ALL", "de_CH");
    EXPECT_STREQ(Text(FindResourceA(m_Module, "#1", "TXT")), kNeutral);
    // LANG_NEUTRAL asks for the same search.
    EXPECT_STREQ(Text(FindResourceExA(m_Module, "TXT", "#1", 0)), kNeutral);
    // A Swiss French thread gets the Belgian French of the same language
    // before anything else.
    {
        test::ScopedEnv french("LC_ALL", "fr_CH");
        EXPECT_STREQ(Text(FindResourceA(m_Module, "#2", "TXT")), kBelgian);
    }
    test::ScopedEnv english("LC_ALL", "en_US");
    EXPECT_STREQ(Text(FindResourceA(m_Module, "#2", "TXT")), kBelgian);
}

TEST_F(ResourceTest, LanguagesAreEnumeratedInOrderUntilTheCallbackStops) {
    std::vector<WORD> seen;
    auto collect = [](HMODULE, LPCSTR, LPCSTR, WORD language, LONG_PTR param) -> BOOL {
        auto* list = reinterpret_cast<std::vector<WORD>*>(param);
        list->push_back(language);
        return list->size() < 2 ? TRUE : FALSE;
    };
    EXPECT_TRUE(EnumResourceLanguagesA(m_Module, "TXT", MAKEINTRESOURCEA(1), collect,
                                       reinterpret_cast<LONG_PTR>(&seen)));
    EXPECT_EQ(seen, (std::vector<WORD>{0x0000, 0x040C}));
    EXPECT_FALSE(EnumResourceLanguagesA(m_Module, "TXT", MAKEINTRESOURCEA(9), collect,
                                        reinterpret_cast<LONG_PTR>(&seen)));
}

TEST_F(ResourceTest, AnUnregisteredTableIsGone) {
    UnregisterResourceTable(&kTable);
    EXPECT_EQ(FindResourceA(m_Module, "#1", "TXT"), nullptr);
}

}  // namespace
}  // namespace nvk::os
