// The process environment, with Windows' rules for names and expansion.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

DWORD GetEnvironmentVariableA(LPCSTR name, LPSTR buffer, DWORD size);
// A null value removes the variable.
BOOL SetEnvironmentVariableA(LPCSTR name, LPCSTR value);
// Replaces each %NAME% by its value; an unknown name stays as written.
DWORD ExpandEnvironmentStringsA(LPCSTR source, LPSTR destination, DWORD size);

}  // namespace nvk::os
