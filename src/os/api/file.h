// Files with Windows paths, share modes and byte-range locks.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// Share modes hold between every two opens of a file, in one process or in
// several: an open that asks for an access another open does not share, or
// that refuses to share an access another open holds, fails with
// ERROR_SHARING_VIOLATION.
HANDLE CreateFileA(LPCSTR fileName, DWORD desiredAccess, DWORD shareMode,
                   LPSECURITY_ATTRIBUTES attributes, DWORD creationDisposition,
                   DWORD flagsAndAttributes, HANDLE templateFile);
BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD toRead, LPDWORD read, LPVOID overlapped);
BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD toWrite, LPDWORD written, LPVOID overlapped);
DWORD SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh, DWORD moveMethod);
DWORD GetFileSize(HANDLE file, LPDWORD sizeHigh);
// A file with a section open (its handle or a view, in any process) can grow
// but not shrink, nor be emptied by CREATE_ALWAYS or TRUNCATE_EXISTING:
// ERROR_USER_MAPPED_FILE.
inline constexpr DWORD ERROR_USER_MAPPED_FILE = 1224;
BOOL SetEndOfFile(HANDLE file);
BOOL FlushFileBuffers(HANDLE file);
BOOL GetFileTime(HANDLE file, FILETIME* creation, FILETIME* lastAccess, FILETIME* lastWrite);
BOOL DeleteFileA(LPCSTR fileName);
BOOL MoveFileA(LPCSTR existingName, LPCSTR newName);
// Mandatory between handles as on Windows: a region locked through one handle
// refuses reads, writes and locks through every other handle.
BOOL LockFile(HANDLE file, DWORD offsetLow, DWORD offsetHigh, DWORD bytesLow, DWORD bytesHigh);
BOOL UnlockFile(HANDLE file, DWORD offsetLow, DWORD offsetHigh, DWORD bytesLow, DWORD bytesHigh);

}  // namespace nvk::os
