// A whole file put in place of another in one step, and the final path of an
// open file: what a writer needs so that a file always holds either its whole
// old content or its whole new content.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

inline constexpr DWORD ERROR_UNABLE_TO_REMOVE_REPLACED = 1175;
inline constexpr DWORD ERROR_UNABLE_TO_MOVE_REPLACEMENT = 1176;
inline constexpr DWORD FILE_NAME_NORMALIZED = 0x0;
inline constexpr DWORD VOLUME_NAME_DOS = 0x0;

// The replacement takes the place of the replaced file in one step, and keeps
// its permissions (owner and group where this user may give them, and the
// access bits). Through a link, the file it leads to is replaced and the link
// stays. Both files must be on one volume. The replaced file is opened for
// reading and deletion, sharing all: refused with
// ERROR_UNABLE_TO_REMOVE_REPLACED when an open of it refuses its reading or
// its deletion (a holder that means to replace it shares both). No backup
// is kept: `backupFileName` must be null.
BOOL ReplaceFileA(LPCSTR replacedFileName, LPCSTR replacementFileName, LPCSTR backupFileName,
                  DWORD replaceFlags, LPVOID exclude, LPVOID reserved);

// "\\?\" and the drive form of the path of the file that the handle has
// open, links resolved. Returns the length, or when `size` is too small the
// size needed with the terminator, or 0 with the error set
// (ERROR_FILE_NOT_FOUND when no name reaches the file any more).
DWORD GetFinalPathNameByHandleA(HANDLE file, LPSTR path, DWORD size, DWORD flags);

}  // namespace nvk::os
