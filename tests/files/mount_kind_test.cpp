// Drive types from the mount table.
#include <gtest/gtest.h>

#include "os/posix/mount_kind.h"

namespace {

using namespace nvk::os;

TEST(MountKind, ClassifiesTheMountsOfATable) {
    const char* table =
        "22 27 0:21 / /proc rw,relatime - proc proc rw\n"
        "27 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
        "30 27 0:40 / /mnt/share rw master:2 - cifs //srv/share rw\n"
        "31 27 11:0 / /media/cd ro - iso9660 /dev/sr0 ro\n"
        "32 27 8:1 /sub /bound rw - ext4 /dev/sda1 rw\n"
        "broken line\n";
    posix::MountEntry entry;
    ASSERT_TRUE(posix::FindMount(table, 8, 1, entry));
    EXPECT_EQ(entry.type, "ext4");
    EXPECT_EQ(posix::DriveTypeOfMount(entry, false), DRIVE_FIXED);
    EXPECT_EQ(posix::DriveTypeOfMount(entry, true), DRIVE_REMOVABLE);
    ASSERT_TRUE(posix::FindMount(table, 0, 40, entry));
    EXPECT_EQ(posix::DriveTypeOfMount(entry, false), DRIVE_REMOTE);
    ASSERT_TRUE(posix::FindMount(table, 11, 0, entry));
    EXPECT_EQ(posix::DriveTypeOfMount(entry, false), DRIVE_CDROM);
    ASSERT_TRUE(posix::FindMount(table, 0, 21, entry));
    EXPECT_EQ(posix::DriveTypeOfMount(entry, false), DRIVE_UNKNOWN);
    EXPECT_EQ(posix::DriveTypeOfMount({0, 0, "tmpfs"}, false), DRIVE_RAMDISK);
    EXPECT_FALSE(posix::FindMount(table, 9, 9, entry));
}

}  // namespace
