#include "os/api/system_info.h"

#include <cstring>

#include "os/posix/handle.h"

namespace nvk::os {

BOOL GetVersionExA(OSVERSIONINFOA* info) {
    if (info == nullptr) {
        posix::SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const DWORD size = info->dwOSVersionInfoSize;
    if (size != sizeof(OSVERSIONINFOA) && size != sizeof(OSVERSIONINFOEXA)) {
        posix::SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memset(info, 0, size);
    info->dwOSVersionInfoSize = size;
    info->dwMajorVersion = 10;
    info->dwMinorVersion = 0;
    info->dwBuildNumber = 19045;
    info->dwPlatformId = VER_PLATFORM_WIN32_NT;
    if (size == sizeof(OSVERSIONINFOEXA)) {
        constexpr BYTE kWorkstation = 1;  // VER_NT_WORKSTATION
        reinterpret_cast<OSVERSIONINFOEXA*>(info)->wProductType = kWorkstation;
    }
    posix::SetErrorCode(ERROR_SUCCESS);
    return TRUE;
}

}  // namespace nvk::os
