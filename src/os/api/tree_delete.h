// Emptying a folder tree in one call, for the tree deletions above the layer:
// walking and deleting by full paths would find every name anew from the
// drive down, where the system can work relative to the folder it has open.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// Deletes everything the folder `pathName` holds, folders with all they hold
// and read-only files too. A link goes as itself, never followed, and so does
// `pathName` when it is one: nothing outside the tree is touched. FALSE at the
// first failure, with its error (ERROR_PATH_NOT_FOUND or ERROR_DIRECTORY when
// `pathName` is no folder to empty); what went before it stays deleted.
BOOL EmptyFolderA(LPCSTR pathName);

}  // namespace nvk::os
