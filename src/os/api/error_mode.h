// The process's error mode: which failures the system reports in a dialog
// of its own. POSIX shows none, so the mode is only kept and given back.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

inline constexpr UINT SEM_FAILCRITICALERRORS = 0x0001;
inline constexpr UINT SEM_NOGPFAULTERRORBOX = 0x0002;
inline constexpr UINT SEM_NOALIGNMENTFAULTEXCEPT = 0x0004;
inline constexpr UINT SEM_NOOPENFILEERRORBOX = 0x8000;

// Sets the mode and returns the one before.
UINT SetErrorMode(UINT mode);

}  // namespace nvk::os
