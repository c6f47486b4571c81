// The standard streams of a console program.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

inline constexpr DWORD STD_OUTPUT_HANDLE = static_cast<DWORD>(-11);
inline constexpr DWORD STD_ERROR_HANDLE = static_cast<DWORD>(-12);

// Whether a standard stream is a console (a terminal), what
// GetFileType(GetStdHandle(stream)) == FILE_TYPE_CHAR tells on Windows:
// progress drawn in place belongs there and nowhere else.
BOOL IsConsoleStream(DWORD stream);

}  // namespace nvk::os
