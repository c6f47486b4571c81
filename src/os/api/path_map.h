// The map between Windows paths and this system's own, as Wine draws it:
// drive letters name directories (Z: is the root, C: a per-user directory),
// and NVK_DRIVES ("C=/srv/c;D=/mnt/d") overrides the defaults.
#pragma once

#include <string>

#include "nvk/os/types.h"

namespace nvk::os {

// The native path of a Windows path, relative ones taken from the current
// folder; empty if the path names no mapped drive or share.
std::string ToNativePath(LPCSTR windowsPath);
// The drive form of a native path ("Z:\home\ann").
std::string ToWindowsPath(LPCSTR nativePath);

}  // namespace nvk::os
