// Random changes to one INI file, through the profile calls and through an
// object open for writing, checked against a model of the file's text after
// every change, on a file read again from the disk. The file starts out as
// a text that a rewrite changes (blank lines, bare line feeds, blanks before
// names, comments among the data, names given twice, parts of a section
// apart), so that sections written as they were read meet sections built
// again from their lines.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "nvk/config/ini_file.h"

namespace {

namespace fs = std::filesystem;

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool Same(const std::string& a, const std::string& b) {
    return Lower(a) == Lower(b);
}

// A section as the file holds it: names keep their first spelling and their
// first place, and the unnamed lines follow the named ones.
struct Section {
    std::string name;
    std::vector<std::string> comments;
    std::vector<std::pair<std::string, std::string>> lines;
    std::vector<std::string> unnamed;

    bool HasLines() const { return !comments.empty() || !lines.empty() || !unnamed.empty(); }
    std::string* Value(const std::string& key) {
        const auto line = std::find_if(lines.begin(), lines.end(),
                                       [&](const auto& l) { return Same(l.first, key); });
        return line == lines.end() ? nullptr : &line->second;
    }
};

struct Model {
    std::string preamble;
    std::vector<Section> sections;

    Section* Find(const std::string& name) {
        const auto section = std::find_if(sections.begin(), sections.end(),
                                          [&](const Section& s) { return Same(s.name, name); });
        return section == sections.end() ? nullptr : &*section;
    }
    Section& Get(const std::string& name) {
        Section* section = Find(name);
        return section != nullptr ? *section : sections.emplace_back(Section{name, {}, {}, {}});
    }
    void Set(const std::string& section, const std::string& key, const std::string& value) {
        Section& s = Get(section);
        std::string* old = s.Value(key);
        if (old != nullptr) {
            *old = value;
        } else {
            s.lines.emplace_back(key, value);
        }
    }
    bool Remove(const std::string& section, const std::string& key) {
        Section* s = Find(section);
        return s != nullptr &&
               std::erase_if(s->lines, [&](const auto& l) { return Same(l.first, key); }) == 1;
    }
    std::string Text() const {
        std::string text = preamble;
        for (std::size_t i = 0; i < sections.size(); ++i) {
            const Section& s = sections[i];
            text += (i > 0 ? "\r\n[" : "[") + s.name + "]\r\n";
            for (const std::string& comment : s.comments) {
                text += ";" + comment + "\r\n";
            }
            for (const auto& [key, value] : s.lines) {
                text += key + "=" + value + "\r\n";
            }
            for (const std::string& line : s.unnamed) {
                text += line + "\r\n";
            }
        }
        return text;
    }
};

class IniRandom {
public:
    explicit IniRandom(unsigned seed) : m_Random(seed) {}

    // Few names, in any case, so that changes meet the same lines.
    std::string Name(const char* names) {
        std::string name(1, names[Pick(static_cast<unsigned>(std::strlen(names)))]);
        if (Pick(2) == 0) {
            name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
        }
        return name;
    }
    std::string Value() {
        return std::string(1 + Pick(3), "xyz"[Pick(3)]) + (Pick(4) == 0 ? " = " : "") +
               std::to_string(Pick(100));
    }
    unsigned Pick(unsigned n) {
        return std::uniform_int_distribution<unsigned>(0, n - 1)(m_Random);
    }

    // A text that reads as `model`, with what a rewrite drops or puts right;
    // each section takes one kind of these changes, or none.
    std::string Noisy(const Model& model) {
        std::string text;
        bool ends = false;
        const auto line = [&](const std::string& body) {
            static const char* const wrong[] = {"\n", "\r\r\n", "\r\n\r\n", "\r\n\n"};
            const bool noise = ends && Pick(2) == 0;
            text += (noise && Pick(4) == 0 ? "\r" : "") + body + (noise ? wrong[Pick(4)] : "\r\n");
        };
        line(model.preamble.substr(0, model.preamble.size() - 2));
        std::vector<std::pair<std::string, std::vector<std::string>>> later;
        for (const Section& s : model.sections) {
            const unsigned kind = Pick(7);
            ends = kind == 1;
            const bool mixed = kind == 2;
            const bool twice = kind == 3;
            const bool lead = kind == 4;
            std::vector<std::string> body;
            for (const std::string& comment : s.comments) {
                body.push_back(";" + comment);
            }
            // Named and unnamed lines in any order that keeps each kind's own.
            std::size_t named = 0;
            std::size_t unnamed = 0;
            while (named < s.lines.size() || unnamed < s.unnamed.size()) {
                const std::string blanks(lead && Pick(2) == 0 ? 2 : 0, ' ');
                if (unnamed == s.unnamed.size() ||
                    (named < s.lines.size() && (!mixed || Pick(2) == 0))) {
                    const auto& [key, value] = s.lines[named++];
                    if (twice && Pick(2) == 0) {
                        body.push_back(key + "=lost");
                    }
                    body.push_back(blanks + key + "=" + value);
                } else {
                    body.push_back(blanks + s.unnamed[unnamed++]);
                }
                if (kind == 6 && Pick(2) == 0) {
                    body.push_back(std::string(Pick(2), ' ') + ";lost");
                }
            }
            text += "[" + s.name + "]" + (Pick(4) == 0 ? " tail" : "") + "\r\n";
            const std::size_t split = body.size() - (kind == 5 ? body.size() / 2 : 0);
            for (std::size_t i = 0; i < split; ++i) {
                line(body[i]);
            }
            if (split < body.size()) {
                later.emplace_back(Lower(s.name), std::vector(body.begin() + split, body.end()));
            }
        }
        ends = false;
        for (const auto& [name, body] : later) {
            text += "[" + name + "]\r\n";
            for (const std::string& l : body) {
                line(l);
            }
        }
        return text;
    }

private:
    std::mt19937 m_Random;
};

// What is on the disk is the model's text. Sections without a line are
// written, but do not come back.
void ExpectTheFileHolds(const fs::path& file, Model& model) {
    std::ifstream in(file, std::ios::binary);
    ASSERT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), model.Text());
    std::erase_if(model.sections, [](const Section& s) { return !s.HasLines(); });
}

TEST(IniRandom, ChangesMatchAModelOfTheTextAfterEveryReopening) {
    const fs::path folder =
        fs::temp_directory_path() /
        ("nvk_ini_random_" + std::to_string(testing::UnitTest::GetInstance()->random_seed()));
    fs::remove_all(folder);
    fs::create_directories(folder);
    const fs::path path = folder / "random.ini";
    const Chaine file(path.string().c_str());
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    IniRandom random(seed);
    Model model{"; head\r\n", {}};
    for (int i = 0; i < 12; ++i) {
        const std::string section = random.Name("abcdef");
        if (random.Pick(3) == 0 && model.Find(section) == nullptr) {
            model.Get(section).comments.push_back("c" + std::to_string(i));
        }
        model.Set(section, random.Name("kmn"), random.Value());
        if (random.Pick(3) == 0 && model.Get(section).unnamed.size() < 2) {
            model.Get(section).unnamed.push_back("line" + std::to_string(i));
        }
    }
    for (int step = 0; step < 300 && !testing::Test::HasFatalFailure(); ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        if (step % 10 == 0) {
            std::ofstream(path, std::ios::binary) << random.Noisy(model);
            EIniFile ini;
            ASSERT_TRUE(ini.Open(file, false));
            ASSERT_TRUE(ini.Close());
            ExpectTheFileHolds(path, model);
        }
        const std::string section = random.Name("abc");
        const std::string key = random.Name("kmn");
        const std::string value = random.Value();
        EIniFile ini(file);
        switch (random.Pick(7)) {
            case 0:
            case 1:
                ASSERT_EQ(ini.WritePrivateProfileStringA(section.c_str(), key.c_str(),
                                                         value.c_str(), file),
                          1u);
                model.Set(section, key, value);
                break;
            case 2:
                // An empty value removes the key, an empty key the section.
                if (random.Pick(3) == 0) {
                    ASSERT_EQ(ini.WritePrivateProfileStringA(section.c_str(), "", "", file), 1u);
                    std::erase_if(model.sections,
                                  [&](const Section& s) { return Same(s.name, section); });
                } else {
                    ASSERT_EQ(
                        ini.WritePrivateProfileStringA(section.c_str(), key.c_str(), "", file), 1u);
                    model.Get(section);
                    model.Remove(section, key);
                }
                break;
            case 3: {
                const int number = static_cast<int>(random.Pick(2000)) - 1000;
                ASSERT_EQ(ini.WritePrivateProfileInt(section.c_str(), key.c_str(), number, file),
                          1u);
                model.Set(section, key, std::to_string(number));
                break;
            }
            case 4: {
                // The unnamed lines are a set that ignores case.
                const std::string line = random.Name("uvw");
                const bool add = random.Pick(2) == 0;
                ASSERT_TRUE(ini.ManageLines(section.c_str(), line.c_str(), add));
                std::vector<std::string>& lines = model.Get(section).unnamed;
                const auto found = std::find_if(lines.begin(), lines.end(),
                                                [&](const auto& l) { return Same(l, line); });
                if (add && found == lines.end()) {
                    lines.push_back(line);
                } else if (!add && found != lines.end()) {
                    lines.erase(found);
                }
                break;
            }
            default:
                // Several changes under one open, then one write back. A value
                // held by reference may change after the text was written.
                ASSERT_TRUE(ini.Open(file, false));
                for (unsigned i = random.Pick(4); i > 0; --i) {
                    const std::string s = random.Name("abc");
                    const std::string k = random.Name("kmn");
                    if (random.Pick(3) == 0) {
                        EXPECT_EQ(ini.RemoveLine(s.c_str(), k.c_str()), model.Remove(s, k));
                    } else {
                        const std::string v = random.Value();
                        Chaine& held = ini[s.c_str()][k.c_str()];
                        if (random.Pick(2) == 0) {
                            ini.AsChaine();
                        }
                        held = v.c_str();
                        model.Set(s, k, v);
                    }
                }
                ASSERT_TRUE(ini.Close());
        }
        ExpectTheFileHolds(path, model);
    }
    fs::remove_all(folder);
}

}  // namespace
