#include "nvk/services/app_version.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "os/api/profile.h"

namespace {

// The fixture: product version 3.2 release 7, file version 3.2.7.1234,
// French text "3.2 révision 7" (product "3.2 Édition").
constexpr const char* kFileText = "3.2 r\xE9vision 7";

class AppVersionTest : public ::testing::Test {
protected:
    AppVersionTest() { std::filesystem::copy_file(NVK_VERSION_APP, exe_); }
    ~AppVersionTest() override { std::filesystem::remove_all(folder_); }

    void Side(const char* build, const char* patch, const char* date) {
        nvk::os::WritePrivateProfileStringA("NVKPatch", "Build", build, side_.c_str());
        nvk::os::WritePrivateProfileStringA("NVKPatch", "Patch", patch, side_.c_str());
        nvk::os::WritePrivateProfileStringA("NVKPatch", "Date", date, side_.c_str());
    }
    std::string Version(unsigned long flags) const {
        return GetAppVersion(exe_.c_str(), flags).c_str();
    }

    static std::string MakeFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "nvk_ver_XXXXXX").string();
        return mkdtemp(pattern.data());
    }

    std::string folder_ = MakeFolder();
    std::string exe_ = folder_ + "/App.EXE";
    std::string side_ = folder_ + "/App.ptc";
};

TEST_F(AppVersionTest, FormsOfAnUnpatchedFile) {
    EXPECT_EQ(Version(0), kFileText);
    EXPECT_EQ(Version(1), "3.2 (R7)");
    EXPECT_EQ(Version(5), "3.2");
    EXPECT_EQ(Version(7), "3.2");
    EXPECT_EQ(Version(8),
              "3.2 \xC9"
              "dition");
    EXPECT_EQ(GetAppVersionValue(exe_.c_str(), 0), (0x0003000200070000u | 1234u));
    EXPECT_EQ(GetAppVersionValue(exe_.c_str(), 8), 0x0003000200070000u);
    EXPECT_EQ(GetAppVersionValue(exe_.c_str(), 7), GetAppVersionValue(exe_.c_str(), 0));

    EXPECT_EQ(std::string(GetAppVersion((folder_ + "/none.exe").c_str(), 0).c_str()), "***");
    const std::string text = folder_ + "/text.exe";
    std::ofstream(text) << "no version here";
    EXPECT_EQ(std::string(GetAppVersion(text.c_str(), 1).c_str()), "Alpha");
    EXPECT_EQ(GetAppVersionValue(text.c_str(), 0), 0u);
}

TEST_F(AppVersionTest, APatchShowsWithTheResourceText) {
    Side("1234", "3", "05/11/09");
    const PATCHVALUE patch = GetNVKAppPatchValue(exe_.c_str());
    EXPECT_EQ(patch.patch, 3);
    EXPECT_EQ(int{patch.date.day}, 5);
    EXPECT_EQ(int{patch.date.month}, 11);
    EXPECT_EQ(int{patch.date.year}, 2009);
    const std::string patched = std::string(kFileText) + " - Patch 3 (05/11/9)";
    EXPECT_EQ(Version(0), patched);
    EXPECT_EQ(Version(1), patched) << "a patch gives up the numbers";
    EXPECT_EQ(Version(7), kFileText);

    Side("1234", "255", "31.12.1985");
    EXPECT_EQ(int{GetNVKAppPatchValue(exe_.c_str()).date.year}, 1985);
    Side("1234", "1", "05/11/85");
    EXPECT_EQ(int{GetNVKAppPatchValue(exe_.c_str()).date.year}, 1985);
    Side("1234", "1", "05/11/79");
    EXPECT_EQ(int{GetNVKAppPatchValue(exe_.c_str()).date.year}, 2079);
}

TEST_F(AppVersionTest, SideFilesThatDoNotFitAreIgnored) {
    const PATCHVALUE none;
    for (const auto& [build, patch, date] :
         {std::tuple{"1235", "3", "05/11/09"}, std::tuple{"1234", "0", "05/11/09"},
          std::tuple{"1234", "256", "05/11/09"}, std::tuple{"1234", "-1", "05/11/09"},
          std::tuple{"1234", "3", "5/11/09"}, std::tuple{"1234", "3", "05/11/x9"}}) {
        Side(build, patch, date);
        EXPECT_TRUE(GetNVKAppPatchValue(exe_.c_str()) == none) << build << patch << date;
        EXPECT_EQ(Version(1), "3.2 (R7)");
    }
    // Only an executable has a side file.
    Side("1234", "3", "05/11/09");
    const std::string module = folder_ + "/App.so";
    std::filesystem::copy_file(exe_, module);
    EXPECT_TRUE(GetNVKAppPatchValue(module.c_str()) == none);
    EXPECT_TRUE(GetNVKAppPatchValue("exe") == none);
}

TEST(PatchValueTest, StartsEmptyAndOrdersByNumberThenDate) {
    PATCHVALUE value;
    const unsigned char zeros[5] = {};
    EXPECT_EQ(std::memcmp(&value, zeros, sizeof zeros), 0);

    auto make = [](int patch, int day, int month, int year) {
        PATCHVALUE made;
        made.patch = static_cast<std::uint8_t>(patch);
        made.date.day = static_cast<std::uint8_t>(day);
        made.date.month = static_cast<std::uint8_t>(month);
        made.date.year = static_cast<std::uint16_t>(year);
        return made;
    };
    const PATCHVALUE early = make(2, 31, 12, 2009);
    const PATCHVALUE late = make(2, 1, 1, 2010);
    EXPECT_TRUE(early < late && early <= late && late > early && late >= early);
    EXPECT_TRUE(make(2, 2, 1, 2010) > late);
    EXPECT_TRUE(make(1, 1, 1, 2030) < early) << "the number comes first";
    PATCHVALUE copy(late);
    EXPECT_TRUE(copy == late && copy <= late && copy >= late && !(copy < late));
    copy = early;
    EXPECT_TRUE(copy == early);
}

TEST(ThisAppVersionTest, ReadsTheRunningProgram) {
    EXPECT_EQ(GetThisAppVersionValue(0), 0x0005000600070008u);
    EXPECT_EQ(std::string(GetThisAppVersion(0).c_str()), "5.6.7.8");
    EXPECT_EQ(std::string(GetThisAppVersion(1).c_str()), "5.6 (R7)");
    EXPECT_TRUE(GetThisNVKAppPatchValue() == PATCHVALUE());
}

}  // namespace
