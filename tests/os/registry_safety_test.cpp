// The registry's files on a machine shared by several users, and files that
// did not read whole: nothing of the user's reachable by another, nothing
// dropped that could not be read.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "os/api/process.h"
#include "os/api/registry.h"
#include "os/api/user.h"
#include "os/posix/code_page.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

namespace fs = std::filesystem;

std::string Bytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

LSTATUS SetNumber(HKEY root, const char* subKey, DWORD number) {
    HKEY key = nullptr;
    LSTATUS status =
        RegCreateKeyExA(root, subKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (status == ERROR_SUCCESS) {
        status = RegSetValueExA(key, "n", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), 4);
        RegCloseKey(key);
    }
    return status;
}

LSTATUS Opens(HKEY root, const char* subKey) {
    HKEY key = nullptr;
    LSTATUS status = RegOpenKeyExA(root, subKey, 0, KEY_READ, &key);
    RegCloseKey(key);
    return status;
}

// Runs a command line and gives its exit code.
DWORD RunCommand(std::string line) {
    return nvk::test::RunProcess(std::move(line));
}

bool RunningAsRoot() {
    char name[256];
    DWORD size = sizeof name;
    return GetUserNameA(name, &size) && std::string(name) == "root";
}

// What another user runs: the command as the unprivileged uid 65534.
std::string AsOtherUser(const std::string& command) {
    return "setpriv --reuid=65534 --regid=65534 --clear-groups " + command;
}

class RegistrySafetyTest : public ::testing::Test {
protected:
    RegistrySafetyTest() : registry_("NVK_REGISTRY_DIR", folder_.str().c_str()) {}

    std::string File(const char* root) const { return folder_ / (std::string(root) + ".reg"); }

    test::TempFolder folder_;
    test::ScopedEnv registry_;
};

TEST_F(RegistrySafetyTest, AFileThatDidNotReadWholeIsNeverRewritten) {
    const std::string good =
        "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\Software\\Kept]\r\n"
        "\"n\"=dword:00000007\r\n\r\n";
    std::mt19937 random(11);
    std::string garbage;
    for (int i = 0; i < 3000; ++i) {
        garbage += static_cast<char>(random());
    }
    // Partly damaged: bytes after the text, a section broken by an editor,
    // another root's section; wholly damaged: no header at all.
    for (const std::string& damaged :
         {posix::Utf16FileBytes(good) + garbage,
          good + "[HKEY_CURRENT_USER\\x]\r\n\"a\"=hex:zz\r\n", good + "[HKEY_LOCAL_MACHINE\\x]\r\n",
          garbage, std::string(3 << 20, '\x7F')}) {
        std::ofstream(File("HKEY_CURRENT_USER"), std::ios::binary) << damaged;
        EXPECT_EQ(SetNumber(HKEY_CURRENT_USER, "Software\\New", 1), ERROR_BADDB);
        EXPECT_EQ(RegImportText(good), ERROR_BADDB);
        EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\Kept"), ERROR_BADDB);
        EXPECT_TRUE(Bytes(File("HKEY_CURRENT_USER")) == damaged);
        // What did read is read; the other roots are written as ever.
        EXPECT_EQ(Opens(HKEY_CURRENT_USER, "Software\\Kept"),
                  damaged.starts_with("Windows") || damaged.starts_with("\xFF\xFE")
                      ? ERROR_SUCCESS
                      : ERROR_FILE_NOT_FOUND);
        EXPECT_EQ(SetNumber(HKEY_USERS, "x", 1), ERROR_SUCCESS);
    }
    // Repaired, the file is written again.
    std::ofstream(File("HKEY_CURRENT_USER"), std::ios::binary) << good;
    EXPECT_EQ(SetNumber(HKEY_CURRENT_USER, "Software\\New", 1), ERROR_SUCCESS);
    EXPECT_EQ(Opens(HKEY_CURRENT_USER, "Software\\Kept"), ERROR_SUCCESS);
}

TEST_F(RegistrySafetyTest, FilesAreTheUsersAlone) {
    // Made with mode 0600; a mode the user chose is kept on every rewrite.
    ASSERT_EQ(SetNumber(HKEY_CURRENT_USER, "Software\\x", 1), ERROR_SUCCESS);
    const std::string file = File("HKEY_CURRENT_USER");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(fs::status(folder_ / "HKEY_CURRENT_USER.lock").permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    ASSERT_EQ(SetNumber(HKEY_CURRENT_USER, "Software\\x", 2), ERROR_SUCCESS);
    EXPECT_EQ(fs::status(file).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);

    // Links planted where the files are written are never followed.
    const std::string victim = folder_ / "victim";
    std::ofstream(victim) << "mine";
    fs::create_symlink(
        victim, File("HKEY_CURRENT_USER") + "." + std::to_string(GetCurrentProcessId()) + ".new");
    fs::create_symlink(victim, folder_ / "HKEY_USERS.lock");
    EXPECT_EQ(SetNumber(HKEY_CURRENT_USER, "Software\\x", 3), ERROR_SUCCESS);
    EXPECT_EQ(SetNumber(HKEY_USERS, "x", 1), ERROR_CANTWRITE);
    EXPECT_EQ(Bytes(victim), "mine");
    EXPECT_FALSE(fs::exists(File("HKEY_USERS")));
}

TEST_F(RegistrySafetyTest, AFolderOthersCanWriteOrOwnIsRefused) {
    ASSERT_EQ(SetNumber(HKEY_CURRENT_USER, "Software\\x", 1), ERROR_SUCCESS);
    for (fs::perms open : {fs::perms::group_write, fs::perms::others_write}) {
        fs::permissions(folder_.str(), fs::perms::owner_all | open);
        EXPECT_EQ(Opens(HKEY_CURRENT_USER, "Software\\x"), ERROR_ACCESS_DENIED);
        EXPECT_EQ(SetNumber(HKEY_CURRENT_USER, "Software\\y", 1), ERROR_ACCESS_DENIED);
    }
    fs::permissions(folder_.str(), fs::perms::owner_all);
    EXPECT_EQ(Opens(HKEY_CURRENT_USER, "Software\\x"), ERROR_SUCCESS);

    if (!RunningAsRoot()) {
        // A folder of root's stands for another user's.
        test::ScopedEnv system("NVK_REGISTRY_DIR", "/usr");
        EXPECT_EQ(Opens(HKEY_CURRENT_USER, "Software"), ERROR_ACCESS_DENIED);
        GTEST_SKIP() << "not root: no other user to play, beyond a folder of root's";
    }
    // Another user makes the folder first, in a place all may write to, and
    // fills it: nothing of it is read, nothing written in it.
    fs::permissions(folder_.str(), fs::perms::owner_all | fs::perms::others_exec);
    const std::string shared = folder_ / "shared";
    fs::create_directory(shared);
    fs::permissions(shared, fs::perms::all | fs::perms::sticky_bit);
    std::ofstream(shared + "/text") << "REGEDIT4\n[HKEY_CURRENT_USER\\P]\n";
    const std::string planted = shared + "/registry";
    ASSERT_EQ(RunCommand(AsOtherUser("mkdir -m 0755 " + planted)), 0u) << "setpriv failed";
    ASSERT_EQ(
        RunCommand(AsOtherUser("cp " + shared + "/text " + planted + "/HKEY_CURRENT_USER.reg")),
        0u);
    test::ScopedEnv theirs("NVK_REGISTRY_DIR", planted.c_str());
    EXPECT_EQ(Opens(HKEY_CURRENT_USER, "P"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(SetNumber(HKEY_CURRENT_USER, "P", 1), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(fs::exists(planted + "/HKEY_CURRENT_USER.lock"));

    // A file of another user's in the user's folder keeps its owner when
    // root rewrites it: that user still reads it.
    test::ScopedEnv mine("NVK_REGISTRY_DIR", folder_.str().c_str());
    ASSERT_EQ(RunCommand("chown 65534:65534 " + File("HKEY_CURRENT_USER")), 0u);
    ASSERT_EQ(SetNumber(HKEY_CURRENT_USER, "Software\\x", 2), ERROR_SUCCESS);
    EXPECT_EQ(RunCommand(AsOtherUser("test -r " + File("HKEY_CURRENT_USER"))), 0u);
}

TEST_F(RegistrySafetyTest, WithoutHomeTheFolderComesFromThePasswordDatabase) {
    // The registry is found below the user's home folder of the password
    // database, never in the shared temporary folder.
    test::ScopedEnv noDirectory("NVK_REGISTRY_DIR", nullptr);
    test::ScopedEnv noConfig("XDG_CONFIG_HOME", nullptr);
    test::ScopedEnv noHome("HOME", nullptr);
    const fs::path tmpConfig = fs::temp_directory_path() / ".config";
    if (fs::exists(tmpConfig)) {
        GTEST_SKIP() << tmpConfig << " exists: no room to plant a registry there";
    }
    fs::create_directories(tmpConfig / "nvk/registry");
    std::ofstream(tmpConfig / "nvk/registry/HKEY_CURRENT_USER.reg")
        << "REGEDIT4\n[HKEY_CURRENT_USER\\PlantedInTmp]\n";
    EXPECT_EQ(Opens(HKEY_CURRENT_USER, "PlantedInTmp"), ERROR_FILE_NOT_FOUND);
    fs::remove_all(tmpConfig);
}

}  // namespace
}  // namespace nvk::os
