// Folders, the current folder and full paths. Paths handed out are in drive
// form ("Z:\home\ann").
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// ERROR_ALREADY_EXISTS for an existing name, ERROR_PATH_NOT_FOUND for a
// missing parent. The security attributes are accepted and ignored.
BOOL CreateDirectoryA(LPCSTR pathName, LPSECURITY_ATTRIBUTES attributes);
// ERROR_DIR_NOT_EMPTY for a folder that holds something, ERROR_DIRECTORY for
// a name that is not a folder.
BOOL RemoveDirectoryA(LPCSTR pathName);

// The buffer-filling calls return the length written without its terminator,
// or, when `size` is too small, the size needed with it; 0 on failure.
DWORD GetCurrentDirectoryA(DWORD size, LPSTR buffer);
// The current folder is the process's, shared by its threads.
BOOL SetCurrentDirectoryA(LPCSTR pathName);
// String logic only: the path need not exist. `filePart`, when given, points
// at the last component in `buffer`, or is null when the path ends in "\".
DWORD GetFullPathNameA(LPCSTR fileName, DWORD size, LPSTR buffer, LPSTR* filePart);

}  // namespace nvk::os
