// The legacy look-ups, in a registry that the tests fill, and the SID that
// names the user's virtual store.
#include <regex>

#include "nvk/afx/win_app.h"
#include "os/api/registry.h"
#include "paths/paths_support.h"

namespace nvk::test {
namespace {

using namespace SpecialNVKPath;

TEST(Account, TheUsersSidIsStable) {
    const std::string sid = UserSid();
    EXPECT_TRUE(std::regex_match(sid, std::regex("S-1-5-21-[0-9]+-[0-9]+-[0-9]+-[0-9]+"))) << sid;
    EXPECT_EQ(UserSid(), sid);

    os::BYTE small[8];
    os::DWORD sidSize = sizeof small;
    char domain[64];
    os::DWORD domainSize = sizeof domain;
    char name[128];
    os::DWORD nameSize = sizeof name;
    os::GetUserNameA(name, &nameSize);
    EXPECT_FALSE(
        os::LookupAccountNameA(nullptr, name, small, &sidSize, domain, &domainSize, nullptr));
    EXPECT_EQ(os::GetLastError(), os::ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(sidSize, 28u);
    EXPECT_FALSE(os::LookupAccountNameA(nullptr, "no-such-user-nvk", small, &sidSize, domain,
                                        &domainSize, nullptr));
    EXPECT_EQ(os::GetLastError(), os::ERROR_NONE_MAPPED);
}

class LegacyTest : public PathsTest {
protected:
    // The keys the tests import, which on Windows are the machine's and the
    // user's own registry.
    void TearDown() override {
        Import(
            "[-HKEY_LOCAL_MACHINE\\Software\\Editeur]\r\n\r\n"
            "[-HKEY_LOCAL_MACHINE\\Software\\NVK\\InstalledApps\\CPT]\r\n\r\n[-" +
            Store().substr(1) + "\\Editeur]\r\n\r\n[-" + Store().substr(1) +
            "\\NVK\\InstalledApps\\CPT]\r\n\r\n");
    }
    void Import(const std::string& lines) {
        const std::string text = "Windows Registry Editor Version 5.00\r\n\r\n" + lines;
        ASSERT_EQ(os::RegImportText(text), os::ERROR_SUCCESS);
    }
    static std::string Escaped(std::string path) {
        for (std::size_t at = 0; (at = path.find('\\', at)) != std::string::npos; at += 2) {
            path.insert(at, "\\");
        }
        return path;
    }
    std::string Store() const {
        return "[HKEY_USERS\\" + UserSid() + "_Classes\\VirtualStore\\Machine\\Software";
    }
};

TEST_F(LegacyTest, CommonSettingsTakeTheFirstRootThatAnswersEvenWithNothing) {
    fs::create_directories(m_Root / "tables");
    fs::create_directories(m_Root / "base");
    CWinApp application("Compta");
    application.SetRegistryKey("Editeur");
    EXPECT_EQ(Get(LegacyCommonTables), "");
    Import(
        "[HKEY_LOCAL_MACHINE\\Software\\Editeur\\Common\\Settings]\r\n"
        "\"CommonTablesPath\"=\"" +
        Escaped(Folder("tables")) +
        "\"\r\n"
        "\"FoldersBase\"=\"" +
        Escaped(Folder("base")) + "\"\r\n\r\n");
    EXPECT_EQ(Get(LegacyCommonTables), Folder("tables"));
    EXPECT_EQ(Get(LegacyFoldersBase), Folder("base"));
    // The user's virtual store comes first, and its answer is final, also
    // when it names no folder.
    Import(Store() + "\\Editeur\\Common\\Settings]\r\n\"FoldersBase\"=\"" +
           Escaped(Folder("gone")) + "\"\r\n\r\n");
    EXPECT_EQ(Get(LegacyFoldersBase), "");
    EXPECT_EQ(Get(LegacyCommonTables), Folder("tables"));
}

TEST_F(LegacyTest, ModelesComeFromTheApplicationsSection) {
    fs::create_directories(m_Root / "modeles");
    Import(
        "[HKEY_LOCAL_MACHINE\\Software\\Editeur\\Compta\\Settings]\r\n"
        "\"ModelesPath\"=\"" +
        Escaped(Folder("modeles")) + "\"\r\n\r\n");
    CWinApp application("Paie");
    application.m_pszProfileName = "Compta";
    application.SetRegistryKey("Editeur");
    EXPECT_EQ(Get(LegacyModeles), Folder("modeles"));
    // The section is the profile name when the application has a registry
    // key, its name otherwise.
    application.m_pszProfileName = "Other";
    EXPECT_EQ(Get(LegacyModeles), "");
}

TEST_F(LegacyTest, TheAppFolderIsTheInstalledPathsFolderElseTheApplicationFolder) {
    fs::create_directories(m_Root / "installed");
    EXPECT_EQ(Get(LegacyAppFolder), Folder("app"));
    Import("[HKEY_LOCAL_MACHINE\\Software\\NVK\\InstalledApps\\CPT]\r\n\"Path\"=\"" +
           Escaped(Folder("installed")) + "\\\\Compta.exe\"\r\n\r\n");
    EXPECT_EQ(Get(LegacyAppFolder), Folder("installed"));
    // A path whose folder is gone falls back to the application folder.
    Import(Store() + "\\NVK\\InstalledApps\\CPT]\r\n\"Path\"=\"" + Escaped(Folder("gone")) +
           "\\\\Compta.exe\"\r\n\r\n");
    EXPECT_EQ(Get(LegacyAppFolder), Folder("app"));
}

TEST_F(LegacyTest, SetFoldersAreKeptUntilRemovedAndDefaultsSplitAtBars) {
    fs::create_directories(m_Root / "set");
    EXPECT_TRUE(Set(LegacyDossiersRoot, C(Folder("set"))));
    EXPECT_EQ(Get(LegacyDossiersRoot), Folder("set"));
    EXPECT_TRUE(Set(LegacyDossiersRoot, C(Folder("gone"))));
    EXPECT_EQ(Get(LegacyDossiersRoot), "");
    EXPECT_TRUE(Set(LegacyDossiersRoot, C(Folder("set"))));
    EXPECT_TRUE(Set(LegacyDossiersRoot, ""));
    EXPECT_EQ(Get(LegacyDossiersRoot), "");
}

}  // namespace
}  // namespace nvk::test
