// What kind of drive a mount is, from the system's mount table: local disk
// file systems are fixed, removable and optical media are such, network file
// systems remote, memory file systems RAM disks, and the kernel's pseudo file
// systems (proc, sysfs, cgroup, ...) no drive at all.
#pragma once

#include <string>
#include <string_view>

#include "nvk/os/types.h"

namespace nvk::os::posix {

struct MountEntry {
    unsigned major = 0;
    unsigned minor = 0;
    std::string type;
};

// The last mount of the device `major`:`minor` in a table in the format of
// /proc/self/mountinfo; false if none.
bool FindMount(std::string_view mountInfo, unsigned major, unsigned minor, MountEntry& entry);
// `removable`: the block device under the mount says its medium can be taken
// out.
UINT DriveTypeOfMount(const MountEntry& entry, bool removable);
// The drive type of the mount that holds the native path; false when the
// table can't be read or doesn't have it.
bool DriveTypeByMountTable(const std::string& nativePath, UINT& type);

}  // namespace nvk::os::posix
