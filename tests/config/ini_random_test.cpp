// Random changes to one INI file, through the profile calls and through an
// object open for writing, checked against a map of sections to keys to
// values after every change, on a file read again from the disk.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <random>
#include <string>

#include "nvk/config/ini_file.h"

namespace {

namespace fs = std::filesystem;

// Names and keys ignore case: the model keeps them in lower case.
using Keys = std::map<std::string, std::string>;
using Model = std::map<std::string, Keys>;

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

class IniRandom {
public:
    explicit IniRandom(unsigned seed) : m_Random(seed) {}

    // Few names, in any case, so that changes meet the same lines.
    std::string Name(const char* names) {
        std::string name(1, names[Pick(3)]);
        if (Pick(2) == 0) {
            name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
        }
        return name;
    }
    std::string Value() {
        return std::string(1 + Pick(3), "xyz"[Pick(3)]) + std::to_string(Pick(100));
    }
    unsigned Pick(unsigned n) {
        return std::uniform_int_distribution<unsigned>(0, n - 1)(m_Random);
    }

private:
    std::mt19937 m_Random;
};

// What is on the disk: every section with a line, with its lines.
void ExpectTheFileHolds(const Chaine& file, Model& model) {
    std::erase_if(model, [](const auto& section) { return section.second.empty(); });
    EIniFile ini;
    ASSERT_TRUE(ini.Open(file, true));
    ASSERT_EQ(ini.GetSectionNB(), model.size());
    for (const auto& [name, keys] : model) {
        ASSERT_TRUE(ini.SectionExist(name.c_str())) << name;
        EIniFile::SectionDesc& section = ini[name.c_str()];
        ASSERT_EQ(section.GetNamedLinesNB(), keys.size()) << name;
        for (const auto& [key, value] : keys) {
            ASSERT_EQ(std::string(section[key.c_str()].c_str()), value) << name << "." << key;
        }
    }
    ASSERT_TRUE(ini.Close());
}

TEST(IniRandom, ChangesMatchAMapAfterEveryReopening) {
    const fs::path folder =
        fs::temp_directory_path() /
        ("nvk_ini_random_" + std::to_string(testing::UnitTest::GetInstance()->random_seed()));
    fs::remove_all(folder);
    fs::create_directories(folder);
    const Chaine file((folder / "random.ini").string().c_str());
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    IniRandom random(seed);
    Model model;
    for (int step = 0; step < 300; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        const std::string section = random.Name("abc");
        const std::string key = random.Name("kmn");
        const std::string value = random.Value();
        EIniFile ini;
        switch (random.Pick(6)) {
            case 0:
            case 1:
                ASSERT_EQ(ini.WritePrivateProfileStringA(section.c_str(), key.c_str(),
                                                         value.c_str(), file),
                          1u);
                model[Lower(section)][Lower(key)] = value;
                break;
            case 2:
                // An empty value removes the key, an empty key the section.
                if (random.Pick(3) == 0) {
                    ASSERT_EQ(ini.WritePrivateProfileStringA(section.c_str(), "", "", file), 1u);
                    model.erase(Lower(section));
                } else {
                    ASSERT_EQ(
                        ini.WritePrivateProfileStringA(section.c_str(), key.c_str(), "", file), 1u);
                    model[Lower(section)].erase(Lower(key));
                }
                break;
            case 3: {
                const int number = static_cast<int>(random.Pick(2000)) - 1000;
                ASSERT_EQ(ini.WritePrivateProfileInt(section.c_str(), key.c_str(), number, file),
                          1u);
                model[Lower(section)][Lower(key)] = std::to_string(number);
                break;
            }
            default:
                // Several changes under one open, then one write back.
                ASSERT_TRUE(ini.Open(file, false));
                for (unsigned i = random.Pick(4); i > 0; --i) {
                    const std::string s = random.Name("abc");
                    const std::string k = random.Name("kmn");
                    if (random.Pick(3) == 0) {
                        EXPECT_EQ(ini.RemoveLine(s.c_str(), k.c_str()),
                                  model.contains(Lower(s)) && model[Lower(s)].erase(Lower(k)) == 1);
                    } else {
                        const std::string v = random.Value();
                        ini[s.c_str()][k.c_str()] = v.c_str();
                        model[Lower(s)][Lower(k)] = v;
                    }
                }
                ASSERT_TRUE(ini.Close());
        }
        ExpectTheFileHolds(file, model);
        if (testing::Test::HasFatalFailure()) {
            break;
        }
    }
    fs::remove_all(folder);
}

}  // namespace
