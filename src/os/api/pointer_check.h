// Whether the process may write a range of its memory.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// TRUE when some byte of the `size` bytes at `address` cannot be written; an
// empty range is never bad. The range is checked against the process's
// mappings, so nothing is written and no fault is taken.
BOOL IsBadWritePtr(LPVOID address, ULONG_PTR size);

}  // namespace nvk::os
