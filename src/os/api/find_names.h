// Searches that need the names and kinds of the entries alone, as walks that
// only go through a tree do. Each entry of FindFirstFileA costs the system a
// look at it beside the folder's listing; these take what the listing tells.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// As FindFirstFileA, with FindNextFileA and FindClose, but an entry the
// listing tells the kind of has its name and only the directory, hidden and
// archive (regular file) bits: no size, times or read-only bit. A link, or a
// name that a search could not find again (wildcard characters in it), is
// described in full.
HANDLE FindFirstNameA(LPCSTR fileName, LPWIN32_FIND_DATAA findData);

}  // namespace nvk::os
