#include "nvk/platform/link.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "os/api/shell_link.h"

namespace {

using namespace nvk::os;
namespace fs = std::filesystem;

class LinkTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "nvk_link_XXXXXX").string();
        m_Dir = mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(m_Dir); }

    std::string Native(const std::string& name) const { return m_Dir + "/" + name; }
    // The drive form the library hands out (on Windows the temporary
    // folder has a drive of its own already).
    std::string Windows(const std::string& name) const {
#ifdef _WIN32
        std::string path = Native(name);
#else
        std::string path = "Z:" + Native(name);
#endif
        for (char& c : path) {
            c = c == '/' ? '\\' : c;
        }
        return path;
    }
    void Write(const std::string& name, const std::string& bytes) const {
        std::ofstream(Native(name), std::ios::binary) << bytes;
    }
    std::string Read(const std::string& name) const {
        std::ifstream in(Native(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    std::string m_Dir;
};

// A link object's fields after loading `file`; empty on failure.
std::string Loaded(const std::string& file, std::string* arguments = nullptr) {
    IShellLinkA* link = nullptr;
    EXPECT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                               reinterpret_cast<void**>(&link)),
              S_OK);
    IPersistFile* persist = nullptr;
    link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&persist));
    std::u16string wide(file.begin(), file.end());
    char path[MAX_PATH] = "";
    if (persist->Load(reinterpret_cast<LPCOLESTR>(wide.c_str()), STGM_READ) == S_OK) {
        link->GetPath(path, MAX_PATH, nullptr, SLGP_RAWPATH);
        if (arguments != nullptr) {
            char text[MAX_PATH];
            link->GetArguments(text, MAX_PATH);
            *arguments = text;
        }
    }
    persist->Release();
    link->Release();
    return path;
}

TEST_F(LinkTest, CreateResolveAndDelete) {
    Write("Grand Livre.TXT", "x");
    CLink link;
    ASSERT_TRUE(link.Create((Windows("grand livre.txt")).c_str(), Windows("livre.lnk").c_str(),
                            "-a \"b c\"", "Le grand livre", Windows("i.ico").c_str(), 1));
    EXPECT_EQ(link.GetResult(), S_OK);

    // The target comes back in its long form, as the folder spells it.
    CString target;
    EXPECT_EQ(link.ResolveIt(Windows("livre.lnk").c_str(), target, 0), 1);
    EXPECT_EQ(target, Windows("Grand Livre.TXT").c_str());

    // Replacing a link writes it anew.
    ASSERT_TRUE(
        link.CreateLink(Windows("Grand Livre.TXT").c_str(), Windows("livre.lnk").c_str(), nullptr));
    std::string arguments = "?";
    EXPECT_EQ(Loaded(Windows("livre.lnk"), &arguments), Windows("Grand Livre.TXT"));
    EXPECT_EQ(arguments, "");

    EXPECT_EQ(link.DeleteLink(Windows("livre.lnk").c_str()), 1);
    EXPECT_FALSE(fs::exists(Native("livre.lnk")));
    EXPECT_EQ(link.DeleteLink(Windows("livre.lnk").c_str()), 0);
    EXPECT_EQ(link.ResolveIt(Windows("livre.lnk").c_str(), target, 0), 0);
    EXPECT_TRUE(target.IsEmpty());
}

TEST_F(LinkTest, WhatDoesNotResolve) {
    CLink link;
    // A link to itself is refused, whatever case it is written in.
    Write("self.lnk", "");
    EXPECT_FALSE(link.Create(Windows("SELF.LNK").c_str(), Windows("self.lnk").c_str(), nullptr,
                             nullptr, nullptr, 0));

    // A missing target gives 0, with the target it names.
    ASSERT_TRUE(link.CreateLink(Windows("gone.txt").c_str(), Windows("gone.lnk").c_str(), "d"));
    CString target;
    EXPECT_EQ(link.ResolveIt(Windows("gone.lnk").c_str(), target, 0), 0);
    EXPECT_EQ(target, Windows("gone.txt").c_str());

    // Neither a link nor a desktop entry: nothing is read, nothing removed.
    Write("note.txt", "[Other]\nExec=x\n");
    EXPECT_EQ(link.ResolveIt(Windows("note.txt").c_str(), target, 0), 0);
    EXPECT_EQ(link.DeleteLink(Windows("note.txt").c_str()), 0);
    EXPECT_TRUE(fs::exists(Native("note.txt")));
}

TEST_F(LinkTest, DesktopEntriesAndSymbolicLinks) {
    Write("app", "");
    Write("menu.desktop",
          "# made elsewhere\n[Desktop Entry]\nType=Application\nName=App\n"
          "Exec=\"" +
              Native("app") + "\" \"a b\" 100%% %f \"\\\\$x\"\n[Desktop Action New]\nExec=other\n");
    std::string arguments;
    EXPECT_EQ(Loaded(Windows("menu.desktop"), &arguments), Windows("app"));
    EXPECT_EQ(arguments, "\"a b\" 100% $x");

    fs::create_symlink("app", Native("relative"));
    CLink link;
    CString target;
    EXPECT_EQ(link.ResolveIt(Windows("relative").c_str(), target, 0), 1);
    EXPECT_EQ(target, Windows("app").c_str());
}

TEST_F(LinkTest, LinkFilesCutShortAreRefused) {
    IShellLinkA* link = nullptr;
    ASSERT_EQ(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                               reinterpret_cast<void**>(&link)),
              S_OK);
    // A share's path and every string field, through a save.
    link->SetPath("\\\\serveur\\compta\\dossier\\app.exe");
    link->SetArguments("/x");
    link->SetDescription("d\xE9j\xE0");
    link->SetWorkingDirectory("C:\\w");
    link->SetIconLocation("C:\\i.ico", -3);
    IPersistFile* persist = nullptr;
    ASSERT_EQ(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&persist)), S_OK);
    const std::string file = Windows("share.lnk");
    const std::u16string wide(file.begin(), file.end());
    ASSERT_EQ(persist->Save(reinterpret_cast<LPCOLESTR>(wide.c_str()), TRUE), S_OK);
    persist->Release();
    link->Release();

    EXPECT_EQ(Loaded(file), "\\\\serveur\\compta\\dossier\\app.exe");
    const std::string whole = Read("share.lnk");
    for (std::size_t size = 0; size + 4 < whole.size(); ++size) {
        Write("cut.lnk", whole.substr(0, size));
        EXPECT_EQ(Loaded(Windows("cut.lnk")), "") << size;
    }

    void* object = nullptr;
    EXPECT_EQ(
        CoCreateInstance(IID_IPersistFile, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA, &object),
        REGDB_E_CLASSNOTREG);
    EXPECT_EQ(
        CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, CLSID_ShellLink, &object),
        E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
}

}  // namespace
