#include "os/api/volume.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "os/api/directory.h"
#include "os/api/path_map.h"
#include "os/posix/drive_map.h"
#include "os/posix/fs_support.h"
#include "os/posix/handle.h"
#include "os/posix/mount_kind.h"
#include "os/posix/system_drive_map.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

// The kinds of file system that change what a drive is.
constexpr long kCifsMagic = 0xFF534D42;
constexpr long kSmb2Magic = 0xFE534D42;
constexpr long kUdfMagic = 0x15013346;

// The native folder of a root; null means the current folder.
bool NativeRoot(LPCSTR root, std::string& native) {
    native = root != nullptr ? ToNativePath(root) : posix::NativeCurrentDirectory();
    if (native.empty()) {
        posix::SetUnmappedError(root);
        return false;
    }
    return true;
}

bool StatFs(LPCSTR root, struct statfs& info) {
    std::string native;
    if (!NativeRoot(root, native)) {
        return false;
    }
    if (statfs(native.c_str(), &info) != 0) {
        posix::SetPathError(errno, native);
        return false;
    }
    return true;
}

const char* FileSystemName(long type) {
    switch (type) {
        case EXT4_SUPER_MAGIC:
            return "ext4";
        case BTRFS_SUPER_MAGIC:
            return "btrfs";
        case XFS_SUPER_MAGIC:
            return "xfs";
        case TMPFS_MAGIC:
            return "tmpfs";
        case OVERLAYFS_SUPER_MAGIC:
            return "overlay";
        case NFS_SUPER_MAGIC:
            return "nfs";
        case kCifsMagic:
        case kSmb2Magic:
        case SMB_SUPER_MAGIC:
            return "cifs";
        case ISOFS_SUPER_MAGIC:
            return "iso9660";
        case kUdfMagic:
            return "udf";
        case MSDOS_SUPER_MAGIC:
            return "FAT";
        default:
            return "unix";
    }
}

DWORD Clip(unsigned long long value) {
    return value > 0xFFFFFFFFULL ? 0xFFFFFFFF : static_cast<DWORD>(value);
}

}  // namespace

DWORD GetLogicalDrives() {
    posix::DriveMap map = posix::SystemDriveMap(false);
    DWORD drives = 0;
    for (int letter = 0; letter < 26; ++letter) {
        if (!map.drives[letter].empty()) {
            drives |= DWORD{1} << letter;
        }
    }
    return drives;
}

UINT GetDriveTypeA(LPCSTR rootPathName) {
    std::string native;
    struct stat folder;
    if (!NativeRoot(rootPathName, native) || stat(native.c_str(), &folder) != 0 ||
        !S_ISDIR(folder.st_mode)) {
        return DRIVE_NO_ROOT_DIR;
    }
    if (rootPathName != nullptr && posix::IsUncPath(rootPathName)) {
        return DRIVE_REMOTE;
    }
    UINT type = DRIVE_UNKNOWN;
    if (posix::DriveTypeByMountTable(native, type)) {
        return type;
    }
    // Without a mount table, the file system's type decides what it can.
    struct statfs info;
    if (statfs(native.c_str(), &info) != 0) {
        return DRIVE_UNKNOWN;
    }
    switch (info.f_type) {
        case NFS_SUPER_MAGIC:
        case kCifsMagic:
        case kSmb2Magic:
        case SMB_SUPER_MAGIC:
            return DRIVE_REMOTE;
        case TMPFS_MAGIC:
        case RAMFS_MAGIC:
            return DRIVE_RAMDISK;
        case ISOFS_SUPER_MAGIC:
        case kUdfMagic:
            return DRIVE_CDROM;
        default:
            return DRIVE_FIXED;
    }
}

BOOL GetVolumeInformationA(LPCSTR rootPathName, LPSTR volumeNameBuffer, DWORD volumeNameSize,
                           LPDWORD volumeSerialNumber, LPDWORD maximumComponentLength,
                           LPDWORD fileSystemFlags, LPSTR fileSystemNameBuffer,
                           DWORD fileSystemNameSize) {
    struct statfs info;
    if (!StatFs(rootPathName, info)) {
        return FALSE;
    }
    const char* name = FileSystemName(info.f_type);
    if ((volumeNameBuffer != nullptr && volumeNameSize < 1) ||
        (fileSystemNameBuffer != nullptr && fileSystemNameSize <= std::strlen(name))) {
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    if (volumeNameBuffer != nullptr) {
        volumeNameBuffer[0] = '\0';
    }
    if (volumeSerialNumber != nullptr) {
        int words[2];
        std::memcpy(words, &info.f_fsid, sizeof words);
        *volumeSerialNumber = static_cast<DWORD>(words[0]) ^ static_cast<DWORD>(words[1]);
    }
    if (maximumComponentLength != nullptr) {
        *maximumComponentLength = static_cast<DWORD>(info.f_namelen);
    }
    if (fileSystemFlags != nullptr) {
        *fileSystemFlags = FILE_CASE_SENSITIVE_SEARCH | FILE_CASE_PRESERVED_NAMES;
    }
    if (fileSystemNameBuffer != nullptr) {
        std::strcpy(fileSystemNameBuffer, name);
    }
    return TRUE;
}

BOOL GetDiskFreeSpaceA(LPCSTR rootPathName, LPDWORD sectorsPerCluster, LPDWORD bytesPerSector,
                       LPDWORD numberOfFreeClusters, LPDWORD totalNumberOfClusters) {
    struct statfs info;
    if (!StatFs(rootPathName, info)) {
        return FALSE;
    }
    constexpr DWORD kSector = 512;
    auto block = static_cast<unsigned long long>(info.f_frsize != 0 ? info.f_frsize : info.f_bsize);
    // Blocks smaller than a sector count as one sector each.
    DWORD sectors = block >= kSector ? static_cast<DWORD>(block / kSector) : 1;
    if (sectorsPerCluster != nullptr) {
        *sectorsPerCluster = sectors;
    }
    if (bytesPerSector != nullptr) {
        *bytesPerSector = kSector;
    }
    if (numberOfFreeClusters != nullptr) {
        *numberOfFreeClusters = Clip(info.f_bavail);
    }
    if (totalNumberOfClusters != nullptr) {
        *totalNumberOfClusters = Clip(info.f_blocks);
    }
    return TRUE;
}

BOOL GetDiskFreeSpaceExA(LPCSTR directoryName, PULARGE_INTEGER freeBytesAvailableToCaller,
                         PULARGE_INTEGER totalNumberOfBytes,
                         PULARGE_INTEGER totalNumberOfFreeBytes) {
    struct statfs info;
    if (!StatFs(directoryName, info)) {
        return FALSE;
    }
    auto block = static_cast<ULONGLONG>(info.f_frsize != 0 ? info.f_frsize : info.f_bsize);
    if (freeBytesAvailableToCaller != nullptr) {
        freeBytesAvailableToCaller->QuadPart = block * info.f_bavail;
    }
    if (totalNumberOfBytes != nullptr) {
        totalNumberOfBytes->QuadPart = block * info.f_blocks;
    }
    if (totalNumberOfFreeBytes != nullptr) {
        totalNumberOfFreeBytes->QuadPart = block * info.f_bfree;
    }
    return TRUE;
}

}  // namespace nvk::os
