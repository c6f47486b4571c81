// The library's own resources: what the applications read and count on.
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "nvk/context/string_load.h"
#include "os/api/resource.h"

namespace {

constexpr std::uint16_t kFrench = 1036;
constexpr std::uint16_t kSwiss = 2055;

std::string Text(unsigned id, std::uint16_t language) {
    Chaine value;
    nvk::os::HMODULE module = nvk::LibraryModule();
    if (nvk::os::FindResourceExA(module, nvk::os::RT_STRING,
                                 nvk::os::MAKEINTRESOURCEA(nvk::StringBlock(id)),
                                 language) == nullptr) {
        return "<no block>";
    }
    nvk::LoadStringIn(value, id, module, language);
    return value.c_str();
}

int Items(const std::string& list) {
    return static_cast<int>(std::count(list.begin(), list.end(), ';')) + 1;
}

std::string Resource(unsigned id, std::uint16_t language) {
    nvk::os::HMODULE module = nvk::LibraryModule();
    nvk::os::HRSRC found =
        nvk::os::FindResourceExA(module, "TXT", nvk::os::MAKEINTRESOURCEA(id), language);
    if (found == nullptr) {
        return {};
    }
    return std::string(
        static_cast<const char*>(nvk::os::LockResource(nvk::os::LoadResource(module, found))),
        nvk::os::SizeofResource(module, found));
}

TEST(LibraryStrings, ListsHaveTheirItemCounts) {
    EXPECT_EQ(Items(Text(64000, kFrench)), 27);
    EXPECT_EQ(Items(Text(64000, kSwiss)), 27);
    EXPECT_EQ(Items(Text(64010, kFrench)), 10);
    EXPECT_EQ(Items(Text(64010, kSwiss)), 4);
    EXPECT_EQ(Items(Text(64002, kSwiss)), 5);
    EXPECT_EQ(Items(Text(64011, kFrench)), 14);
    EXPECT_EQ(Items(Text(64011, kSwiss)), 14);
    EXPECT_EQ(Text(64009, kFrench), " (cf note n\xB0%d) ");
}

// Every translation keeps the format specifiers, line feeds and numbers of
// the French, and the "-" entries; German is written with "ss".
TEST(LibraryStrings, TranslationsKeepWhatTheProgramsFillIn) {
    const std::regex kept(R"(%[-#0 +]*[0-9]*(\.[0-9]+)?[lh]?[a-zA-Z%]|\n|\r|[0-9]+)");
    int compared = 0;
    for (unsigned id = 14000; id < 15000; ++id) {
        std::string french = Text(id, kFrench);
        std::string swiss = Text(id, kSwiss);
        if (french == "<no block>") {
            EXPECT_EQ(swiss, "<no block>") << id;
            continue;
        }
        EXPECT_EQ(swiss.find('\xDF'), std::string::npos) << id << ": " << swiss;
        EXPECT_EQ(french.empty(), swiss.empty()) << id;
        EXPECT_EQ(french == "-", swiss == "-") << id;
        std::string a;
        std::string b;
        for (std::sregex_iterator it(french.begin(), french.end(), kept), end; it != end; ++it) {
            a += it->str() + ' ';
        }
        for (std::sregex_iterator it(swiss.begin(), swiss.end(), kept), end; it != end; ++it) {
            b += it->str() + ' ';
        }
        EXPECT_EQ(a, b) << id << ":\n" << french << "\n" << swiss;
        ++compared;
    }
    EXPECT_GT(compared, 300);
}

TEST(LibraryTexts, TheCountryTableStandsAsItIs) {
    std::string countries = Resource(1, 0);
    EXPECT_TRUE(countries.starts_with("// "));
    EXPECT_NE(countries.find("\r\n// ISO3166-2=ISO3166-1, ISO3166-3, nom[,options]\r\n"),
              std::string::npos);
    EXPECT_NE(countries.find("\r\nES=056,ESP,\"ESPAGNE\",Phone=34,DEB=011,"
                             "BAN=\"A2,0-4,4-4,12-10,9-2,%1 %2 %4 %4\"\r\n"),
              std::string::npos);
    EXPECT_TRUE(countries.ends_with("\r\nTN=788,TUN,\"TUNISIE\",PHONE=216,DEB=212"));
    EXPECT_EQ(countries.find("\n\n"), std::string::npos);
    EXPECT_EQ(Resource(1, kFrench), countries);  // the neutral table stands for every language

    std::string civilities = Resource(2, kFrench);
    EXPECT_EQ(civilities, Resource(2, kSwiss));
    EXPECT_NE(civilities.find("\r\n2|Madame|Mesdames|Mme||F\r\n"), std::string::npos);
    EXPECT_TRUE(civilities.ends_with("\r\n4|Docteur|Docteurs|Dr||N\r\n"));
}

}  // namespace
