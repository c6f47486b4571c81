// The folder browser that the application installs, shared by the backends.
#pragma once

#include "nvk/os/shell.h"

namespace nvk::os {

// The hook now installed; empty members when there is none.
FolderBrowserHook CurrentFolderBrowserHook();

}  // namespace nvk::os
