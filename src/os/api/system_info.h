// What the system says it is.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

inline constexpr DWORD VER_PLATFORM_WIN32_NT = 2;

struct OSVERSIONINFOA {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char szCSDVersion[128];
};

struct OSVERSIONINFOEXA {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char szCSDVersion[128];
    WORD wServicePackMajor;
    WORD wServicePackMinor;
    WORD wSuiteMask;
    BYTE wProductType;
    BYTE wReserved;
};

// Fills either record, chosen by its dwOSVersionInfoSize; any other size fails
// with ERROR_INSUFFICIENT_BUFFER. POSIX systems answer as an NT-family
// workstation of version 10.0, which is what the callers test for.
BOOL GetVersionExA(OSVERSIONINFOA* info);

}  // namespace nvk::os
