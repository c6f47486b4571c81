// Recycling into the desktop's trash, the folder browser, and the registry
// trees below the application's key.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "files_test_support.h"
#include "nvk/afx/string_array.h"
#include "nvk/afx/win_app.h"
#include "nvk/files/file_operations.h"
#include "os/api/registry.h"
#include "os/api/shell.h"

namespace {

namespace fs = std::filesystem;
namespace os = nvk::os;
using nvk::files::test::ScopedEnv;
using nvk::files::test::TempTree;

TEST(RecycleFile, RemovesTheFileOrFolderAndRefusesOverlongNames) {
    TempTree tree;
    ScopedEnv data("XDG_DATA_HOME", tree.Native("data"));
    tree.File("docs/a.txt");
    ASSERT_EQ(RecycleFile(tree.Path("docs/a.txt"), 0), 1);
    EXPECT_FALSE(tree.Exists("docs/a.txt"));
    tree.File("docs/b.txt");
    ASSERT_EQ(RecycleFile(tree.Path("docs"), 0), 1);
    EXPECT_FALSE(tree.Exists("docs"));

    tree.File("gone.txt");
    EXPECT_EQ(RecycleFile(tree.Path("gone.txt"), 1), 1);
    EXPECT_FALSE(tree.Exists("gone.txt"));
    EXPECT_FALSE(tree.Exists("data/Trash/files/gone.txt"));
    // A missing name is no failure: there was nothing to recycle.
    EXPECT_EQ(RecycleFile(tree.Path("gone.txt"), 0), 1);
    // A name whose double-terminated copy needs 520 bytes is refused.
    EXPECT_EQ(RecycleFile(std::string(518, 'x').c_str(), 1), 0);
}

// Where the desktop's trash keeps a file and what it writes beside it.
TEST(RecycleFile, PutsTheFileInTheTrashWithItsInfo) {
    TempTree tree;
    ScopedEnv data("XDG_DATA_HOME", tree.Native("data"));
    tree.File("docs/my file%.txt", "one");
    ASSERT_EQ(RecycleFile(tree.Path("docs/my file%.txt"), 0), 1);
    EXPECT_EQ(tree.Read("data/Trash/files/my file%.txt"), "one");
    const std::string info = tree.Read("data/Trash/info/my file%.txt.trashinfo");
    EXPECT_TRUE(std::regex_match(
        info, std::regex("\\[Trash Info\\]\nPath=" + tree.Native("docs") +
                         "/my%20file%25.txt\nDeletionDate=\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:"
                         "\\d\\d\n")))
        << info;

    // The same name again takes a name of its own; a folder goes whole.
    tree.File("docs/my file%.txt", "two");
    ASSERT_EQ(RecycleFile(tree.Path("docs/my file%.txt"), 0), 1);
    EXPECT_EQ(tree.Read("data/Trash/files/my file%.txt.2"), "two");
    ASSERT_EQ(RecycleFile(tree.Path("docs"), 0), 1);
    EXPECT_TRUE(tree.Exists("data/Trash/info/docs.trashinfo"));
}

TEST(RecycleFiles, RecyclesEachMatchByItself) {
    TempTree tree;
    ScopedEnv data("XDG_DATA_HOME", tree.Native("data"));
    tree.File("t/a.tmp");
    tree.File("t/b.tmp");
    tree.File("t/c.keep");
    ASSERT_EQ(RecycleFiles(tree.Path("t"), "*.tmp", 0), 1);
    EXPECT_FALSE(tree.Exists("t/a.tmp"));
    EXPECT_FALSE(tree.Exists("t/b.tmp"));
    EXPECT_TRUE(tree.Exists("t/c.keep"));
}

TEST(RecycleFiles, PutsEachMatchInTheTrashAndMovesLinksUnfollowed) {
    TempTree tree;
    ScopedEnv data("XDG_DATA_HOME", tree.Native("data"));
    tree.File("t/a.tmp");
    tree.File("t/b.tmp");
    ASSERT_EQ(RecycleFiles(tree.Path("t"), "*.tmp", 0), 1);
    EXPECT_TRUE(tree.Exists("data/Trash/files/a.tmp"));
    EXPECT_TRUE(tree.Exists("data/Trash/info/b.tmp.trashinfo"));
    // A link in the trash's way is moved, never followed.
    TempTree outside;
    outside.File("keep.txt");
    fs::create_directory_symlink(outside.Native(), tree.Native("t/link"));
    ASSERT_EQ(RecycleFiles(tree.Path("t"), "link", 1), 1);
    EXPECT_TRUE(outside.Exists("keep.txt"));
}

// A browser that plays a user: it starts, looks at each folder of
// `g_Selections`, and chooses the last.
std::vector<std::string> g_Selections;
std::vector<std::string> g_Messages;
os::UINT g_Flags = 0;
std::string g_Root;

os::LPITEMIDLIST Browse(const os::BROWSEINFOA& info, os::HWND window) {
    g_Flags = info.ulFlags;
    char root[os::MAX_PATH] = "";
    const bool inFileSystem = os::SHGetPathFromIDListA(info.pidlRoot, root) != 0;
    g_Root = info.pidlRoot == nullptr ? "(none)" : inFileSystem ? root : "";
    info.lpfn(window, os::BFFM_INITIALIZED, 0, info.lParam);
    for (const std::string& folder : g_Selections) {
        os::LPITEMIDLIST list = os::ItemListFromPath(folder.c_str());
        info.lpfn(window, os::BFFM_SELCHANGED, reinterpret_cast<os::LPARAM>(list), info.lParam);
        os::IMalloc* allocator = nullptr;
        os::SHGetMalloc(&allocator);
        allocator->Free(list);
    }
    return g_Selections.empty() ? nullptr : os::ItemListFromPath(g_Selections.back().c_str());
}

os::LRESULT Receive(os::HWND, os::UINT message, os::WPARAM, os::LPARAM param) {
    g_Messages.push_back(message == os::BFFM_SETSELECTIONA
                             ? std::string("select ") + reinterpret_cast<const char*>(param)
                             : "enable " + std::to_string(param));
    return 0;
}

TEST(SelectFolder, WithoutABrowserIsCancelled) {
    EXPECT_STREQ(SelectFolder("t", "C:\\", 0, 0, ""), "");
}

TEST(SelectFolder, LetsTheApplicationsBrowserChooseAFolderHoldingAFile) {
    TempTree tree;
    tree.File("with/needed.ini");
    tree.Folder("without");
    const os::FolderBrowserHook previous = os::SetFolderBrowserHook({Browse, Receive});
    const std::string with = tree.Path("with").c_str();
    g_Selections = {"", tree.Path("without").c_str(), with};
    const Chaine chosen = SelectFolder("Pick", (with + "\\").c_str(), 8, 1, "needed.ini");
    EXPECT_EQ(std::string(chosen), with);
    EXPECT_EQ(g_Messages,
              (std::vector<std::string>{"select " + with, "enable 1", "enable 0", "enable 1"}));
    EXPECT_EQ(g_Flags, os::BIF_RETURNONLYFSDIRS | os::BIF_BROWSEINCLUDEFILES);
    EXPECT_NE(g_Root, "(none)");
    os::SetFolderBrowserHook(previous);
}

// Computers: the network is the root, a place without a path.
TEST(SelectFolder, ComputersStartAtTheNetworkWhichHasNoPath) {
    const os::FolderBrowserHook previous = os::SetFolderBrowserHook({Browse, Receive});
    g_Selections.clear();
    EXPECT_STREQ(SelectFolder("Pick", "", 1, 0, ""), "");
    EXPECT_EQ(g_Flags, os::BIF_BROWSEFORCOMPUTER);
    EXPECT_EQ(g_Root, "");
    os::SetFolderBrowserHook(previous);
}

class RegistryTrees : public testing::Test {
protected:
    RegistryTrees() : m_Registry("NVK_REGISTRY_DIR", m_Folder.Native()) {}
    static bool Exists(const char* key) {
        os::HKEY handle = nullptr;
        if (os::RegOpenKeyExA(os::HKEY_CURRENT_USER, key, 0, os::KEY_READ, &handle) != 0) {
            return false;
        }
        os::RegCloseKey(handle);
        return true;
    }
    static void Make(const char* key) {
        os::HKEY handle = nullptr;
        ASSERT_EQ(os::RegCreateKeyExA(os::HKEY_CURRENT_USER, key, 0, nullptr, 0, os::KEY_ALL_ACCESS,
                                      nullptr, &handle, nullptr),
                  0);
        os::RegSetValueExA(handle, "v", 0, os::REG_SZ, reinterpret_cast<const os::BYTE*>("x"), 2);
        os::RegCloseKey(handle);
    }

    TempTree m_Folder;
    ScopedEnv m_Registry;
};

TEST_F(RegistryTrees, DeletesAKeyFromTheLeavesUp) {
    Make("Software\\T\\A\\B\\C");
    Make("Software\\T\\A\\D");
    Make("Software\\T\\Kept");
    os::HKEY parent = nullptr;
    ASSERT_EQ(
        os::RegOpenKeyExA(os::HKEY_CURRENT_USER, "Software\\T", 0, os::KEY_ALL_ACCESS, &parent), 0);
    EXPECT_EQ(RegRecurseDeleteKey(parent, "A"), 0);
    EXPECT_EQ(RegRecurseDeleteKey(parent, "A"), static_cast<long>(os::ERROR_FILE_NOT_FOUND));
    os::RegCloseKey(parent);
    EXPECT_FALSE(Exists("Software\\T\\A"));
    EXPECT_TRUE(Exists("Software\\T\\Kept"));
}

TEST_F(RegistryTrees, ListsTheNamesBelowTheApplicationsKey) {
    CStringArray names;
    EXPECT_EQ(LoadValueList("Lists", names, 1), 0);  // no application object
    CWinApp app("Compta");
    app.SetRegistryKey("Family");
    Make("Software\\Family\\Compta\\Lists\\one");
    Make("Software\\Family\\Compta\\Lists\\two");
    ASSERT_EQ(LoadValueList("Lists", names, 1), 1);
    ASSERT_EQ(names.GetSize(), 2);
    EXPECT_STREQ(names[1], "two");
    CStringArray values;
    ASSERT_EQ(LoadValueList("Lists\\one", values, 0), 1);
    EXPECT_STREQ(values[0], "v");
    // Strings there before count; a missing key lists nothing.
    CStringArray old;
    old.Add("held");
    EXPECT_EQ(LoadValueList("Missing", old, 0), 1);
    CStringArray none;
    EXPECT_EQ(LoadValueList("Missing", none, 0), 0);
    EXPECT_EQ(LoadValueList("Made", none, 1), 0);
    EXPECT_TRUE(Exists("Software\\Family\\Compta\\Made"));
}

}  // namespace
