// Menus, held by the OS layer as Windows holds them: a menu is a list of
// items (strings, separators, pop-ups that open another menu), each with its
// identifier and flags, reached by position or by identifier.
#pragma once

#include "nvk/os/menu_types.h"

namespace nvk::os {

HMENU CreateMenu();
HMENU CreatePopupMenu();
// Destroys the menu and, through their items, the menus it opens.
BOOL DestroyMenu(HMENU menu);
BOOL IsMenu(HMENU menu);

// With MF_POPUP, `idNewItem` is the menu that the item opens. By position, a
// position past the end appends. By command, the item goes before the item
// with that identifier, wherever it lies among the menus opened from
// `menu`; when there is none it is appended to `menu`.
BOOL InsertMenuA(HMENU menu, UINT position, UINT flags, UINT_PTR idNewItem, LPCSTR newItem);
BOOL AppendMenuA(HMENU menu, UINT flags, UINT_PTR idNewItem, LPCSTR newItem);
// Takes the item off; a menu it opens stays alive. DeleteMenu destroys it.
BOOL RemoveMenu(HMENU menu, UINT position, UINT flags);
BOOL DeleteMenu(HMENU menu, UINT position, UINT flags);

// -1 for a handle that is not a menu.
int GetMenuItemCount(HMENU menu);
// The identifier of the item at a position; -1 (as UINT) for a pop-up or a
// position out of range.
UINT GetMenuItemID(HMENU menu, int position);
HMENU GetSubMenu(HMENU menu, int position);
// The characters copied, at most `maxCount` - 1, and a terminator; with a
// null `text`, the item's length. 0 for an item that is not there.
int GetMenuStringA(HMENU menu, UINT item, LPSTR text, int maxCount, UINT flags);
// The item's flags; for a pop-up, its flags in the low byte and the number
// of items of the menu it opens in the high byte. -1 (as UINT) when absent.
UINT GetMenuState(HMENU menu, UINT item, UINT flags);

}  // namespace nvk::os
