#include "os/posix/mount_kind.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <fstream>
#include <sstream>
#include <string>

namespace nvk::os::posix {

namespace {

bool AnyOf(std::string_view type, std::initializer_list<std::string_view> types) {
    for (std::string_view one : types) {
        if (type == one) {
            return true;
        }
    }
    return false;
}

std::string ReadAll(const std::string& path) {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Whether the block device, or the disk a partition belongs to, is
// removable.
bool IsRemovable(unsigned major, unsigned minor) {
    const std::string device =
        "/sys/dev/block/" + std::to_string(major) + ":" + std::to_string(minor);
    return ReadAll(device + "/removable").starts_with("1") ||
           ReadAll(device + "/../removable").starts_with("1");
}

}  // namespace

bool FindMount(std::string_view mountInfo, unsigned major, unsigned minor, MountEntry& entry) {
    bool found = false;
    std::istringstream lines{std::string(mountInfo)};
    std::string line;
    while (std::getline(lines, line)) {
        // "id parent major:minor root point options [optional...] - type ..."
        std::istringstream fields(line);
        std::string id, parent, device, root, point, options, field;
        if (!(fields >> id >> parent >> device >> root >> point >> options)) {
            continue;
        }
        while (fields >> field && field != "-") {
        }
        std::string type;
        unsigned mountMajor = 0, mountMinor = 0;
        char colon = 0;
        std::istringstream numbers(device);
        if (field != "-" || !(fields >> type) || !(numbers >> mountMajor >> colon >> mountMinor) ||
            colon != ':') {
            continue;
        }
        if (mountMajor == major && mountMinor == minor) {
            entry = {mountMajor, mountMinor, type};
            found = true;
        }
    }
    return found;
}

UINT DriveTypeOfMount(const MountEntry& entry, bool removable) {
    const std::string_view type = entry.type;
    if (AnyOf(type, {"nfs", "nfs4", "cifs", "smb3", "smbfs", "ncpfs", "afs", "9p", "ceph",
                     "glusterfs", "fuse.sshfs", "davfs", "fuse.davfs2"})) {
        return DRIVE_REMOTE;
    }
    if (AnyOf(type, {"iso9660", "udf"})) {
        return DRIVE_CDROM;
    }
    if (AnyOf(type, {"tmpfs", "ramfs"})) {
        return DRIVE_RAMDISK;
    }
    if (AnyOf(type, {"proc",       "sysfs",      "devtmpfs", "devpts", "cgroup",      "cgroup2",
                     "securityfs", "debugfs",    "tracefs",  "pstore", "bpf",         "mqueue",
                     "hugetlbfs",  "configfs",   "fusectl",  "autofs", "binfmt_misc", "efivarfs",
                     "nsfs",       "rpc_pipefs", "selinuxfs"})) {
        return DRIVE_UNKNOWN;
    }
    return removable ? DRIVE_REMOVABLE : DRIVE_FIXED;
}

bool DriveTypeByMountTable(const std::string& nativePath, UINT& type) {
    struct stat info;
    MountEntry entry;
    if (stat(nativePath.c_str(), &info) != 0 ||
        !FindMount(ReadAll("/proc/self/mountinfo"), major(info.st_dev), minor(info.st_dev),
                   entry)) {
        return false;
    }
    type = DriveTypeOfMount(entry, IsRemovable(entry.major, entry.minor));
    return true;
}

}  // namespace nvk::os::posix
