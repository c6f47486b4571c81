// Accounts and their security identifiers. POSIX systems have no SIDs: a
// user's is made stably from the machine id and the uid, "S-1-5-21-" then
// three numbers of the machine id, then the uid as the relative id, so that
// a user keeps the same SID text on a machine and differs between machines.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

using PSID = void*;
using HLOCAL = void*;

enum SID_NAME_USE : int { SidTypeUser = 1 };

inline constexpr DWORD ERROR_NONE_MAPPED = 1332;
inline constexpr DWORD ERROR_INVALID_SID = 1337;

// Finds an account of this machine by its name (`systemName` must be null).
// `*sidSize` and `*domainSize` hold the rooms of the buffers (the domain's
// in characters) and receive what was written, the domain without its
// terminator; when either is too small the call fails with
// ERROR_INSUFFICIENT_BUFFER and both receive the room needed, the domain's
// with its terminator. An unknown name is ERROR_NONE_MAPPED. The domain is
// the machine's name in capitals.
BOOL LookupAccountNameA(LPCSTR systemName, LPCSTR accountName, PSID sid, LPDWORD sidSize,
                        LPSTR domain, LPDWORD domainSize, SID_NAME_USE* use);

// "S-1-..." of a SID, in a buffer that the caller releases with LocalFree.
BOOL ConvertSidToStringSidA(PSID sid, LPSTR* text);

// Releases what the calls above allocate; null on success.
HLOCAL LocalFree(HLOCAL memory);

}  // namespace nvk::os
