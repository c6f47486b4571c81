#include <gtest/gtest.h>

#include <string>

#include "nvk/platform/menu_merge.h"
#include "os/api/error.h"
#include "os/api/menu.h"

namespace {

using namespace nvk::os;

// A menu written as text: items separated by ",", "-" a separator, and a
// pop-up as "Name{...}"; identifiers are given in order from `firstId`.
std::string Show(HMENU menu) {
    std::string out;
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        char text[64];
        GetMenuStringA(menu, static_cast<UINT>(i), text, sizeof text, MF_BYPOSITION);
        if (!out.empty()) {
            out += ',';
        }
        const UINT state = GetMenuState(menu, static_cast<UINT>(i), MF_BYPOSITION);
        if (HMENU sub = GetSubMenu(menu, i)) {
            out += std::string(text) + "{" + Show(sub) + "}";
        } else if ((state & MF_SEPARATOR) != 0) {
            out += '-';
        } else {
            out += text;
        }
    }
    return out;
}

HMENU Popup(std::initializer_list<std::pair<const char*, UINT>> items) {
    HMENU menu = CreatePopupMenu();
    for (const auto& [text, id] : items) {
        AppendMenuA(menu, text == nullptr ? MF_SEPARATOR : MF_STRING, id, text);
    }
    return menu;
}

void AddPopup(HMENU menu, const char* text, HMENU sub) {
    AppendMenuA(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(sub), text);
}

TEST(Menu, PositionsIdentifiersAndStates) {
    HMENU bar = CreateMenu();
    HMENU file = Popup({{"Open", 100}, {"Close", 101}});
    AddPopup(bar, "File", file);
    AppendMenuA(bar, MF_STRING | MF_GRAYED, 200, "Help");
    EXPECT_EQ(GetMenuItemCount(bar), 2);
    EXPECT_EQ(GetMenuItemID(bar, 0), 0xFFFFFFFFu);
    EXPECT_EQ(GetMenuItemID(bar, 1), 200u);
    EXPECT_EQ(GetMenuItemID(bar, 2), 0xFFFFFFFFu);
    EXPECT_EQ(GetMenuState(bar, 0, MF_BYPOSITION), (2u << 8) | MF_POPUP);
    EXPECT_EQ(GetMenuState(bar, 200, MF_BYCOMMAND), MF_GRAYED);
    EXPECT_EQ(GetMenuState(bar, 999, MF_BYCOMMAND), 0xFFFFFFFFu);

    // By command, the search goes into the sub-menus; a missing identifier
    // appends to the menu asked.
    InsertMenuA(bar, 101, MF_STRING, 102, "Save");
    InsertMenuA(bar, 999, MF_STRING, 103, "Quit");
    InsertMenuA(bar, 50, MF_STRING | MF_BYPOSITION, 104, "Last");
    EXPECT_EQ(Show(bar), "File{Open,Save,Close},Help,Quit,Last");

    char text[8];
    EXPECT_EQ(GetMenuStringA(bar, 102, text, sizeof text, MF_BYCOMMAND), 4);
    EXPECT_STREQ(text, "Save");
    EXPECT_EQ(GetMenuStringA(bar, 102, nullptr, 0, MF_BYCOMMAND), 4);
    EXPECT_EQ(GetMenuStringA(bar, 7, text, sizeof text, MF_BYPOSITION), 0);

    // Remove keeps the pop-up alive, Delete destroys it.
    EXPECT_TRUE(RemoveMenu(bar, 0, MF_BYPOSITION));
    EXPECT_TRUE(IsMenu(file));
    AddPopup(bar, "File", file);
    EXPECT_TRUE(DeleteMenu(bar, 3, MF_BYPOSITION));
    EXPECT_FALSE(IsMenu(file));
    EXPECT_FALSE(DeleteMenu(bar, 9, MF_BYPOSITION));

    HMENU sub = Popup({{"x", 1}});
    AddPopup(bar, "Sub", sub);
    EXPECT_TRUE(DestroyMenu(bar));
    EXPECT_FALSE(IsMenu(sub));
    EXPECT_EQ(GetMenuItemCount(bar), -1);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_MENU_HANDLE);
    EXPECT_FALSE(AppendMenuA(bar, MF_STRING, 1, "x"));
}

// A text cut to the buffer ends in a null, and a missing item is told as
// such.
TEST(Menu, CutTextsAndMissingItems) {
    HMENU menu = Popup({{"Save", 102}});
    char text[4];
    EXPECT_EQ(GetMenuStringA(menu, 102, text, sizeof text, MF_BYCOMMAND), 3);
    EXPECT_STREQ(text, "Sav");
    EXPECT_FALSE(DeleteMenu(menu, 9, MF_BYPOSITION));
    EXPECT_EQ(GetLastError(), ERROR_MENU_ITEM_NOT_FOUND);
    DestroyMenu(menu);
}

TEST(MergeMenu, MergesSubMenusAndRoundTrips) {
    HMENU dest = CreateMenu();
    AddPopup(dest, "File", Popup({{"Open", 100}, {"Close", 101}}));
    AddPopup(dest, "Help", Popup({{"About", 102}}));
    HMENU src = CreateMenu();
    HMENU srcFile = Popup({{"Export", 110}, {nullptr, 0}, {"Print", 111}});
    AddPopup(src, "File", srcFile);
    AddPopup(src, "Tools", Popup({{"Options", 112}}));

    MergeMenu(dest, src, 0);
    // The separators go in by identifier: with no item of that identifier,
    // they end up last, so the one before "Tools" follows it.
    EXPECT_EQ(Show(dest), "File{Open,Close,-,Export,-,Print},Help{About},Tools{Options},-");
    EXPECT_NE(GetSubMenu(dest, 2), GetSubMenu(src, 1));
    EXPECT_EQ(GetMenuItemID(GetSubMenu(dest, 0), 5), 111u);

    // Whatever the merged items are called now, the section is cut from the
    // end of the sub-menu by counting separators.
    HMENU destFile = GetSubMenu(dest, 0);
    AppendMenuA(destFile, MF_STRING, 120, "Recent");
    UnMergeMenu(dest, src, 0);
    EXPECT_EQ(Show(dest), "File{Open,Close},Help{About},Tools{},-");

    // The source's own pop-up, inserted as it is, goes out whole.
    HMENU same = CreateMenu();
    AddPopup(same, "File", srcFile);
    UnMergeMenu(same, src, 0);
    EXPECT_EQ(GetMenuItemCount(same), 0);
    EXPECT_TRUE(IsMenu(srcFile));
}

TEST(MergeMenu, KeepingTheLastTwoItems) {
    HMENU dest = CreateMenu();
    AddPopup(dest, "File", Popup({{"Open", 100}}));
    AddPopup(dest, "Window", Popup({{"Tile", 101}}));
    AddPopup(dest, "Help", Popup({{"About", 102}}));
    HMENU src = CreateMenu();
    AddPopup(src, "Tools", Popup({{"Options", 110}}));
    AppendMenuA(src, MF_STRING, 111, "Run");

    MergeMenu(dest, src, 1);
    EXPECT_EQ(Show(dest), "File{Open},Tools{Options},Run,Window{Tile},Help{About}");

    AppendMenuA(dest, MF_SEPARATOR, 0, nullptr);
    UnMergeMenu(dest, src, 1);
    EXPECT_EQ(Show(dest), "File{Open},Tools{},Run,Window{Tile},Help{About}");
}

TEST(MergeMenu, TheSeparatorLandsBeforeAnItemWhoseIdentifierIsThePosition) {
    HMENU dest = CreateMenu();
    AddPopup(dest, "File", Popup({{"Open", 1}, {"Close", 2}}));
    HMENU src = CreateMenu();
    AddPopup(src, "Tools", Popup({{"Options", 110}}));
    MergeMenu(dest, src, 0);
    EXPECT_EQ(Show(dest), "File{-,Open,Close},Tools{Options}");
}

}  // namespace
