// The calling thread's last error, as Win32 keeps it.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

DWORD GetLastError();
void SetLastError(DWORD code);

}  // namespace nvk::os
