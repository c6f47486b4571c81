// Searching folders. The last component of the pattern may hold "*" and "?",
// which match without regard to case, as on Windows; "*.*" matches every
// name. A pattern without them names one entry by its exact name.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND when nothing matches, or
// ERROR_PATH_NOT_FOUND when the folder is missing. Entries come in name
// order, "." and ".." first in a folder that is not a drive's root; the search sees
// the folder as it was at this call.
HANDLE FindFirstFileA(LPCSTR fileName, LPWIN32_FIND_DATAA findData);
// FALSE with ERROR_NO_MORE_FILES after the last entry.
BOOL FindNextFileA(HANDLE findFile, LPWIN32_FIND_DATAA findData);
BOOL FindClose(HANDLE findFile);

}  // namespace nvk::os
