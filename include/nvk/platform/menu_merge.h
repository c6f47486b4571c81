// Merging a module's menu into the application's, and taking it out again.
#pragma once

#include "nvk/nvkutil_export.h"
#include "nvk/os/menu_types.h"

// Inserts the items of `src` into `dest`, at its end, or before its last two
// items when bit 0 of `flags` is set. An item whose text `dest` already has
// merges its sub-menu into that item's and moves the insertion point after
// it; a new section is opened by one separator. Sub-menus are copied.
NVKUTIL_EXPORT void MergeMenu(nvk::os::HMENU dest, nvk::os::HMENU src, nvk::os::DWORD flags);

// Takes off `dest` what MergeMenu put there: a sub-menu of `src` found under
// the same text is taken off whole; into another sub-menu, the merged
// section is cut from its end by counting separators, whatever its items
// are called. With bit 0 of `flags`, a separator left last goes too.
NVKUTIL_EXPORT void UnMergeMenu(nvk::os::HMENU dest, nvk::os::HMENU src, nvk::os::DWORD flags);
