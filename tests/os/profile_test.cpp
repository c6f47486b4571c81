#include "os/api/profile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "os/api/error.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void Spit(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::vector<std::string> List(const char* buffer, DWORD length) {
    std::vector<std::string> names;
    for (DWORD i = 0; i < length; i += static_cast<DWORD>(names.back().size()) + 1) {
        names.emplace_back(buffer + i);
    }
    return names;
}

std::string Get(const char* section, const char* key, const std::string& file,
                const char* fallback = "none") {
    char buffer[256];
    GetPrivateProfileStringA(section, key, fallback, buffer, sizeof buffer, file.c_str());
    return buffer;
}

class ProfileTest : public ::testing::Test {
protected:
    test::TempFolder folder_;
    std::string file_ = folder_ / "test.ini";
};

TEST_F(ProfileTest, ReadsAsWindowsDoes) {
    Spit(file_,
         "orphan=1\n"
         "[Main]\r\n"
         "; Name=comment\r\n"
         "  Name  =  Ann Smith  \r\n"
         "Quoted=\"a b \"\r\n"
         "Single='x'\r\n"
         "Half=\"open\r\n"
         "Bare\r\n"
         "name=second\r\n"
         "[ other ]\n"
         "k=v\n"
         "[MAIN]\n"
         "Late=hidden\n");
    EXPECT_EQ(Get("main", "NAME", file_), "Ann Smith");
    EXPECT_EQ(Get("Main", "Quoted", file_), "a b ");
    EXPECT_EQ(Get("Main", "Single", file_), "x");
    EXPECT_EQ(Get("Main", "Half", file_), "\"open");
    EXPECT_EQ(Get("other", "k", file_), "v");
    EXPECT_EQ(Get("Main", "orphan", file_), "none");
    EXPECT_EQ(Get("Main", "Missing", file_, "dflt  "), "dflt");

    char buffer[256];
    DWORD length =
        GetPrivateProfileStringA(nullptr, "ignored", "x", buffer, sizeof buffer, file_.c_str());
    EXPECT_EQ(List(buffer, length)[0], "Main");
    EXPECT_EQ(buffer[length], '\0');
    length = GetPrivateProfileSectionA("Main", buffer, sizeof buffer, file_.c_str());
    EXPECT_EQ(List(buffer, length),
              (std::vector<std::string>{"Name=Ann Smith", "Quoted=\"a b \"", "Single='x'",
                                        "Half=\"open", "Bare", "name=second"}));

    const std::string missing = folder_ / "missing.ini";
    EXPECT_EQ(GetPrivateProfileStringA("Main", "Name", "d", buffer, sizeof buffer, missing.c_str()),
              1u);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(GetPrivateProfileSectionNamesA(buffer, sizeof buffer, missing.c_str()), 0u);
    EXPECT_EQ(buffer[0], '\0');
}

// A line without "=" is no key, though it is one of the section's lines.
TEST_F(ProfileTest, LinesWithoutAValueAreNoKeys) {
    Spit(file_, "[Main]\r\nHalf=\"open\r\nBare\r\nname=second\r\n");
    EXPECT_EQ(Get("Main", "Bare", file_), "none");
    char buffer[256];
    DWORD length =
        GetPrivateProfileStringA("MAIN", nullptr, "x", buffer, sizeof buffer, file_.c_str());
    EXPECT_EQ(List(buffer, length), (std::vector<std::string>{"Half", "name"}));
    length = GetPrivateProfileSectionA("Main", buffer, sizeof buffer, file_.c_str());
    EXPECT_EQ(List(buffer, length),
              (std::vector<std::string>{"Half=\"open", "Bare", "name=second"}));
}

// A second section of the same name is never read.
TEST_F(ProfileTest, RepeatedSectionsCountOnce) {
    Spit(file_, "[Main]\nk=1\n[ other ]\nk=v\n[MAIN]\nLate=hidden\n");
    EXPECT_EQ(Get("Main", "Late", file_), "none");
    char buffer[256];
    DWORD length =
        GetPrivateProfileStringA(nullptr, "ignored", "x", buffer, sizeof buffer, file_.c_str());
    EXPECT_EQ(List(buffer, length), (std::vector<std::string>{"Main", "other"}));
    length = GetPrivateProfileSectionNamesA(buffer, sizeof buffer, file_.c_str());
    EXPECT_EQ(List(buffer, length).size(), 2u);
}

TEST_F(ProfileTest, CutsWhatDoesNotFit) {
    Spit(file_, "[Alpha]\nkey=abcdef\n[Beta]\n");
    char buffer[16];
    std::memset(buffer, 'X', sizeof buffer);
    EXPECT_EQ(GetPrivateProfileStringA("Alpha", "key", "", buffer, 4, file_.c_str()), 3u);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_EQ(buffer[4], 'X');
    EXPECT_EQ(GetPrivateProfileStringA("Alpha", "no", "default", buffer, 4, file_.c_str()), 3u);
    EXPECT_STREQ(buffer, "def");

    // A list that would fill the buffer exactly is cut as well.
    EXPECT_EQ(GetPrivateProfileSectionNamesA(buffer, 12, file_.c_str()), 10u);
    EXPECT_EQ(GetPrivateProfileSectionNamesA(buffer, 13, file_.c_str()), 11u);
    EXPECT_EQ(GetPrivateProfileSectionA("Alpha", buffer, 5, file_.c_str()), 3u);
    EXPECT_EQ(std::string(buffer, 5), std::string("key\0\0", 5));

    buffer[0] = 'X';
    EXPECT_EQ(GetPrivateProfileStringA("Alpha", "key", "", buffer, 0, file_.c_str()), 0u);
    EXPECT_EQ(buffer[0], 'X');
    EXPECT_EQ(GetPrivateProfileSectionNamesA(buffer, 1, file_.c_str()), 0u);
    EXPECT_EQ(buffer[0], '\0');
}

// "Alpha\0Beta\0\0" needs 12 bytes; with fewer the last name is cut and
// followed by two nulls, and the count is the size less two.
TEST_F(ProfileTest, SectionNamesCutWithTwoNulls) {
    Spit(file_, "[Alpha]\nkey=abcdef\n[Beta]\n");
    char buffer[16];
    std::memset(buffer, 'X', sizeof buffer);
    EXPECT_EQ(GetPrivateProfileSectionNamesA(buffer, 9, file_.c_str()), 7u);
    EXPECT_EQ(std::string(buffer, 10), std::string("Alpha\0B\0\0X", 10));
    std::memset(buffer, 'X', sizeof buffer);
    EXPECT_EQ(GetPrivateProfileSectionNamesA(buffer, 11, file_.c_str()), 9u);
    EXPECT_EQ(std::string(buffer, 11), std::string("Alpha\0Bet\0\0", 11));
}

TEST_F(ProfileTest, ReadsNumbers) {
    Spit(file_, "[N]\na=42abc\nb=-5\nc=\nd= +7\ne=x1\nf=\"12\"\n");
    const char* f = file_.c_str();
    EXPECT_EQ(GetPrivateProfileIntA("N", "a", 9, f), 42u);
    EXPECT_EQ(GetPrivateProfileIntA("N", "c", 9, f), 9u);
    EXPECT_EQ(GetPrivateProfileIntA("N", "d", 9, f), 7u);
    EXPECT_EQ(GetPrivateProfileIntA("N", "e", 9, f), 0u);
    EXPECT_EQ(GetPrivateProfileIntA("N", "f", 9, f), 12u);
    EXPECT_EQ(GetPrivateProfileIntA("N", "missing", -1, f), 0xFFFFFFFFu);
    EXPECT_EQ(GetPrivateProfileIntA("N", "a", 3, (folder_ / "none.ini").c_str()), 3u);
}

TEST_F(ProfileTest, NegativeNumbersReadAsZero) {
    Spit(file_, "[N]\nb=-5\n");
    EXPECT_EQ(GetPrivateProfileIntA("N", "b", 9, file_.c_str()), 0u);
}

TEST_F(ProfileTest, WritesOnlyWhatChanges) {
    Spit(file_, "; head\n[A]\nx = 1\n\n; keep me\n[B]\ny=2");
    ASSERT_TRUE(WritePrivateProfileStringA("a", "X", "1", file_.c_str()));
    EXPECT_EQ(Slurp(file_), "; head\n[A]\nx = 1\n\n; keep me\n[B]\ny=2") << "same value";
    ASSERT_TRUE(WritePrivateProfileStringA("A", "z", "3", file_.c_str()));
    ASSERT_TRUE(WritePrivateProfileStringA("B", "w", "4", file_.c_str()));
    ASSERT_TRUE(WritePrivateProfileStringA("C", "v", "5", file_.c_str()));
    EXPECT_EQ(Slurp(file_),
              "; head\n[A]\nx = 1\nz=3\r\n\n; keep me\n[B]\ny=2\r\nw=4\r\n[C]\r\nv=5\r\n");
    ASSERT_TRUE(WritePrivateProfileStringA("A", "x", nullptr, file_.c_str()));
    ASSERT_TRUE(WritePrivateProfileStringA("B", nullptr, nullptr, file_.c_str()));
    EXPECT_EQ(Slurp(file_), "; head\n[A]\nz=3\r\n\n; keep me\n[C]\r\nv=5\r\n");
    ASSERT_TRUE(WritePrivateProfileSectionA("A", "p=1\0q\0", file_.c_str()));
    EXPECT_EQ(Slurp(file_), "; head\n[A]\np=1\r\nq\r\n\n; keep me\n[C]\r\nv=5\r\n");
    ASSERT_TRUE(WritePrivateProfileSectionA("C", nullptr, file_.c_str()));
    EXPECT_EQ(Get("C", "v", file_), "none");

    // Deleting from a file that isn't there makes nothing.
    const std::string missing = folder_ / "missing.ini";
    EXPECT_TRUE(WritePrivateProfileStringA("A", "x", nullptr, missing.c_str()));
    EXPECT_FALSE(std::filesystem::exists(missing));
    EXPECT_FALSE(WritePrivateProfileStringA("A", "x", "1", (folder_ / "no/dir.ini").c_str()));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_FALSE(WritePrivateProfileStringA(nullptr, "x", "1", file_.c_str()));
    EXPECT_TRUE(WritePrivateProfileStringA(nullptr, nullptr, nullptr, nullptr));
}

TEST_F(ProfileTest, NameWithoutFolderIsInTheWindowsFolder) {
    test::ScopedEnv drives("NVK_DRIVES", ("C=" + folder_.str()).c_str());
    ASSERT_TRUE(WritePrivateProfileStringA("S", "k", "v", "app.ini"));
    EXPECT_EQ(Slurp(folder_ / "Windows/app.ini"), "[S]\r\nk=v\r\n");
    EXPECT_EQ(Get("S", "k", "app.ini"), "v");
}

// Random writes against a model, the file read back whole after each one.
TEST_F(ProfileTest, AgreesWithAModel) {
    std::map<std::string, std::map<std::string, std::string>> model;  // lower-case names
    std::mt19937 random(7);
    const char* sections[] = {"S0", "s1", "S2"};
    const char* keys[] = {"k0", "K1", "k2", "K3"};
    for (int step = 0; step < 300; ++step) {
        const std::string section = sections[random() % 3];
        const std::string key = keys[random() % 4];
        std::string lowerSection = section;
        std::string lowerKey = key;
        lowerSection[0] = 's';
        lowerKey[0] = 'k';
        const std::string value = "v" + std::to_string(random() % 5);
        switch (random() % 8) {
            case 0:
                ASSERT_TRUE(
                    WritePrivateProfileStringA(section.c_str(), nullptr, nullptr, file_.c_str()));
                model.erase(lowerSection);
                break;
            case 1:
            case 2:
                ASSERT_TRUE(WritePrivateProfileStringA(section.c_str(), key.c_str(), nullptr,
                                                       file_.c_str()));
                if (model.contains(lowerSection)) {
                    model[lowerSection].erase(lowerKey);
                }
                break;
            case 3: {
                const std::string lines = key + "=" + value + '\0' + "k9=x" + '\0';
                ASSERT_TRUE(
                    WritePrivateProfileSectionA(section.c_str(), lines.c_str(), file_.c_str()));
                model[lowerSection] = {{lowerKey, value}, {"k9", "x"}};
                break;
            }
            default:
                ASSERT_TRUE(WritePrivateProfileStringA(section.c_str(), key.c_str(), value.c_str(),
                                                       file_.c_str()));
                model[lowerSection][lowerKey] = value;
        }
        char buffer[512];
        DWORD length = GetPrivateProfileSectionNamesA(buffer, sizeof buffer, file_.c_str());
        std::vector<std::string> names = List(buffer, length);
        ASSERT_EQ(names.size(), model.size()) << step;
        for (std::string& name : names) {
            length = GetPrivateProfileSectionA(name.c_str(), buffer, sizeof buffer, file_.c_str());
            std::map<std::string, std::string> found;
            for (std::string& line : List(buffer, length)) {
                line[0] = 'k';
                found[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
            }
            name[0] = 's';
            ASSERT_EQ(found, model[name]) << step;
        }
    }
}

TEST_F(ProfileTest, WritersTakeTurns) {
    auto write = [this](const char* prefix) {
        for (int i = 0; i < 40; ++i) {
            const std::string key = prefix + std::to_string(i);
            WritePrivateProfileStringA("S", key.c_str(), "1", file_.c_str());
        }
    };
    std::thread other(write, "b");
    write("a");
    other.join();
    char buffer[1024];
    const DWORD length =
        GetPrivateProfileStringA("S", nullptr, "", buffer, sizeof buffer, file_.c_str());
    EXPECT_EQ(List(buffer, length).size(), 80u);
}

TEST_F(ProfileTest, FileHeldAloneByAnotherProcess) {
    Spit(file_, "[S]\nk=v\n");
    test::HeldByHelper held(folder_, "\"" + file_ + "\" 0xC0000000 0 3");
    ASSERT_TRUE(held.holding());
    EXPECT_EQ(Get("S", "k", file_), "none");
    EXPECT_FALSE(WritePrivateProfileStringA("S", "k", "w", file_.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    held.Release();
    EXPECT_TRUE(WritePrivateProfileStringA("S", "k", "w", file_.c_str()));
    EXPECT_EQ(Get("S", "k", file_), "w");
}

}  // namespace
}  // namespace nvk::os
