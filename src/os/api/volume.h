// Drives and volumes: which drives are mapped, what kind they are, and their
// space. A root is "C:\", "C:" or "\\server\share\"; null means the current
// folder's drive.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// Bit n set for each mapped drive letter 'A' + n.
DWORD GetLogicalDrives();
// By the mount table: DRIVE_REMOTE for shares and network file systems,
// DRIVE_RAMDISK for memory file systems, DRIVE_CDROM for disc file systems,
// DRIVE_REMOVABLE for a disk whose medium can be taken out, DRIVE_UNKNOWN for
// the kernel's pseudo file systems, DRIVE_FIXED otherwise; DRIVE_NO_ROOT_DIR
// when the root names nothing.
UINT GetDriveTypeA(LPCSTR rootPathName);
// The volume name is empty; the serial number comes from the file system's
// id, the file system name from its type.
BOOL GetVolumeInformationA(LPCSTR rootPathName, LPSTR volumeNameBuffer, DWORD volumeNameSize,
                           LPDWORD volumeSerialNumber, LPDWORD maximumComponentLength,
                           LPDWORD fileSystemFlags, LPSTR fileSystemNameBuffer,
                           DWORD fileSystemNameSize);
// Counts beyond 32 bits are clipped to 0xFFFFFFFF, as the old call does.
BOOL GetDiskFreeSpaceA(LPCSTR rootPathName, LPDWORD sectorsPerCluster, LPDWORD bytesPerSector,
                       LPDWORD numberOfFreeClusters, LPDWORD totalNumberOfClusters);
// Any folder of the volume will do.
BOOL GetDiskFreeSpaceExA(LPCSTR directoryName, PULARGE_INTEGER freeBytesAvailableToCaller,
                         PULARGE_INTEGER totalNumberOfBytes,
                         PULARGE_INTEGER totalNumberOfFreeBytes);

}  // namespace nvk::os
