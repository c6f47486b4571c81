// Message boxes. No window system here: the application's hook shows the
// box; without one the text goes to standard error and the answer is the
// style's default button (IDOK for a box of one button).
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);

using MessageBoxHook = int (*)(HWND owner, LPCSTR text, LPCSTR caption, UINT type);
// Installs the application's hook (null removes it); returns the previous one.
MessageBoxHook SetMessageBoxHook(MessageBoxHook hook);

}  // namespace nvk::os

namespace nvk::os {

// The answer of a box nobody sees: the default button of the style, the
// first when the style names one beyond its buttons.
int MessageBoxDefaultButton(UINT type);

}  // namespace nvk::os
