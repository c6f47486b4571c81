// Finds the bytes of a version resource in an executable file, reading only
// the headers and tables on the way to it.
#pragma once

#include <vector>

#include "nvk/os/types.h"

namespace nvk::os::posix {

// The VS_VERSIONINFO of a PE file (the first version resource of its
// resource section, in its first language) or of an ELF file (the start of
// its section ".nvkversion"), cut to the length its root states. False with
// the last error set when there is none.
bool ReadVersionResource(LPCSTR fileName, std::vector<BYTE>& resource);

}  // namespace nvk::os::posix
