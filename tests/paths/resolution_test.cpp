// The order of resolution: process values, Paths.ini, rules, defaults.
#include <filesystem>

#include "paths/paths_support.h"

namespace nvk::test {
namespace {

using namespace SpecialNVKPath;

TEST_F(PathsTest, DefaultsHangFromTheApplicationAndTheUserFolders) {
    const std::string app = Folder("app");
    EXPECT_EQ(Get(AppParamsRoot), app);
    EXPECT_EQ(Get(Tools), app);
    EXPECT_EQ(Get(ConfigRootSystem), app);
    // As it stands: named, not made.
    EXPECT_EQ(Get(AppParamsBaseVide), app + "\\BaseVide");
    EXPECT_FALSE(fs::exists(m_Root / "app/BaseVide"));
    // Normalised: missing is empty, or made on demand.
    EXPECT_EQ(Get(ConfigFormatsSystem), "");
    EXPECT_EQ(Get(ConfigFormatsSystem, CreateIfMissing), app + "\\Formats");
    EXPECT_TRUE(fs::is_directory(m_Root / "app/Formats"));
    EXPECT_EQ(Get(UserDataCommon, CreateIfMissing),
              UserFolder(os::CSIDL_APPDATA) + "\\" + kSociety + "\\Compta\\Common");
    EXPECT_EQ(Get(SocietyDataUser), UserFolder(os::CSIDL_APPDATA) + "\\" + kSociety);
}

TEST_F(PathsTest, AShareLineMovesEveryFolderBelowItAndNamesAreMadeValid) {
    fs::create_directories(m_Root / "docs");
    WritePathsIni("[Paths]\r\nDocumentsRootID=" + Folder("docs") + "\r\n");
    GlobalDico::Get().SetValue("App.Name", "con");
    EXPECT_EQ(Get(ConfigRootShared, CreateIfMissing), Folder("docs") + "\\Partage\\con_");
    EXPECT_EQ(Get(TemplatesWinGenShared, CreateIfMissing),
              Folder("docs") + "\\Partage\\con_\\Modeles\\WinGen");
    EXPECT_EQ(Get(UserData, CreateIfMissing),
              UserFolder(os::CSIDL_APPDATA) + "\\" + kSociety + "\\con_");
    EXPECT_EQ(Get(FoldersUser, CreateIfMissing), Folder("docs") + "\\Partage\\Dossiers");
    // Backups hang from the documents root, beside the share, not in it.
    EXPECT_EQ(Get(Backups, CreateIfMissing), Folder("docs") + "\\Sauvegardes");
}

TEST_F(PathsTest, AliasesFollowTheirTargetAndALineOfTheirOwnOverridesThemAlone) {
    fs::create_directories(m_Root / "inet");
    fs::create_directories(m_Root / "watch");
    WritePathsIni("[Paths]\r\nConfigInetShared=" + Folder("inet") + "\r\n");
    EXPECT_EQ(Get(ConfigWatchShared), Folder("inet"));
    EXPECT_EQ(Get(ConfigServicePackagesShared), Folder("inet"));
    WritePathsIni("[Paths]\r\nConfigInetShared=" + Folder("inet") +
                  "\r\nConfigWatchShared=" + Folder("watch") + "\r\n");
    EXPECT_EQ(Get(ConfigWatchShared), Folder("watch"));
    EXPECT_EQ(Get(ConfigServicePackagesShared), Folder("inet"));
    EXPECT_EQ(Get(ConfigInetShared), Folder("inet"));
}

TEST_F(PathsTest, MovingAppParamsRootMovesItsFamilyButNotTools) {
    fs::create_directories(m_Root / "params");
    WritePathsIni("[Paths]\r\nAppParamsRoot=" + Folder("params") + "\r\n");
    EXPECT_EQ(Get(AppParamsBaseVide), Folder("params") + "\\BaseVide");
    EXPECT_EQ(Get(ConfigRootSystem), Folder("params"));
    EXPECT_EQ(Get(TemplatesRootSystem, CreateIfMissing), Folder("params") + "\\Modeles");
    EXPECT_EQ(Get(Tools), Folder("app"));
}

TEST_F(PathsTest, PathsIniValuesAreTrimmedExpandedAndReadAgainstTheApplication) {
    fs::create_directories(m_Root / "app/rel/deep");
    fs::create_directories(m_Root / "env");
    setenv("NVK_PATHS_TEST_DIR", Folder("env").c_str(), 1);
    WritePathsIni(
        "[Paths]\r\nShare= \t rel\\deep \t\r\nCommon=%NVK_PATHS_TEST_DIR%\r\n"
        "Mine=%NVK_PATHS_TEST_DIR%\\sub\r\nEmpty=\r\n");
    EXPECT_EQ(Get(Share), Folder("app") + "\\rel\\deep");
    EXPECT_EQ(Get("share"), Folder("app") + "\\rel\\deep");
    EXPECT_EQ(Get(Common), Folder("env"));
    EXPECT_EQ(Get("Mine"), "");
    EXPECT_EQ(Get("Mine", CreateIfMissing), Folder("env") + "\\sub");
    // An empty value counts as none.
    EXPECT_EQ(Get("Empty"), "");
    unsetenv("NVK_PATHS_TEST_DIR");
}

TEST_F(PathsTest, ALineForAMissingFolderIsFinalForKeysButNotForIdentifiers) {
    WritePathsIni("[Paths]\r\nTools=" + Folder("gone") + "\r\nMine=" + Folder("gone") + "\r\n");
    SetRule("Mine", Tools, "x");
    EXPECT_EQ(Get("Tools"), "");
    EXPECT_EQ(Get("Mine"), "");
    EXPECT_EQ(Get(Tools), Folder("app"));
    // The text overload knows no defaults.
    EXPECT_EQ(Get("AppParamsRoot"), "");
}

TEST_F(PathsTest, MemoryValuesAreSeenByIdentifiersAndIdRulesOnly) {
    fs::create_directories(m_Root / "mem");
    EXPECT_TRUE(Set(Share, C(Folder("mem")), EmptyIfMissing, StoreInMemory));
    EXPECT_FALSE(Set(Common, C(Folder("none")), EmptyIfMissing, StoreInMemory));
    SetRule("ByText", "Share", "t");
    SetRule("ById", Share, "i");
    EXPECT_EQ(Get(Share), Folder("mem"));
    EXPECT_EQ(Get("Share"), "");
    EXPECT_EQ(Get("ByText", CreateIfMissing), "");
    EXPECT_EQ(Get("ById", CreateIfMissing), Folder("mem") + "\\i");
    EXPECT_EQ(Get(Common, CreateIfMissing), Folder("mem") + "\\Common");
    // Not tested again when read.
    fs::remove_all(m_Root / "mem");
    EXPECT_EQ(Get(Share), Folder("mem"));
    EXPECT_TRUE(Set(Share, "", EmptyIfMissing, StoreInMemory));
    EXPECT_EQ(Get(Share), "");
}

TEST_F(PathsTest, RulesChainRemoveAndStopWhenTheyDefineEachOther) {
    fs::create_directories(m_Root / "base");
    WritePathsIni("[Paths]\r\nBase=" + Folder("base") + "\r\n");
    SetRule("Child", "Base", "child");
    SetRule("Grandchild", "child", "");
    EXPECT_EQ(Get("Grandchild", CreateIfMissing), Folder("base") + "\\child\\");
    SetRule("Child", "", "");
    EXPECT_EQ(Get("Grandchild", CreateIfMissing), "");

    // Two keys that define each other end with nothing, not a crash.
    SetRule("Ping", "Pong", "a");
    SetRule("Pong", "Ping", "b");
    EXPECT_EQ(Get("Ping", CreateIfMissing), "");
    // So does a cycle through an identifier's default.
    SetRule("Share", Common, "s");
    EXPECT_EQ(Get(Share), "");
}

TEST_F(PathsTest, SetInFileKeepsTheTextAsWrittenAndRefusesBadFolders) {
    fs::create_directories(m_Root / "app/rel");
    WritePathsIni("; installation\r\n[Paths]\r\nCommon=keep\r\n");
    EXPECT_TRUE(Set(Share, "rel", EmptyIfMissing, StoreInFile));
    EXPECT_EQ(Get(Share), Folder("app") + "\\rel");
    EXPECT_FALSE(Set(FoldersDemo, "missing", EmptyIfMissing, StoreInFile));
    EXPECT_TRUE(Set("Own", "", EmptyIfMissing, StoreInFile));
    const std::string text = ReadPathsIni();
    EXPECT_NE(text.find("Share=rel\r\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Common=keep\r\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Own=\r\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("FoldersDemo"), std::string::npos) << text;
    EXPECT_NE(text.find("; installation"), std::string::npos) << text;
}

TEST_F(PathsTest, BackupsFallToThePersonalDocumentsWhenTheyCantBeWritten) {
    fs::create_directories(m_Root / "docs/Sauvegardes");
    WritePathsIni("[Paths]\r\nDocumentsRootID=" + Folder("docs") + "\r\n");
    EXPECT_EQ(Get(Backups), Folder("docs") + "\\Sauvegardes");
    EXPECT_TRUE(fs::is_empty(m_Root / "docs/Sauvegardes"));
    // A folder in the way of the probe file fails the write, also for root.
    fs::create_directories(m_Root / "docs/Sauvegardes/###_TESTSAUVEGARDNVK_###.zip");
    EXPECT_EQ(Get(Backups), UserFolder(os::CSIDL_PERSONAL));
}

TEST_F(PathsTest, DatabaseServersComeFromTheFileOrThePath) {
    WritePathsIni("[DBServers]\r\nShare=\tSRV-SQL \r\n");
    EXPECT_EQ(std::string(DBServer(Share).c_str()), "SRV-SQL");
    EXPECT_EQ(std::string(DBServer(Tools).c_str()), "");
    EXPECT_EQ(std::string(DBServerForPath("\\\\files\\compta\\dossiers").c_str()), "files");
    EXPECT_EQ(std::string(DBServerForPath(C(Folder("app"))).c_str()), "");
}

}  // namespace
}  // namespace nvk::test
