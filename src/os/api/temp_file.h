// The temporary folder and unique temporary files.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// The first of TMP, TEMP (Windows or native paths), TMPDIR (native) and
// "/tmp", in full drive form ending in "\". The folder need not exist.
DWORD GetTempPathA(DWORD size, LPSTR buffer);
// "<path>\<up to 3 characters of prefix><hex number>.tmp" into a buffer of
// MAX_PATH. With `unique` 0 a free number is chosen and the file is created
// empty; otherwise the name is only made. Returns the number, or 0 on
// failure (ERROR_DIRECTORY when `path` is not a folder).
UINT GetTempFileNameA(LPCSTR path, LPCSTR prefix, UINT unique, LPSTR tempFileName);

}  // namespace nvk::os
