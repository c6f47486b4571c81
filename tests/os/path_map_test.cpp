#include <gtest/gtest.h>

#include <filesystem>

#include "os/api/path_map.h"
#include "os/posix/drive_map.h"
#include "os_test_support.h"

namespace nvk::os::posix {
namespace {

const char* const kDriveC = "/home/ann/.local/share/nvk/drive_c";

TEST(DriveMapTest, DriveFormsMapToTheirDirectories) {
    DriveMap map = MakeDriveMap("", kDriveC);
    EXPECT_EQ(MapToNative(map, "C:\\Dossiers\\a.txt", "/"),
              std::string(kDriveC) + "/Dossiers/a.txt");
    EXPECT_EQ(MapToNative(map, "c:/Dossiers//b.txt", "/"),
              std::string(kDriveC) + "/Dossiers/b.txt");
    EXPECT_EQ(MapToNative(map, "Z:\\etc\\hosts", "/"), "/etc/hosts");
    EXPECT_EQ(MapToNative(map, "Z:\\", "/"), "/");
    EXPECT_EQ(MapToNative(map, "C:\\..\\..\\x", "/"), std::string(kDriveC) + "/x");
    EXPECT_EQ(MapToNative(map, "Z:\\a\\.\\b\\..\\c", "/"), "/a/c");
    EXPECT_EQ(MapToNative(map, "D:\\x", "/"), "");
    EXPECT_EQ(MapToNative(map, "\\\\?\\C:\\x", "/"), std::string(kDriveC) + "/x");
}

TEST(DriveMapTest, PosixAndRelativePathsFollowTheCurrentDirectory) {
    DriveMap map = MakeDriveMap("", kDriveC);
    std::string inC = std::string(kDriveC) + "/work";
    EXPECT_EQ(MapToNative(map, "/usr/lib/x.so", inC), "/usr/lib/x.so");
    EXPECT_EQ(MapToNative(map, "a\\b.txt", "/home/ann"), "/home/ann/a/b.txt");
    EXPECT_EQ(MapToNative(map, "..\\x", "/home/ann"), "/home/x");
    EXPECT_EQ(MapToNative(map, "..\\..\\..\\x", "/home/ann"), "/x");
    // Relative to the current drive's root: Z: for /home, C: inside drive_c.
    EXPECT_EQ(MapToNative(map, "\\etc\\hosts", "/home/ann"), "/etc/hosts");
    EXPECT_EQ(MapToNative(map, "\\x", inC), std::string(kDriveC) + "/x");
    EXPECT_EQ(MapToNative(map, "..\\..\\y", inC), std::string(kDriveC) + "/y");
    // A drive without a separator: the current folder if it is that drive's.
    EXPECT_EQ(MapToNative(map, "C:x", inC), inC + "/x");
    EXPECT_EQ(MapToNative(map, "C:x", "/home"), std::string(kDriveC) + "/x");
}

TEST(DriveMapTest, EnvironmentEntriesOverrideTheDefaults) {
    DriveMap map =
        MakeDriveMap("C=/srv/c;d:=/mnt/d/;Z=;bad;Q=relative;\\\\FS\\Compta=/mnt/compta", kDriveC);
    EXPECT_EQ(MapToNative(map, "C:\\x", "/"), "/srv/c/x");
    EXPECT_EQ(MapToNative(map, "D:\\x", "/"), "/mnt/d/x");
    EXPECT_EQ(MapToNative(map, "Z:\\x", "/"), "");
    EXPECT_EQ(MapToNative(map, "Q:\\x", "/"), "");
    EXPECT_EQ(MapToNative(map, "\\\\fs\\compta\\2024\\a.txt", "/"), "/mnt/compta/2024/a.txt");
    EXPECT_EQ(MapToNative(map, "//fs/compta/../compta/b", "/"), "/mnt/compta/compta/b");
    EXPECT_EQ(MapToNative(map, "\\\\fs\\other\\a", "/"), "");
    EXPECT_EQ(MapToNative(map, "\\\\fs", "/"), "");
}

TEST(DriveMapTest, NetworkMountsServeUncPaths) {
    DriveMap map = MakeDriveMap("\\\\nas\\data=/mnt/explicit", kDriveC);
    AddNetworkMounts(map,
                     "/dev/vda / ext4 rw 0 0\n"
                     "//nas/data /mnt/nas cifs rw 0 0\n"
                     "//nas/my\\040docs /mnt/my\\040docs cifs rw 0 0\n"
                     "srv:/export/home /net/home nfs4 rw 0 0\n"
                     "srv:/export /net/export nfs rw 0 0\n"
                     "tmpfs /tmp tmpfs rw 0 0");
    EXPECT_EQ(MapToNative(map, "\\\\nas\\data\\x", "/"), "/mnt/explicit/x");
    EXPECT_EQ(MapToNative(map, "\\\\NAS\\My Docs\\x", "/"), "/mnt/my docs/x");
    EXPECT_EQ(MapToNative(map, "\\\\srv\\export\\home\\ann", "/"), "/net/home/ann");
    EXPECT_EQ(MapToNative(map, "\\\\srv\\export\\other", "/"), "/net/export/other");
}

TEST(DriveMapTest, NativePathsTakeTheLongestDrive) {
    DriveMap map = MakeDriveMap("C=/srv/c;E=/srv/c/e;\\\\fs\\s=/mnt/s", kDriveC);
    EXPECT_EQ(MapToWindows(map, "/srv/c/x/y.txt", "/"), "C:\\x\\y.txt");
    EXPECT_EQ(MapToWindows(map, "/srv/c/e", "/"), "E:\\");
    EXPECT_EQ(MapToWindows(map, "/srv/cx", "/"), "Z:\\srv\\cx");
    EXPECT_EQ(MapToWindows(map, "/", "/"), "Z:\\");
    EXPECT_EQ(MapToWindows(map, "x/../y", "/srv/c"), "C:\\y");
    DriveMap noRoot = MakeDriveMap("Z=;\\\\fs\\s=/mnt/s", kDriveC);
    EXPECT_EQ(MapToWindows(noRoot, "/mnt/s/a", "/"), "\\\\fs\\s\\a");
    EXPECT_EQ(MapToWindows(noRoot, "/etc", "/"), "");
}

TEST(PathMapTest, UsesTheEnvironmentAndCreatesDriveC) {
    test::TempFolder folder;
    test::ScopedEnv data("XDG_DATA_HOME", folder.str().c_str());
    test::ScopedEnv drives("NVK_DRIVES", ("Q=" + folder / "q").c_str());
    std::string driveC = folder / "nvk/drive_c";
    EXPECT_FALSE(std::filesystem::exists(driveC));
    EXPECT_EQ(ToNativePath("C:\\x.txt"), driveC + "/x.txt");
    EXPECT_TRUE(std::filesystem::is_directory(driveC));
    EXPECT_EQ(ToNativePath("q:\\a\\b"), folder / "q/a/b");
    EXPECT_EQ(ToWindowsPath((folder / "q/a").c_str()), "Q:\\a");
    EXPECT_EQ(ToNativePath(ToWindowsPath("/etc/hosts").c_str()), "/etc/hosts");
}

}  // namespace
}  // namespace nvk::os::posix
