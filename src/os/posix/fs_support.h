// What the file-system calls of the POSIX backend share: the Win32 errors of
// a failed path, file times, attributes, and the two-pass text output of the
// calls that fill a caller's buffer.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "nvk/os/types.h"

namespace nvk::os::posix {

// The Win32 code for an errno of a call on `nativePath`: a missing name is
// "file not found" when its folder exists, else "path not found".
void SetPathError(int error, const std::string& nativePath);
// A Windows path that names no mapped drive or share.
void SetUnmappedError(LPCSTR windowsPath);

// 100-nanosecond intervals since 1601-01-01.
FILETIME ToFileTime(const statx_timestamp& time);

// Directory from the file type, read-only when the owner can't write, hidden
// for a name that begins with '.' (but not "." and ".."), archive for a
// regular file as Windows marks every new and changed file, and a reparse
// point for a symbolic link (`mode` is then its target's, when it has one),
// so that walks can tell a link from what it points to. Normal when none.
DWORD AttributesOf(mode_t mode, std::string_view name, bool link = false);

// Copies `text` with its terminator when `size` holds it and returns its
// length; otherwise returns the size needed, terminator included, and leaves
// the buffer alone.
DWORD CopyOut(std::string_view text, LPSTR buffer, DWORD size);

}  // namespace nvk::os::posix
