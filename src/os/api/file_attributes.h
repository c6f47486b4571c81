// File attributes. On POSIX: directory from the file type, read-only when the
// owner can't write, hidden for a name that begins with '.'; a file with none
// of these is FILE_ATTRIBUTE_NORMAL.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// INVALID_FILE_ATTRIBUTES on failure.
DWORD GetFileAttributesA(LPCSTR fileName);
// Only the read-only bit changes anything on POSIX: it takes away every write
// permission, and clearing it gives the owner's back.
BOOL SetFileAttributesA(LPCSTR fileName, DWORD attributes);

}  // namespace nvk::os
