// The desktop's trash, in the freedesktop.org layout that desktops share
// (files/ and info/NAME.trashinfo), so that a file put there shows in the
// file manager's trash and can be restored from it.
#pragma once

#include <string>

#include "nvk/os/types.h"

namespace nvk::os::posix {

// Moves the native absolute `path` (a file, a link or a folder) to the trash
// of its file system: the user's own trash when it is on the same file
// system, else "$topdir/.Trash/$uid" or "$topdir/.Trash-$uid". 0 or a Win32
// error.
DWORD MoveToTrash(const std::string& path);

// The user's own trash folder: $XDG_DATA_HOME/Trash, by default
// ~/.local/share/Trash.
std::string HomeTrash();

}  // namespace nvk::os::posix
