// The descriptor behind a file handle of the OS layer, for the calls of the
// backend that work on an open file (copies set the mode and the times of the
// file they opened, never of whatever has its name afterwards).
#pragma once

#include "nvk/os/types.h"

namespace nvk::os::posix {

// The file descriptor of a handle from CreateFileA; -1 with
// ERROR_INVALID_HANDLE set for anything else.
int DescriptorOf(HANDLE file);

}  // namespace nvk::os::posix
