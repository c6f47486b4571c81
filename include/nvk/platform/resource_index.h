// Where a resource stands among those of its type, as icon indices count.
#pragma once

#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

// The position from 0 of the resource among the names of its type, in the
// module's enumeration order; -1 when absent. A `name` up to 65535 is a
// number, above that a text compared exactly.
NVKUTIL_EXPORT int FindResourceIndex(nvk::os::HINSTANCE module, const char* type, const char* name);

// The position of the icon group numbered by the low 16 bits of `id`, or
// when there is none, of the icon image of that number.
NVKUTIL_EXPORT int FindIconIndex(nvk::os::HINSTANCE module, nvk::os::DWORD id);
