// Starting programs and following them to their end.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// The command line is split by the Windows rules (quotes, backslashes before
// quotes). The program, when it has no folder, is looked for in the
// executable's folder, the current folder, then PATH; a name ending in ".exe"
// is also looked for without it. `environment` is a block of "NAME=value"
// strings ending with an empty one. Handles are not inherited. The process
// handle is waited on with WaitForSingleObject; the thread handle stands for
// the same process. `startupInfo` is required, as Windows reads it whatever
// the flags.
BOOL CreateProcessA(LPCSTR applicationName, LPSTR commandLine,
                    LPSECURITY_ATTRIBUTES processAttributes, LPSECURITY_ATTRIBUTES threadAttributes,
                    BOOL inheritHandles, DWORD creationFlags, LPVOID environment,
                    LPCSTR currentDirectory, LPSTARTUPINFOA startupInfo,
                    LPPROCESS_INFORMATION processInformation);
// STILL_ACTIVE while the process runs; a process ended by a signal reports
// 128 plus the signal's number.
BOOL GetExitCodeProcess(HANDLE process, LPDWORD exitCode);
BOOL TerminateProcess(HANDLE process, UINT exitCode);
// Above 31 on success; otherwise 0, ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND
// or ERROR_BAD_FORMAT.
UINT WinExec(LPCSTR commandLine, UINT showCommand);

}  // namespace nvk::os
