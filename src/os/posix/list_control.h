// The procedures of the system's list and combo box classes.
#pragma once

#include "nvk/os/window_types.h"

namespace nvk::os::posix {

LRESULT ComboBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT ListBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace nvk::os::posix
