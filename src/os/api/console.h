// The process's standard handles and whether they are a console.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

inline constexpr DWORD STD_INPUT_HANDLE = static_cast<DWORD>(-10);
inline constexpr DWORD STD_OUTPUT_HANDLE = static_cast<DWORD>(-11);
inline constexpr DWORD STD_ERROR_HANDLE = static_cast<DWORD>(-12);

inline constexpr DWORD ENABLE_PROCESSED_OUTPUT = 0x1;
inline constexpr DWORD ENABLE_WRAP_AT_EOL_OUTPUT = 0x2;

// The same handle for the same stream at every call; INVALID_HANDLE_VALUE
// with ERROR_INVALID_PARAMETER for another number.
HANDLE GetStdHandle(DWORD stdHandle);
// Succeeds only for a handle on a console (on POSIX, a terminal), which is
// how a program tells a console from a file or a pipe.
BOOL GetConsoleMode(HANDLE console, LPDWORD mode);

}  // namespace nvk::os
