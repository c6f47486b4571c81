// The launch of the variable editor, with a stand-in tool (a script) that
// records its command line.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "nvk/paths/special_nvk_path.h"
#include "nvk/services/nvk_vars.h"
#include "os/api/path_map.h"
#include "os/api/registry.h"

namespace {

namespace fs = std::filesystem;

std::string Win(const fs::path& path) {
    return nvk::os::ToWindowsPath(path.string().c_str());
}

// The exchange file lies in the temporary folder, which the process reads
// once: a folder of this process's own, so that tests running at the same
// time keep their exchange files apart.
void UseOwnTempFolder() {
    static const struct OwnTemp {
        OwnTemp() {
            std::string pattern = (fs::temp_directory_path() / "nvk_vars_temp_XXXXXX").string();
            folder = mkdtemp(pattern.data());
            setenv("TMP", folder.string().c_str(), 1);
        }
        ~OwnTemp() {
            std::error_code ignored;
            fs::remove_all(folder, ignored);
        }
        fs::path folder;
    } own;
}

class NVKVarsTest : public testing::Test {
protected:
    NVKVarsTest() {
        std::string pattern = (fs::temp_directory_path() / "nvk_vars_XXXXXX").string();
        m_Root = mkdtemp(pattern.data());
        fs::create_directories(m_Root / "tools");
        setenv("NVK_REGISTRY_DIR", m_Root.string().c_str(), 1);
        UseOwnTempFolder();
        setenv("cdCountry", "CH", 1);
        SpecialNVKPath::SetAppFolder(Win(m_Root / "tools").c_str());
        Chaine temp;
        m_Exchange = nvk::os::ToNativePath(PathJoin(temp.GetTempFolder(), "NVKVars.ini"));
        fs::remove(m_Exchange);
    }
    ~NVKVarsTest() override {
        SpecialNVKPath::SetAppFolder("");
        unsetenv("NVK_REGISTRY_DIR");
        std::error_code ignored;
        fs::remove(m_Exchange, ignored);
        fs::remove_all(m_Root, ignored);
    }

    // A tool that writes its arguments, one a line, beside itself. A program
    // without an extension is one on POSIX only, so the name takes the
    // system's (".exe" on Windows).
    static void InstallTool(const fs::path& path) {
        fs::copy_file(NVK_VARS_TOOL, path.string() + NVK_PROGRAM_SUFFIX,
                      fs::copy_options::overwrite_existing);
    }
    static std::string Tool(const fs::path& path) { return Win(path) + NVK_PROGRAM_SUFFIX; }

    std::vector<std::string> ToolArguments() const {
        const fs::path file = m_Root / "tools/args.txt";
        for (int i = 0; i < 500 && !fs::exists(file); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        std::vector<std::string> lines;
        std::ifstream in(file);
        for (std::string line; std::getline(in, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    std::vector<std::string> ExchangeLines() const {
        std::vector<std::string> lines;
        std::ifstream in(m_Exchange);
        for (std::string line; std::getline(in, line);) {
            if (!line.empty() && line.back() == '\r') {
                line.pop_back();
            }
            lines.push_back(line);
        }
        return lines;
    }

    static void SetRegistryTool(const std::string& path) {
        nvk::os::HKEY key = nullptr;
        nvk::os::RegCreateKeyExA(nvk::os::HKEY_LOCAL_MACHINE, "Software\\NVK\\Common\\Settings", 0,
                                 nullptr, 0, nvk::os::KEY_ALL_ACCESS, nullptr, &key, nullptr);
        nvk::os::RegSetValueExA(key, "NVKVars", 0, nvk::os::REG_SZ,
                                reinterpret_cast<const nvk::os::BYTE*>(path.c_str()),
                                static_cast<nvk::os::DWORD>(path.size() + 1));
        nvk::os::RegCloseKey(key);
    }

    static ChaineClefsNC List(std::initializer_list<const char*> items) {
        ChaineClefsNC list;
        for (const char* item : items) {
            list.Add(item);
        }
        return list;
    }

    fs::path m_Root;
    std::string m_Exchange;
};

TEST_F(NVKVarsTest, WithoutTheToolNothingStartsAndNothingIsWritten) {
    ENVKVars vars("Z:\\dico\\vars.dic");
    vars.SetSelect("TOTAL");
    EXPECT_EQ(std::string(ENVKVars::GetNVKVarsPath().c_str()), "");
    EXPECT_FALSE(vars.Run());
    EXPECT_FALSE(fs::exists(m_Exchange));
}

TEST_F(NVKVarsTest, TheToolIsFoundInTheRegistryElseInTools) {
    InstallTool(m_Root / "tools/NVKVars");
    EXPECT_EQ(std::string(ENVKVars::GetNVKVarsPath().c_str()), Tool(m_Root / "tools/NVKVars"));
    InstallTool(m_Root / "elsewhere");
    setenv("NVK_VARS_TEST", Win(m_Root).c_str(), 1);
    SetRegistryTool("%NVK_VARS_TEST%\\elsewhere" NVK_PROGRAM_SUFFIX);
    EXPECT_EQ(std::string(ENVKVars::GetNVKVarsPath().c_str()), Tool(m_Root / "elsewhere"));
    // A tool that is gone falls back to the one in Tools.
    fs::remove(m_Root / ("elsewhere" NVK_PROGRAM_SUFFIX));
    EXPECT_EQ(std::string(ENVKVars::GetNVKVarsPath().c_str()), Tool(m_Root / "tools/NVKVars"));
    unsetenv("NVK_VARS_TEST");
}

TEST_F(NVKVarsTest, ADictionaryAloneGoesOnTheCommandLineWithItsFilters) {
    InstallTool(m_Root / "tools/NVKVars");
    ENVKVars vars("Z:\\dossiers\\mes variables.dic");
    vars.SetNotepad(true);
    vars.SetMacros(List({"SOMME", "MOYENNE"}));
    ASSERT_TRUE(vars.Run());
    EXPECT_EQ(ToolArguments(),
              (std::vector<std::string>{"Z:\\dossiers\\mes variables.dic", "/Notepad", "/Country",
                                        "CH", "/Macro", "SOMME,MOYENNE"}));
    EXPECT_FALSE(fs::exists(m_Exchange));
}

TEST_F(NVKVarsTest, MoreGoesThroughTheExchangeFileInItsOrderKeepingOldKeys) {
    InstallTool(m_Root / "tools/NVKVars");
    std::ofstream(m_Exchange) << "[Format]\r\nDefault=old\r\nType9=old\r\n";
    ENVKVars vars("Z:\\dico.dic");
    vars.SetSelect("TOTAL");
    vars.SetMacros(List({"SOMME"}));
    vars.SetRun("calc.exe", "/x", "open");
    vars.SetFormat(static_cast<TypeCategorie>(1), "#0.00");
    vars.SetRTFFormat(static_cast<TypeCategorie>(3), "{\\b}");
    ENVKVars copy(vars);
    ASSERT_TRUE(copy.Run());
    EXPECT_EQ(ToolArguments(), (std::vector<std::string>{Win(m_Exchange)}));
    EXPECT_EQ(ExchangeLines(),
              (std::vector<std::string>{
                  "[Format]", "Default=old", "Type9=old", "Type1=#0.00", "Type3={\\b}",
                  "[Dictionnaire]", "Chemin=Z:\\dico.dic", "Selection=TOTAL", "[Config]",
                  "Notepad=0", "RunProcessParams=/x", "RunProcess=calc.exe", "RunProcessVerb=open",
                  "AutoDelete=1", "[Filters]", "Country=CH", "Macros=SOMME"}));
}

// The rubrics alone send the tool to the exchange file, where they are the
// lines of a section of their own, without names.
TEST_F(NVKVarsTest, RubricsAreTheUnnamedLinesOfTheirSection) {
    InstallTool(m_Root / "tools/NVKVars");
    ENVKVars vars("Z:\\dico.dic");
    vars.SetRubrics(List({"Clients", "Fournisseurs"}));
    ASSERT_TRUE(vars.Run());
    EXPECT_EQ(ToolArguments(), (std::vector<std::string>{Win(m_Exchange)}));
    EXPECT_EQ(ExchangeLines(),
              (std::vector<std::string>{"[Dictionnaire]", "Chemin=Z:\\dico.dic", "[Rubriques]",
                                        "Clients", "Fournisseurs", "[Config]", "Notepad=0",
                                        "AutoDelete=1", "[Filters]", "Country=CH"}));
}

}  // namespace
