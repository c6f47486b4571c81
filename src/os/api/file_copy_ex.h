// Copying with options: a symbolic link can be copied as a link.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

inline constexpr DWORD COPY_FILE_FAIL_IF_EXISTS = 0x1;
inline constexpr DWORD COPY_FILE_COPY_SYMLINK = 0x800;

// With COPY_FILE_COPY_SYMLINK a link, to a file or a folder, gives a link to
// the same target, which is never read; anything else is copied as CopyFileA
// does. The progress routine and cancel flag are not supported and must be
// null.
BOOL CopyFileExA(LPCSTR existingName, LPCSTR newName, LPVOID progressRoutine, LPVOID data,
                 BOOL* cancel, DWORD copyFlags);

}  // namespace nvk::os
