// Menus in the process's memory. Handles are small numbers that are never
// reused, so that a destroyed menu stays invalid; a pop-up item's identifier
// is its menu's handle, as on Windows, so a search by command never stops at
// a pop-up item by accident.
#include "os/api/menu.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "os/posix/handle.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

struct Item {
    UINT Flags;
    UINT_PTR Id;
    HMENU SubMenu;
    std::string Text;
};

struct Menu {
    std::vector<Item> Items;
};

// Menus are a shared resource of the process: one lock guards them all, and
// no call holds it while it calls out.
std::mutex& Lock() {
    static std::mutex lock;
    return lock;
}

std::map<HMENU, Menu>& Menus() {
    static std::map<HMENU, Menu> menus;
    return menus;
}

Menu* Find(HMENU menu) {
    auto found = Menus().find(menu);
    if (found == Menus().end()) {
        SetErrorCode(ERROR_INVALID_MENU_HANDLE);
        return nullptr;
    }
    return &found->second;
}

struct Place {
    Menu* Owner;
    std::size_t Index;
};

// An item by position in `menu`, or by identifier in `menu` and, depth
// first, the menus its items open.
std::optional<Place> Locate(Menu& menu, UINT item, UINT flags, int depth = 0) {
    if ((flags & MF_BYPOSITION) != 0) {
        if (item < menu.Items.size()) {
            return Place{&menu, item};
        }
        return std::nullopt;
    }
    // A menu that opens itself again would never end the search.
    if (depth > 64) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < menu.Items.size(); ++i) {
        const Item& entry = menu.Items[i];
        if (entry.Id == item) {
            return Place{&menu, i};
        }
        if (entry.SubMenu != nullptr) {
            auto sub = Menus().find(entry.SubMenu);
            if (sub != Menus().end()) {
                if (std::optional<Place> place = Locate(sub->second, item, flags, depth + 1)) {
                    return place;
                }
            }
        }
    }
    return std::nullopt;
}

HMENU NewMenu() {
    static ULONG_PTR last = 0x10000;
    std::lock_guard lock(Lock());
    last += 4;
    auto handle = reinterpret_cast<HMENU>(last);
    Menus().emplace(handle, Menu{});
    return handle;
}

Item MakeItem(UINT flags, UINT_PTR id, LPCSTR text) {
    Item item{flags & ~MF_BYPOSITION, id, nullptr, {}};
    if ((flags & MF_POPUP) != 0) {
        item.SubMenu = reinterpret_cast<HMENU>(id);
    }
    if ((flags & (MF_SEPARATOR | MF_BITMAP | MF_OWNERDRAW)) == 0 && text != nullptr) {
        item.Text = text;
    }
    return item;
}

// Destroys a menu and those its items open; the lock is held.
void DestroyLocked(HMENU handle, int depth = 0) {
    auto found = Menus().find(handle);
    if (found == Menus().end() || depth > 64) {
        return;
    }
    std::vector<Item> items = std::move(found->second.Items);
    Menus().erase(found);
    for (const Item& item : items) {
        if (item.SubMenu != nullptr) {
            DestroyLocked(item.SubMenu, depth + 1);
        }
    }
}

BOOL Take(HMENU handle, UINT position, UINT flags, bool destroy) {
    std::lock_guard lock(Lock());
    Menu* menu = Find(handle);
    if (menu == nullptr) {
        return FALSE;
    }
    std::optional<Place> place = Locate(*menu, position, flags);
    if (!place) {
        SetErrorCode(ERROR_MENU_ITEM_NOT_FOUND);
        return FALSE;
    }
    const HMENU sub = place->Owner->Items[place->Index].SubMenu;
    place->Owner->Items.erase(place->Owner->Items.begin() +
                              static_cast<std::ptrdiff_t>(place->Index));
    if (destroy && sub != nullptr) {
        DestroyLocked(sub);
    }
    return TRUE;
}

}  // namespace

HMENU CreateMenu() {
    return NewMenu();
}

HMENU CreatePopupMenu() {
    return NewMenu();
}

BOOL DestroyMenu(HMENU menu) {
    std::lock_guard lock(Lock());
    if (Find(menu) == nullptr) {
        return FALSE;
    }
    DestroyLocked(menu);
    return TRUE;
}

BOOL IsMenu(HMENU menu) {
    std::lock_guard lock(Lock());
    return Menus().count(menu) != 0 ? TRUE : FALSE;
}

BOOL InsertMenuA(HMENU handle, UINT position, UINT flags, UINT_PTR idNewItem, LPCSTR newItem) {
    std::lock_guard lock(Lock());
    Menu* menu = Find(handle);
    if (menu == nullptr) {
        return FALSE;
    }
    Item item = MakeItem(flags, idNewItem, newItem);
    if ((flags & MF_BYPOSITION) != 0) {
        const std::size_t at = std::min<std::size_t>(position, menu->Items.size());
        menu->Items.insert(menu->Items.begin() + static_cast<std::ptrdiff_t>(at), std::move(item));
        return TRUE;
    }
    if (std::optional<Place> place = Locate(*menu, position, flags)) {
        place->Owner->Items.insert(
            place->Owner->Items.begin() + static_cast<std::ptrdiff_t>(place->Index),
            std::move(item));
    } else {
        menu->Items.push_back(std::move(item));
    }
    return TRUE;
}

BOOL AppendMenuA(HMENU menu, UINT flags, UINT_PTR idNewItem, LPCSTR newItem) {
    return InsertMenuA(menu, 0xFFFFFFFF, flags | MF_BYPOSITION, idNewItem, newItem);
}

BOOL RemoveMenu(HMENU menu, UINT position, UINT flags) {
    return Take(menu, position, flags, false);
}

BOOL DeleteMenu(HMENU menu, UINT position, UINT flags) {
    return Take(menu, position, flags, true);
}

int GetMenuItemCount(HMENU handle) {
    std::lock_guard lock(Lock());
    const Menu* menu = Find(handle);
    return menu != nullptr ? static_cast<int>(menu->Items.size()) : -1;
}

UINT GetMenuItemID(HMENU handle, int position) {
    std::lock_guard lock(Lock());
    const Menu* menu = Find(handle);
    if (menu == nullptr || position < 0 ||
        static_cast<std::size_t>(position) >= menu->Items.size()) {
        return 0xFFFFFFFF;
    }
    const Item& item = menu->Items[static_cast<std::size_t>(position)];
    return (item.Flags & MF_POPUP) != 0 ? 0xFFFFFFFF : static_cast<UINT>(item.Id);
}

HMENU GetSubMenu(HMENU handle, int position) {
    std::lock_guard lock(Lock());
    const Menu* menu = Find(handle);
    if (menu == nullptr || position < 0 ||
        static_cast<std::size_t>(position) >= menu->Items.size()) {
        return nullptr;
    }
    return menu->Items[static_cast<std::size_t>(position)].SubMenu;
}

int GetMenuStringA(HMENU handle, UINT item, LPSTR text, int maxCount, UINT flags) {
    std::lock_guard lock(Lock());
    Menu* menu = Find(handle);
    if (menu == nullptr) {
        return 0;
    }
    std::optional<Place> place = Locate(*menu, item, flags);
    if (!place) {
        SetErrorCode(ERROR_MENU_ITEM_NOT_FOUND);
        return 0;
    }
    const std::string& source = place->Owner->Items[place->Index].Text;
    if (text == nullptr) {
        return static_cast<int>(source.size());
    }
    if (maxCount <= 0) {
        return 0;
    }
    const std::size_t count = std::min<std::size_t>(source.size(), maxCount - 1);
    std::memcpy(text, source.data(), count);
    text[count] = '\0';
    return static_cast<int>(count);
}

UINT GetMenuState(HMENU handle, UINT item, UINT flags) {
    std::lock_guard lock(Lock());
    Menu* menu = Find(handle);
    if (menu == nullptr) {
        return 0xFFFFFFFF;
    }
    std::optional<Place> place = Locate(*menu, item, flags);
    if (!place) {
        SetErrorCode(ERROR_MENU_ITEM_NOT_FOUND);
        return 0xFFFFFFFF;
    }
    const Item& found = place->Owner->Items[place->Index];
    if (found.SubMenu == nullptr) {
        return found.Flags;
    }
    auto sub = Menus().find(found.SubMenu);
    const UINT count = sub != Menus().end() ? static_cast<UINT>(sub->second.Items.size()) : 0;
    return (count << 8) | (found.Flags & 0xFF);
}

}  // namespace nvk::os
