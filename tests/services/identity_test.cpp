// The process dictionary and what is read from it. The readers keep their
// answers for the process, so each case that reads them runs in a process of
// its own.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "nvk/services/app_identity.h"
#include "nvk/services/global_dico.h"
#include "nvk/services/library_handle.h"
#include "os/api/environment.h"
#include "os/api/path_map.h"

namespace {

std::string Text(const Chaine& value) {
    return value.c_str();
}

// Runs `body` in a new run of this test program, so that it finds the
// process's caches empty.
template <class Body>
void InFreshProcess(Body body) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            body();
            std::exit(testing::Test::HasFailure() ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
}

// The process's variable as its children inherit it: on Windows the C
// runtime's getenv reads a copy made at start-up, which the system's
// SetEnvironmentVariable leaves as it was. "<unset>" when it is not there.
std::string Variable(const char* name) {
    char value[1024];
    const nvk::os::DWORD length = nvk::os::GetEnvironmentVariableA(name, value, sizeof value);
    return length == 0 || length >= sizeof value ? "<unset>" : std::string(value, length);
}

// A folder without a skin, for the cases that must not see the one beside
// the test program.
std::string NoSkinFolder() {
    return nvk::os::ToWindowsPath(std::filesystem::temp_directory_path().string().c_str());
}

TEST(GlobalDico, KeysIgnoreCaseAndAbsentKeysGiveTheDefault) {
    GlobalDico::Get().SetValue("App.Name", "Compta");
    EXPECT_EQ(Text(GetDicoValue("app.NAME", "none")), "Compta");
    EXPECT_TRUE(ExistDicoValue("APP.name"));
    EXPECT_EQ(Text(GetDicoValue("App.Other", "none")), "none");
    EXPECT_FALSE(ExistDicoValue("App.Other"));
    // A key keeps its first spelling; a second write replaces the value.
    GlobalDico::Get().SetValue("APP.NAME", "Paie");
    EXPECT_EQ(Text(GetDicoValue("App.Name", "")), "Paie");
    EXPECT_EQ(Text(GlobalDico::Get().GetKey(GlobalDico::Get().Find("app.name"))), "App.Name");
    EXPECT_TRUE(GlobalDico::Get().RemoveValue("app.name"));
    EXPECT_FALSE(ExistDicoValue("App.Name"));
}

TEST(AppIdentity, AShortNameSetAfterAnEmptyReadIsSeen) {
    InFreshProcess([] {
        EXPECT_FALSE(HasShortName());
        EXPECT_EQ(Text(GetShortName()), "");
        GlobalDico::Get().SetValue("App.ShortName", "CPT");
        EXPECT_TRUE(HasShortName());
        EXPECT_EQ(Text(GetShortName()), "CPT");
        // Once known it is kept.
        GlobalDico::Get().SetValue("App.ShortName", "PAI");
        EXPECT_EQ(Text(GetShortName()), "CPT");
    });
}

TEST(AppIdentity, SocietyIsTheDefaultWithoutSkinOrEntryAndThenKept) {
    InFreshProcess([] {
        SetEnvironment(NoSkinFolder().c_str(), "cdSkin");
        EXPECT_EQ(GetSkinModule(), nullptr);
        EXPECT_EQ(Text(GetSocietyID()), "NVK-TARO");
        GlobalDico::Get().SetValue("App.SocietyID", "SOC-DICO");
        EXPECT_EQ(Text(GetSocietyID()), "NVK-TARO");
    });
    InFreshProcess([] {
        SetEnvironment(NoSkinFolder().c_str(), "cdSkin");
        GlobalDico::Get().SetValue("App.SocietyID", "SOC-DICO");
        EXPECT_EQ(Text(GetSocietyID()), "SOC-DICO");
    });
}

TEST(AppIdentity, TheSkinBesideTheProgramNamesTheSocietyAndIsPassedOn) {
    InFreshProcess([] {
        SetEnvironment("", "cdSkin");
        EXPECT_EQ(Variable("cdSkin"), "<unset>");
        GlobalDico::Get().SetValue("App.SocietyID", "SOC-DICO");
        Chaine exeFolder;
        exeFolder.GetExeFolder();
        EXPECT_EQ(Text(GetSkinFolder()), Text(exeFolder));
        // The skin was found, so its folder is now the process's "cdSkin".
        EXPECT_EQ(Variable("cdSkin"), Text(exeFolder));
        EXPECT_NE(GetSkinModule(), nullptr);
        EXPECT_EQ(GetSkinModule(), GetSkinModule());
        EXPECT_EQ(Text(GetSocietyID()), "SOC-SKIN");
    });
}

TEST(LibraryHandle, LoadsOnceAndNamesItsFile) {
    LibraryHandle beside("Z:\\elsewhere\\Editor.skn", true);
    Chaine exeFolder;
    EXPECT_EQ(Text(beside.FileName), Text(PathJoin(exeFolder.GetExeFolder(), "Editor.skn")));
    EXPECT_FALSE(beside.Owned);
    beside.Load();
    EXPECT_TRUE(beside.Owned);
    EXPECT_NE(beside.Module, nullptr);

    LibraryHandle missing("Z:\\no\\such\\module.skn", false);
    EXPECT_EQ(Text(missing.FileName), "Z:\\no\\such\\module.skn");
    missing.Load();
    EXPECT_TRUE(missing.Owned);
    EXPECT_EQ(missing.Module, nullptr);
}

}  // namespace
