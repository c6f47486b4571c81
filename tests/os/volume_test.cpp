// Drives, volumes, network connections and special folders.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "os/api/error.h"
#include "os/api/network.h"
#include "os/api/path_map.h"
#include "os/api/shell_folder.h"
#include "os/api/volume.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

// "X:\\" of the drive that holds `folder`.
std::string VolumeRoot(const test::TempFolder& folder) {
    return ToWindowsPath(folder.str().c_str()).substr(0, 3);
}

TEST(VolumeTest, DrivesComeFromTheMap) {
    test::TempFolder folder;
    test::ScopedEnv drives("NVK_DRIVES", ("T=" + folder.str() + ";Z=").c_str());
    DWORD mask = GetLogicalDrives();
    EXPECT_EQ(mask & (1u << ('T' - 'A')), 1u << ('T' - 'A'));
    EXPECT_EQ(mask & (1u << ('Z' - 'A')), 0u);
    EXPECT_EQ(GetDriveTypeA("Q:\\"), DRIVE_NO_ROOT_DIR);
    EXPECT_FALSE(GetVolumeInformationA("Q:\\", nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0));
    EXPECT_EQ(VolumeRoot(folder), "T:\\");
}

// The volume of the drive that holds the scratch folder.
TEST(VolumeTest, ADrivesVolumeAndSpace) {
    test::TempFolder folder;
    const std::string root = VolumeRoot(folder);
    UINT type = GetDriveTypeA(root.c_str());
    EXPECT_TRUE(type == DRIVE_FIXED || type == DRIVE_RAMDISK || type == DRIVE_REMOTE) << type;

    DWORD serial = 0;
    DWORD longest = 0;
    char system[32];
    ASSERT_TRUE(GetVolumeInformationA(root.c_str(), nullptr, 0, &serial, &longest, nullptr, system,
                                      sizeof system));
    EXPECT_GE(longest, 255u);
    EXPECT_GT(std::string(system).size(), 0u);
    EXPECT_FALSE(
        GetVolumeInformationA(root.c_str(), nullptr, 0, nullptr, nullptr, nullptr, system, 1));

    ULARGE_INTEGER available;
    ULARGE_INTEGER total;
    ULARGE_INTEGER free;
    ASSERT_TRUE(GetDiskFreeSpaceExA(root.c_str(), &available, &total, &free));
    EXPECT_LE(available.QuadPart, free.QuadPart);
    EXPECT_LE(free.QuadPart, total.QuadPart);
    DWORD sectors = 0;
    DWORD bytes = 0;
    DWORD freeClusters = 0;
    DWORD clusters = 0;
    ASSERT_TRUE(GetDiskFreeSpaceA(root.c_str(), &sectors, &bytes, &freeClusters, &clusters));
    EXPECT_EQ(bytes, 512u);
    EXPECT_LE(freeClusters, clusters);
}

TEST(NetworkTest, DrivesOnSharesNameTheirShare) {
    test::ScopedEnv drives("NVK_DRIVES",
                           "N=/mnt/compta;M=/mnt/compta/2024;L=/srv;\\\\FS\\Compta=/mnt/compta");
    char remote[64];
    DWORD length = sizeof remote;
    EXPECT_EQ(WNetGetConnectionA("n:", remote, &length), ERROR_SUCCESS);
    EXPECT_STREQ(remote, "\\\\FS\\Compta");
    EXPECT_EQ(WNetGetConnectionA("M:", remote, &length), ERROR_SUCCESS);
    EXPECT_STREQ(remote, "\\\\FS\\Compta\\2024");
    length = 4;
    EXPECT_EQ(WNetGetConnectionA("M:", remote, &length), ERROR_MORE_DATA);
    EXPECT_EQ(length, 17u);
    EXPECT_EQ(WNetGetConnectionA("L:", remote, &length), ERROR_NOT_CONNECTED);
    EXPECT_EQ(WNetGetConnectionA("Q:", remote, &length), ERROR_BAD_DEVICE);
    EXPECT_EQ(WNetGetConnectionA("NN", remote, &length), ERROR_BAD_DEVICE);
}

TEST(ShellFolderTest, SpecialFoldersFollowTheXdgDirectories) {
    test::TempFolder home;
    std::filesystem::create_directories(home / "cfg");
    std::ofstream(home / "cfg/user-dirs.dirs") << "# written by hand\n"
                                                  "XDG_DOCUMENTS_DIR=\"$HOME/Mes documents\"\n";
    test::ScopedEnv drives("NVK_DRIVES", ("H=" + home.str()).c_str());
    test::ScopedEnv homeVariable("HOME", home.str().c_str());
    test::ScopedEnv config("XDG_CONFIG_HOME", (home / "cfg").c_str());
    test::ScopedEnv data("XDG_DATA_HOME", nullptr);
    test::ScopedEnv desktop("XDG_DESKTOP_DIR", nullptr);
    char path[MAX_PATH];
    auto folder = [&](int csidl) {
        HRESULT result = SHGetFolderPathA(nullptr, csidl, nullptr, 0, path);
        return result == S_OK ? std::string(path) : "#" + std::to_string(result);
    };
    EXPECT_EQ(folder(CSIDL_PERSONAL), "H:\\Mes documents");
    EXPECT_EQ(folder(CSIDL_DESKTOP), "H:\\Desktop");
    EXPECT_EQ(folder(CSIDL_APPDATA), "H:\\.local\\share");
    EXPECT_EQ(folder(CSIDL_COMMON_APPDATA), "Z:\\var\\lib");
    EXPECT_EQ(folder(CSIDL_PROGRAM_FILES), "Z:\\opt");
    EXPECT_EQ(folder(CSIDL_COMMON_DOCUMENTS), "Z:\\srv");
    {
        test::ScopedEnv override("XDG_DESKTOP_DIR", (home / "Bureau").c_str());
        EXPECT_EQ(folder(CSIDL_DESKTOP | CSIDL_FLAG_CREATE), "H:\\Bureau");
        EXPECT_TRUE(std::filesystem::is_directory(home / "Bureau"));
    }
}

// A folder without a path on disk fails; a number that names no folder is
// refused as an argument.
TEST(ShellFolderTest, VirtualAndUnknownFoldersHaveNoPath) {
    char path[MAX_PATH];
    EXPECT_EQ(SHGetFolderPathA(nullptr, CSIDL_DRIVES, nullptr, 0, path), E_FAIL);
    EXPECT_EQ(SHGetFolderPathA(nullptr, 999, nullptr, 0, path), E_INVALIDARG);
}

}  // namespace
}  // namespace nvk::os
