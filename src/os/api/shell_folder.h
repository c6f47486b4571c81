// The shell's special folders.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// The folder of a CSIDL value in drive form, into a buffer of MAX_PATH.
// CSIDL_FLAG_CREATE in `csidl` makes the folder when it is missing. S_OK, or
// E_FAIL for a folder that has no path (computer, network, printers) or that
// lies on no drive, E_INVALIDARG for an unknown value. The window, token and
// flags are ignored.
HRESULT SHGetFolderPathA(HWND owner, int csidl, HANDLE token, DWORD flags, LPSTR path);

}  // namespace nvk::os
