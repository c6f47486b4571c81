// The items of list and combo boxes without sorting: each has its text and
// its item data, and one of them may be selected. The two controls answer
// the same requests under different message numbers, with CB_ERR and LB_ERR
// both -1.
#include "os/posix/list_control.h"

#include <strings.h>

#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "os/api/window.h"

namespace nvk::os::posix {

namespace {

struct Entry {
    std::string Text;
    LPARAM Data;
};

struct Items {
    std::vector<Entry> Entries;
    LRESULT Selection = -1;
};

constexpr LRESULT kError = -1;

// The requests, named apart from the numbers of either control.
enum class Request {
    Add,
    Insert,
    Delete,
    Reset,
    Count,
    GetSel,
    SetSel,
    Text,
    TextLength,
    GetData,
    SetData,
    FindExact,
    None
};

std::mutex& Lock() {
    static std::mutex lock;
    return lock;
}

std::map<HWND, Items>& AllItems() {
    static std::map<HWND, Items> items;
    return items;
}

bool InRange(const Items& items, WPARAM index) {
    return index < items.Entries.size();
}

LRESULT Answer(HWND window, Request request, WPARAM wParam, LPARAM lParam) {
    std::lock_guard lock(Lock());
    Items& items = AllItems()[window];
    auto& entries = items.Entries;
    const char* text = reinterpret_cast<const char*>(lParam);
    switch (request) {
        case Request::Add:
            entries.push_back({text != nullptr ? text : "", 0});
            return static_cast<LRESULT>(entries.size() - 1);
        case Request::Insert: {
            const bool atEnd = static_cast<LRESULT>(wParam) == -1;
            if (!atEnd && wParam > entries.size()) {
                return kError;
            }
            const std::size_t at = atEnd ? entries.size() : wParam;
            entries.insert(entries.begin() + static_cast<std::ptrdiff_t>(at),
                           {text != nullptr ? text : "", 0});
            if (items.Selection >= static_cast<LRESULT>(at)) {
                ++items.Selection;
            }
            return static_cast<LRESULT>(at);
        }
        case Request::Delete:
            if (!InRange(items, wParam)) {
                return kError;
            }
            entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(wParam));
            if (items.Selection == static_cast<LRESULT>(wParam)) {
                items.Selection = -1;
            } else if (items.Selection > static_cast<LRESULT>(wParam)) {
                --items.Selection;
            }
            return static_cast<LRESULT>(entries.size());
        case Request::Reset:
            entries.clear();
            items.Selection = -1;
            return 0;
        case Request::Count:
            return static_cast<LRESULT>(entries.size());
        case Request::GetSel:
            return items.Selection;
        case Request::SetSel:
            // An index out of range, -1 among them, clears the selection.
            items.Selection = InRange(items, wParam) ? static_cast<LRESULT>(wParam) : -1;
            return items.Selection;
        case Request::Text:
            if (!InRange(items, wParam)) {
                return kError;
            }
            if (text != nullptr) {
                std::memcpy(reinterpret_cast<char*>(lParam), entries[wParam].Text.c_str(),
                            entries[wParam].Text.size() + 1);
            }
            return static_cast<LRESULT>(entries[wParam].Text.size());
        case Request::TextLength:
            return InRange(items, wParam) ? static_cast<LRESULT>(entries[wParam].Text.size())
                                          : kError;
        case Request::GetData:
            return InRange(items, wParam) ? entries[wParam].Data : kError;
        case Request::SetData:
            if (!InRange(items, wParam)) {
                return kError;
            }
            entries[wParam].Data = lParam;
            return TRUE;
        case Request::FindExact: {
            // The search starts after the given index and wraps around; the
            // comparison ignores case, as the controls' does.
            const std::size_t count = entries.size();
            const std::size_t first = static_cast<LRESULT>(wParam) == -1 ? 0 : wParam + 1;
            for (std::size_t n = 0; n < count; ++n) {
                const std::size_t i = (first + n) % count;
                if (strcasecmp(entries[i].Text.c_str(), text != nullptr ? text : "") == 0) {
                    return static_cast<LRESULT>(i);
                }
            }
            return kError;
        }
        case Request::None:
            break;
    }
    return 0;
}

LRESULT Control(HWND window, Request request, UINT message, WPARAM wParam, LPARAM lParam) {
    if (request != Request::None) {
        return Answer(window, request, wParam, lParam);
    }
    if (message == WM_NCDESTROY) {
        std::lock_guard lock(Lock());
        AllItems().erase(window);
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

Request ComboRequest(UINT message) {
    switch (message) {
        case CB_ADDSTRING:
            return Request::Add;
        case CB_INSERTSTRING:
            return Request::Insert;
        case CB_DELETESTRING:
            return Request::Delete;
        case CB_RESETCONTENT:
            return Request::Reset;
        case CB_GETCOUNT:
            return Request::Count;
        case CB_GETCURSEL:
            return Request::GetSel;
        case CB_SETCURSEL:
            return Request::SetSel;
        case CB_GETLBTEXT:
            return Request::Text;
        case CB_GETLBTEXTLEN:
            return Request::TextLength;
        case CB_GETITEMDATA:
            return Request::GetData;
        case CB_SETITEMDATA:
            return Request::SetData;
        case CB_FINDSTRINGEXACT:
            return Request::FindExact;
        default:
            return Request::None;
    }
}

Request ListRequest(UINT message) {
    switch (message) {
        case LB_ADDSTRING:
            return Request::Add;
        case LB_INSERTSTRING:
            return Request::Insert;
        case LB_DELETESTRING:
            return Request::Delete;
        case LB_RESETCONTENT:
            return Request::Reset;
        case LB_GETCOUNT:
            return Request::Count;
        case LB_GETCURSEL:
            return Request::GetSel;
        case LB_SETCURSEL:
            return Request::SetSel;
        case LB_GETTEXT:
            return Request::Text;
        case LB_GETTEXTLEN:
            return Request::TextLength;
        case LB_GETITEMDATA:
            return Request::GetData;
        case LB_SETITEMDATA:
            return Request::SetData;
        case LB_FINDSTRINGEXACT:
            return Request::FindExact;
        default:
            return Request::None;
    }
}

}  // namespace

LRESULT ComboBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return Control(window, ComboRequest(message), message, wParam, lParam);
}

LRESULT ListBoxProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return Control(window, ListRequest(message), message, wParam, lParam);
}

}  // namespace nvk::os::posix
