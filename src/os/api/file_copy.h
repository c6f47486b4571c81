// Copying and moving files under the share modes of open handles.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// Copies the content, the read-only attribute and the time of last write.
// With `failIfExists`, an existing target fails with ERROR_FILE_EXISTS.
BOOL CopyFileA(LPCSTR existingName, LPCSTR newName, BOOL failIfExists);
// MOVEFILE_REPLACE_EXISTING replaces a file (never a folder);
// MOVEFILE_COPY_ALLOWED lets a file cross to another volume, which otherwise
// fails with ERROR_NOT_SAME_DEVICE. Other flags are ignored.
BOOL MoveFileExA(LPCSTR existingName, LPCSTR newName, DWORD flags);

}  // namespace nvk::os
