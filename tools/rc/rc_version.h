// The VERSIONINFO of a module: laid out as the VS_VERSIONINFO tree that the
// version functions read, and written into the module's own ELF section.
#pragma once

#include <ostream>
#include <vector>

#include "rc_model.h"

namespace nvk::rc {

std::vector<unsigned char> VersionBytes(const VersionInfo& version);

// Adds to the C++ source the array of the script's VERSIONINFO, if it has
// one, placed in the section that the version functions look for.
void WriteVersionSection(const Script& script, std::ostream& out);

}  // namespace nvk::rc
