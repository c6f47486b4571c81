// Which drives a drive-mode walk takes, by the kind named in its root.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/os/types.h"

namespace nvk::files {

// `kind` is the root itself: "<HardDrives>" takes fixed drives,
// "<LocalDrives>" the local ones, any other name every drive of a known kind.
// Types above those the table knows count as fixed.
bool DriveOfKind(const Chaine& kind, nvk::os::UINT driveType);

}  // namespace nvk::files
