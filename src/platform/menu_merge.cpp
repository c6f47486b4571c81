#include "nvk/platform/menu_merge.h"

#include <string>

#include "os/api/menu.h"

using namespace nvk::os;

namespace {

constexpr DWORD kKeepLastTwo = 0x1;

std::string TextAt(HMENU menu, int position) {
    char text[256];
    if (GetMenuStringA(menu, static_cast<UINT>(position), text, sizeof text, MF_BYPOSITION) <= 0) {
        return {};
    }
    return text;
}

int FindText(HMENU menu, const std::string& text) {
    const int count = GetMenuItemCount(menu);
    for (int i = 0; i < count; ++i) {
        if (TextAt(menu, i) == text) {
            return i;
        }
    }
    return -1;
}

bool IsSeparator(HMENU menu, int position) {
    const UINT state = GetMenuState(menu, static_cast<UINT>(position), MF_BYPOSITION);
    return state != 0xFFFFFFFF && (state & MF_SEPARATOR) != 0;
}

HMENU CopyMenu(HMENU source) {
    HMENU copy = CreatePopupMenu();
    const int count = GetMenuItemCount(source);
    for (int i = 0; i < count; ++i) {
        const std::string text = TextAt(source, i);
        HMENU sub = GetSubMenu(source, i);
        if (sub != nullptr && IsMenu(sub)) {
            AppendMenuA(copy, MF_POPUP, reinterpret_cast<UINT_PTR>(CopyMenu(sub)), text.c_str());
        } else if (!text.empty()) {
            AppendMenuA(copy, MF_STRING, GetMenuItemID(source, i), text.c_str());
        } else {
            AppendMenuA(copy, MF_SEPARATOR, 0, nullptr);
        }
    }
    return copy;
}

}  // namespace

void MergeMenu(HMENU dest, HMENU src, DWORD flags) {
    const bool keepLastTwo = (flags & kKeepLastTwo) != 0;
    int pos = GetMenuItemCount(dest) - (keepLastTwo ? 2 : 0);
    bool separatorAdded = false;
    const int count = GetMenuItemCount(src);
    for (int i = 0; i < count; ++i) {
        const std::string text = TextAt(src, i);
        HMENU sub = GetSubMenu(src, i);
        if (!text.empty()) {
            const int found = FindText(dest, text);
            if (found >= 0) {
                HMENU destSub = GetSubMenu(dest, found);
                if (sub != nullptr && destSub != nullptr) {
                    MergeMenu(destSub, sub, flags & ~kKeepLastTwo);
                }
                pos = found + 1;
                continue;
            }
        }
        if (!separatorAdded && !keepLastTwo && pos > 0 && !text.empty() &&
            !IsSeparator(dest, pos - 1)) {
            // Without MF_BYPOSITION the position is taken for an identifier:
            // when no item has it, the separator lands at the end of the
            // menu, and when one does, before that item. The menus of the
            // family are laid out around this, so it stays as it is.
            InsertMenuA(dest, static_cast<UINT>(pos), MF_SEPARATOR, 0, nullptr);
            ++pos;
            separatorAdded = true;
        }
        if (sub == nullptr) {
            InsertMenuA(dest, static_cast<UINT>(pos),
                        MF_BYPOSITION | (text.empty() ? MF_SEPARATOR : MF_STRING),
                        GetMenuItemID(src, i), text.c_str());
        } else {
            InsertMenuA(dest, static_cast<UINT>(pos), MF_BYPOSITION | MF_POPUP,
                        reinterpret_cast<UINT_PTR>(CopyMenu(sub)), text.c_str());
        }
        ++pos;
    }
}

void UnMergeMenu(HMENU dest, HMENU src, DWORD flags) {
    const int count = GetMenuItemCount(src);
    for (int i = 0; i < count; ++i) {
        const int found = FindText(dest, TextAt(src, i));
        HMENU sub = GetSubMenu(src, i);
        if (found < 0 || sub == nullptr) {
            continue;
        }
        HMENU destSub = GetSubMenu(dest, found);
        if (destSub == sub) {
            RemoveMenu(dest, static_cast<UINT>(found), MF_BYPOSITION);
        } else if (destSub != nullptr) {
            int separators = 1;
            const int subCount = GetMenuItemCount(sub);
            for (int j = 0; j < subCount; ++j) {
                separators += IsSeparator(sub, j) ? 1 : 0;
            }
            for (int last = GetMenuItemCount(destSub) - 1; last >= 0 && separators > 0; --last) {
                separators -= IsSeparator(destSub, last) ? 1 : 0;
                DeleteMenu(destSub, static_cast<UINT>(last), MF_BYPOSITION);
            }
        }
    }
    const int last = GetMenuItemCount(dest) - 1;
    if ((flags & kKeepLastTwo) != 0 && last >= 0 && IsSeparator(dest, last)) {
        RemoveMenu(dest, static_cast<UINT>(last), MF_BYPOSITION);
    }
}
