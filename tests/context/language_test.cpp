// The language layer as French, Swiss German and English users see it: the
// environment names the user's locale, and each test builds the state that
// the process would fix at start-up under it.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "nvk/context/loc.h"
#include "nvk/context/locale.h"
#include "nvk/context/string_load.h"
#include "os/api/environment.h"
#include "os/api/locale.h"
#include "os/api/resource.h"

namespace {

using nvk::os::ResourceEntry;

// Counted UTF-16 strings, as a block holds them.
std::vector<char16_t> Block(const std::vector<std::u16string>& strings) {
    std::vector<char16_t> units;
    for (const std::u16string& text : strings) {
        units.push_back(static_cast<char16_t>(text.size()));
        units.insert(units.end(), text.begin(), text.end());
    }
    return units;
}

// A module with string block 1 (ids 0 to 15) in French and neutral, block 2
// in neutral only, block 3 cut short, and the framework block in three
// languages of which one is neutral.
class StringModule : public ::testing::Test {
protected:
    void SetUp() override {
        m_French = Block({u"z\u00E9ro", u"un"});
        m_Neutral = Block({u"zero", u"one"});
        m_NeutralOnly = Block({u"", u"", u"dix-huit"});
        m_Short = {5, u'a'};
        m_Entries = {
            {nullptr, 6, nullptr, 1, 0x040C, Size(m_French), m_French.data()},
            {nullptr, 6, nullptr, 1, 0x0000, Size(m_Neutral), m_Neutral.data()},
            {nullptr, 6, nullptr, 2, 0x0000, Size(m_NeutralOnly), m_NeutralOnly.data()},
            {nullptr, 6, nullptr, 3, 0x040C, Size(m_Short), m_Short.data()},
            {nullptr, 6, nullptr, 3585, 0x0000, Size(m_Neutral), m_Neutral.data()},
            {nullptr, 6, nullptr, 3585, 0x0807, Size(m_Neutral), m_Neutral.data()},
            {nullptr, 6, nullptr, 3585, 0x040C, Size(m_Neutral), m_Neutral.data()},
        };
        m_Table = {static_cast<nvk::os::DWORD>(m_Entries.size()), m_Entries.data()};
        nvk::os::RegisterResourceTable(m_Module, &m_Table);
    }
    void TearDown() override { nvk::os::UnregisterResourceTable(&m_Table); }

    static nvk::os::DWORD Size(const std::vector<char16_t>& units) {
        return static_cast<nvk::os::DWORD>(units.size() * 2);
    }
    std::string Load(unsigned id, std::uint16_t language, bool* loaded = nullptr) {
        Chaine value("stale");
        bool result = nvk::LoadStringIn(value, id, m_Module, language);
        if (loaded != nullptr) {
            *loaded = result;
        }
        return value.c_str();
    }

    nvk::os::HMODULE m_Module = reinterpret_cast<nvk::os::HMODULE>(0x7000);
    std::vector<char16_t> m_French, m_Neutral, m_NeutralOnly, m_Short;
    std::vector<ResourceEntry> m_Entries;
    nvk::os::ResourceTable m_Table{};
};

TEST_F(StringModule, TheAskedLanguageFirstThenTheSystemsSearch) {
    bool loaded = false;
    EXPECT_EQ(Load(0, 0x040C, &loaded), "z\xE9ro");  // id 0: block 1, place 0
    EXPECT_TRUE(loaded);
    EXPECT_EQ(Load(1, 0x0807), "one");  // no Swiss block: the neutral one
    EXPECT_EQ(Load(18, 0x040C), "dix-huit");
    EXPECT_EQ(Load(18, 0), "dix-huit");  // LANG_NEUTRAL searches by itself

    // A French block without the string doesn't fall back.
    EXPECT_EQ(Load(5, 0x040C, &loaded), "");
    EXPECT_FALSE(loaded);
    EXPECT_EQ(Load(33, 0x040C, &loaded), "");  // the walk leaves the block
    EXPECT_FALSE(loaded);
    EXPECT_EQ(Load(64, 0x040C, &loaded), "");  // no block at all
    EXPECT_FALSE(loaded);
}

TEST_F(StringModule, ResourceLanguagesLeaveOutTheNeutralBlock) {
    PTableau<std::uint16_t> languages = ELoc::ResourceLanguagesOf(m_Module);
    ASSERT_EQ(languages.Size(), 2);
    EXPECT_EQ(languages[0], 0x040C);
    EXPECT_EQ(languages[1], 0x0807);
}

// The environment of one user for the length of a test.
class User : public ::testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG", "cdCountry"}) {
            char value[256];
            nvk::os::DWORD n = nvk::os::GetEnvironmentVariableA(name, value, sizeof value);
            m_Saved.emplace_back(name, n > 0 && n < sizeof value ? value : "");
            nvk::os::SetEnvironmentVariableA(name, nullptr);
        }
    }
    void TearDown() override {
        for (const auto& [name, value] : m_Saved) {
            nvk::os::SetEnvironmentVariableA(name.c_str(), value.empty() ? nullptr : value.c_str());
        }
    }
    static std::string Library(unsigned id, const ELoc& loc) {
        Chaine value;
        nvk::LoadStringIn(value, id, nvk::FindStringModule(id), loc.LangID);
        return value.c_str();
    }

    std::vector<std::pair<std::string, std::string>> m_Saved;
};

TEST_F(User, FrenchAndSwissGermanUsersGetTheirTexts) {
    nvk::os::SetEnvironmentVariableA("LANG", "fr_FR.UTF-8");
    ELoc french;
    EXPECT_EQ(french.GetLangID(), 1036);
    EXPECT_EQ(french.GetThreadLCID(), 1036u);
    EXPECT_EQ(Library(14014, french), "Le fichier %s existe d\xE9j\xE0. Voulez-vous continuer ?");
    EXPECT_EQ(std::string(french.GetLocale().Cache().GetMonthNames(false)[1].c_str()),
              "f\xE9vrier");

    nvk::os::SetEnvironmentVariableA("LANG", "de_CH.UTF-8");
    ELoc swiss;
    EXPECT_EQ(swiss.GetLangID(), 2055);
    EXPECT_EQ(Library(14014, swiss), "Die Datei %s existiert bereits. Wollen Sie weiterfahren?");
    EXPECT_EQ(Library(64001, swiss), "Wert ung\xFCltig;Wert ausserhalb der Grenzen");
    EXPECT_EQ(std::string(swiss.GetLocale().Cache().GetMonthNames(true)[2].c_str()), "M\xE4r");
    // What was fixed at construction stays.
    EXPECT_EQ(french.GetLangID(), 1036);

    // An English user has no texts of the library's own but the DDE ones,
    // and gets the others through the search.
    nvk::os::SetEnvironmentVariableA("LANG", "en_US");
    ELoc english;
    EXPECT_EQ(english.GetLangID(), 1033);
    EXPECT_EQ(Library(14520, english), "DDE Error");
    EXPECT_FALSE(Library(14014, english).empty());
}

TEST_F(User, CountryIsReadUntilItIsSet) {
    ELoc loc;
    EXPECT_TRUE(loc.GetCountry().IsEmpty());
    nvk::os::SetEnvironmentVariableA("cdCountry", "CH");
    EXPECT_STREQ(loc.GetCountry().c_str(), "CH");
    nvk::os::SetEnvironmentVariableA("cdCountry", "FR");
    EXPECT_STREQ(loc.GetCountry().c_str(), "CH");
}

TEST_F(User, DefaultLocalesShareTheirCache) {
    nvk::os::SetEnvironmentVariableA("LANG", "de_CH");
    ELocale system(ELocale::kSystemDefault);
    ELocale same(nvk::os::GetSystemDefaultLCID());
    ELocale user(ELocale::kUserDefault);
    EXPECT_EQ(system.Lcid, nvk::os::GetSystemDefaultLCID());
    EXPECT_EQ(&system.Cache(), &same.Cache());
    EXPECT_EQ(&system.Cache() == &user.Cache(), system.Lcid == user.Lcid);
    EXPECT_NE(&system.Cache(), &ELocale(system.Lcid == 1036 ? 2055 : 1036).Cache());
}

TEST(SortableLocale, FixedDateFormatAndEnglishNames) {
    LanguageCache& sortable = ELocale(0x07FF).Cache();
    EXPECT_STREQ(sortable.GetLocaleItem(31).c_str(), "yyyyMMdd");
    EXPECT_STREQ(sortable.GetLocaleItem(33).c_str(), "2");
    EXPECT_STREQ(sortable.GetLocaleItem(38 | nvk::os::LOCALE_RETURN_NUMBER).c_str(), "1");
    EXPECT_STREQ(sortable.GetLocaleItem(39).c_str(), "1");
    EXPECT_STREQ(sortable.GetMonthNames(false)[0].c_str(), "January");
    EXPECT_STREQ(sortable.GetMonthNames(true)[11].c_str(), "Dec");
    EXPECT_EQ(sortable.CalendarType, 1);

    // Another sublanguage answers nothing.
    LanguageCache& other = ELocale(0x0BFF).Cache();
    EXPECT_TRUE(other.GetLocaleItem(31).IsEmpty());
    EXPECT_TRUE(other.GetMonthNames(false)[0].IsEmpty());
    EXPECT_EQ(other.GetMonthNames(false).Size(), 12);
}

TEST(StringId, AValueBuiltFromAnIdTakesTheProcesssText) {
    const bool swiss = ELoc::Get().GetLangID() == 2055;
    Chaine value(reinterpret_cast<const char*>(14014));
    std::string expected = swiss ? "Die Datei %s existiert bereits. Wollen Sie weiterfahren?"
                                 : "Le fichier %s existe d\xE9j\xE0. Voulez-vous continuer ?";
    EXPECT_EQ(std::string(value.c_str()), expected);
    EXPECT_EQ(std::string(Chaine(14014u, nvk::LibraryModule()).c_str()), expected);
    Chaine formatted;
    formatted.FormatId(14955, nvk::LibraryModule(), 3, 7);
    EXPECT_EQ(std::string(formatted.c_str()),
              swiss ? "Element 3 von insgesamt 7" : "El\xE9ment 3 sur un total de 7");
    EXPECT_TRUE(Chaine(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(Chaine(reinterpret_cast<const char*>(14900)).IsEmpty());
}

}  // namespace
