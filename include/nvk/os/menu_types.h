// Menu handles and the flags of menu items.
#pragma once

#include "nvk/os/types.h"

struct HMENU__;

namespace nvk::os {

using HMENU = ::HMENU__*;
using UINT_PTR = ULONG_PTR;

inline constexpr UINT MF_BYCOMMAND = 0x0000;
inline constexpr UINT MF_BYPOSITION = 0x0400;
inline constexpr UINT MF_STRING = 0x0000;
inline constexpr UINT MF_ENABLED = 0x0000;
inline constexpr UINT MF_UNCHECKED = 0x0000;
inline constexpr UINT MF_GRAYED = 0x0001;
inline constexpr UINT MF_DISABLED = 0x0002;
inline constexpr UINT MF_BITMAP = 0x0004;
inline constexpr UINT MF_CHECKED = 0x0008;
inline constexpr UINT MF_POPUP = 0x0010;
inline constexpr UINT MF_MENUBARBREAK = 0x0020;
inline constexpr UINT MF_MENUBREAK = 0x0040;
inline constexpr UINT MF_HILITE = 0x0080;
inline constexpr UINT MF_OWNERDRAW = 0x0100;
inline constexpr UINT MF_SEPARATOR = 0x0800;
inline constexpr UINT MF_DEFAULT = 0x1000;

inline constexpr DWORD ERROR_INVALID_MENU_HANDLE = 1401;
inline constexpr DWORD ERROR_MENU_ITEM_NOT_FOUND = 1456;

}  // namespace nvk::os
