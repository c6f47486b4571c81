// The state of the keyboard, which some constructors read to let the user
// change their behaviour by holding a key.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

using SHORT = std::int16_t;

inline constexpr int VK_SHIFT = 0x10;
inline constexpr int VK_CONTROL = 0x11;
inline constexpr int VK_MENU = 0x12;

// The state of a virtual key as Windows gives it: the high bit set while the
// key is down, the low bit for a toggled key. A process without a keyboard of
// its own has no key down unless the application's hook answers otherwise.
SHORT GetKeyState(int virtualKey);

// Installs the application's answer for GetKeyState (null removes it) and
// returns the previous one.
using KeyStateHook = SHORT (*)(int virtualKey);
KeyStateHook SetKeyStateHook(KeyStateHook hook);

}  // namespace nvk::os
