// Whether backups can be written in a folder.
#pragma once

#include "nvk/core/chaine.h"

namespace nvk::paths {

// Writes a file of a name no user picks in `folder`, and deletes it.
bool CanWriteIn(const Chaine& folder);

}  // namespace nvk::paths
