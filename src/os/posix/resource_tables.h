// The resource tables that a module carries.
#pragma once

#include <vector>

#include "os/api/resource.h"

namespace nvk::os::posix {

// The registered tables of a module; without any, the table it exports.
std::vector<const ResourceTable*> TablesOf(HMODULE module);

// Whether a stored type or name (a text, or a number when the text is null)
// is the one asked for, given as MAKEINTRESOURCEA, "#123" or a text of any
// case.
bool SameId(LPCSTR storedText, WORD storedId, LPCSTR asked);

}  // namespace nvk::os::posix
