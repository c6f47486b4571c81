// The drive map this process sees: the defaults, NVK_DRIVES, and on request
// the network mounts of the system's mount table.
#pragma once

#include <string>

#include "os/posix/drive_map.h"

namespace nvk::os::posix {

DriveMap SystemDriveMap(bool withNetworkMounts);
// The process's current directory, native; "/" if it can't be read.
std::string NativeCurrentDirectory();

}  // namespace nvk::os::posix
