// Network connections of drives.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// The share behind a drive ("X:"): "\\server\share", with the folder inside
// the share when the drive maps below it. Returns ERROR_SUCCESS, or
// ERROR_BAD_DEVICE for a drive that is not mapped, ERROR_NOT_CONNECTED for one
// on a local disk, ERROR_MORE_DATA with the size needed in `length`.
DWORD WNetGetConnectionA(LPCSTR localName, LPSTR remoteName, LPDWORD length);

}  // namespace nvk::os
