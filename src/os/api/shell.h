// The shell's file operations, folder browser and item lists.
#pragma once

#include "nvk/os/shell.h"
#include "nvk/os/types.h"
#include "os/api/window.h"

namespace nvk::os {

// Only FO_DELETE is done; any other operation answers
// ERROR_CALL_NOT_IMPLEMENTED. Each name of `pFrom` is deleted, a folder with
// all it holds (links removed as links, never followed), or with
// FOF_ALLOWUNDO moved to the trash: on POSIX the freedesktop.org trash, the
// user's own ($XDG_DATA_HOME/Trash) for files of its file system, else
// ".Trash-UID" at the top of the file's own file system, so that the desktop
// shows the file there and can restore it. 0 on success, else the error of
// the first name that failed; the names after it stay.
int SHFileOperationA(SHFILEOPSTRUCTA* operation);

// Shows the application's browser; without one, answers as a cancelled
// dialog, with null.
LPITEMIDLIST SHBrowseForFolderA(BROWSEINFOA* info);
// The item list of a special folder (a CSIDL value), from the shell's
// allocator; the places without a path (computer, network, printers) give a
// list with an empty path. E_INVALIDARG for an unknown value.
HRESULT SHGetSpecialFolderLocation(HWND owner, int csidl, LPITEMIDLIST* list);
// The path of a list into a buffer of MAX_PATH; FALSE for a list without one.
BOOL SHGetPathFromIDListA(LPCITEMIDLIST list, LPSTR path);
HRESULT SHGetMalloc(IMalloc** allocator);
// A list that holds `path`, from the shell's allocator: what a browser hook
// returns.
LPITEMIDLIST ItemListFromPath(LPCSTR path);

}  // namespace nvk::os
