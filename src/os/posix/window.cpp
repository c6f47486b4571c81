// Windows in the process's memory. Handles are numbers never reused, so that
// a destroyed window stays invalid. One lock guards the windows and classes;
// procedures are always called without it, since they send messages too.
#include "os/api/window.h"

#include <strings.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "os/api/menu.h"
#include "os/posix/handle.h"
#include "os/posix/list_control.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

struct Window {
    WNDPROC Procedure;
    std::string Text;
    DWORD Style;
    HWND Parent;
    LONG_PTR Id;
    LONG_PTR UserData;
};

struct NoCase {
    bool operator()(const std::string& a, const std::string& b) const {
        return strcasecmp(a.c_str(), b.c_str()) < 0;
    }
};

std::mutex& Lock() {
    static std::mutex lock;
    return lock;
}

std::map<HWND, Window>& Windows() {
    static std::map<HWND, Window> windows;
    return windows;
}

std::map<std::string, WNDPROC, NoCase>& Classes() {
    static std::map<std::string, WNDPROC, NoCase> classes = {
        {"COMBOBOX", posix::ComboBoxProcedure},
        {"LISTBOX", posix::ListBoxProcedure},
        {"msctls_statusbar32", DefWindowProcA},
        {"STATIC", DefWindowProcA},
    };
    return classes;
}

Window* Find(HWND window) {
    auto found = Windows().find(window);
    if (found == Windows().end()) {
        SetErrorCode(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    return &found->second;
}

// Runs `read` on the window under the lock; `fallback` for no window.
template <typename Result, typename Read>
Result With(HWND window, Result fallback, Read read) {
    std::lock_guard lock(Lock());
    Window* found = Find(window);
    return found != nullptr ? read(*found) : fallback;
}

}  // namespace

ATOM RegisterClassA(const WNDCLASSA* windowClass) {
    static ATOM last = 0xC000;
    if (windowClass == nullptr || windowClass->lpszClassName == nullptr ||
        windowClass->lpfnWndProc == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    std::lock_guard lock(Lock());
    if (!Classes().emplace(windowClass->lpszClassName, windowClass->lpfnWndProc).second) {
        SetErrorCode(ERROR_CLASS_ALREADY_EXISTS);
        return 0;
    }
    return ++last;
}

HWND CreateWindowExA(DWORD, LPCSTR className, LPCSTR windowName, DWORD style, int, int, int, int,
                     HWND parent, HMENU menu, HINSTANCE, LPVOID) {
    static ULONG_PTR last = 0x20000;
    // Only a child takes an identifier there; any other window takes a menu.
    if ((style & WS_CHILD) == 0 && menu != nullptr && !IsMenu(menu)) {
        SetErrorCode(ERROR_INVALID_MENU_HANDLE);
        return nullptr;
    }
    std::lock_guard lock(Lock());
    auto procedure = Classes().find(className != nullptr ? className : "");
    if (procedure == Classes().end()) {
        SetErrorCode(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    if (parent != nullptr && Find(parent) == nullptr) {
        return nullptr;
    }
    last += 4;
    auto handle = reinterpret_cast<HWND>(last);
    Windows().emplace(handle, Window{procedure->second, windowName != nullptr ? windowName : "",
                                     style, parent, reinterpret_cast<LONG_PTR>(menu), 0});
    return handle;
}

BOOL DestroyWindow(HWND window) {
    std::vector<HWND> children;
    {
        std::lock_guard lock(Lock());
        if (Find(window) == nullptr) {
            return FALSE;
        }
        for (const auto& [handle, child] : Windows()) {
            if (child.Parent == window) {
                children.push_back(handle);
            }
        }
    }
    for (HWND child : children) {
        DestroyWindow(child);
    }
    SendMessageA(window, WM_DESTROY, 0, 0);
    SendMessageA(window, WM_NCDESTROY, 0, 0);
    std::lock_guard lock(Lock());
    Windows().erase(window);
    return TRUE;
}

BOOL IsWindow(HWND window) {
    std::lock_guard lock(Lock());
    return Windows().count(window) != 0 ? TRUE : FALSE;
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    WNDPROC procedure = With(window, WNDPROC{}, [](Window& found) { return found.Procedure; });
    return procedure != nullptr ? procedure(window, message, wParam, lParam) : 0;
}

LRESULT CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wParam,
                        LPARAM lParam) {
    return procedure != nullptr ? procedure(window, message, wParam, lParam) : 0;
}

LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SETTEXT:
            return With(window, LRESULT{FALSE}, [lParam](Window& found) {
                const char* text = reinterpret_cast<const char*>(lParam);
                found.Text = text != nullptr ? text : "";
                return LRESULT{TRUE};
            });
        case WM_GETTEXT:
            return With(window, LRESULT{0}, [wParam, lParam](Window& found) {
                char* text = reinterpret_cast<char*>(lParam);
                if (text == nullptr || wParam == 0) {
                    return LRESULT{0};
                }
                const std::size_t count = std::min<std::size_t>(found.Text.size(), wParam - 1);
                std::memcpy(text, found.Text.data(), count);
                text[count] = '\0';
                return static_cast<LRESULT>(count);
            });
        case WM_GETTEXTLENGTH:
            return With(window, LRESULT{0},
                        [](Window& found) { return static_cast<LRESULT>(found.Text.size()); });
        default:
            return 0;
    }
}

LONG_PTR GetWindowLongPtrA(HWND window, int index) {
    return With(window, LONG_PTR{0}, [index](Window& found) -> LONG_PTR {
        switch (index) {
            case GWLP_WNDPROC:
                return reinterpret_cast<LONG_PTR>(found.Procedure);
            case GWLP_ID:
                return found.Id;
            case GWLP_USERDATA:
                return found.UserData;
            default:
                SetErrorCode(ERROR_INVALID_INDEX);
                return 0;
        }
    });
}

LONG_PTR SetWindowLongPtrA(HWND window, int index, LONG_PTR value) {
    return With(window, LONG_PTR{0}, [index, value](Window& found) -> LONG_PTR {
        switch (index) {
            case GWLP_WNDPROC:
                if (value == 0) {
                    SetErrorCode(ERROR_INVALID_PARAMETER);
                    return 0;
                }
                return reinterpret_cast<LONG_PTR>(
                    std::exchange(found.Procedure, reinterpret_cast<WNDPROC>(value)));
            case GWLP_ID:
                return std::exchange(found.Id, value);
            case GWLP_USERDATA:
                return std::exchange(found.UserData, value);
            default:
                SetErrorCode(ERROR_INVALID_INDEX);
                return 0;
        }
    });
}

BOOL SetWindowTextA(HWND window, LPCSTR text) {
    return static_cast<BOOL>(SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)));
}

int GetWindowTextA(HWND window, LPSTR text, int maxCount) {
    if (text != nullptr && maxCount > 0) {
        text[0] = '\0';
    }
    if (maxCount <= 0) {
        return 0;
    }
    return static_cast<int>(SendMessageA(window, WM_GETTEXT, static_cast<WPARAM>(maxCount),
                                         reinterpret_cast<LPARAM>(text)));
}

int GetWindowTextLengthA(HWND window) {
    return static_cast<int>(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0));
}

BOOL EnableWindow(HWND window, BOOL enable) {
    bool changed = false;
    const BOOL wasDisabled = With(window, BOOL{FALSE}, [enable, &changed](Window& found) {
        const bool disabled = (found.Style & WS_DISABLED) != 0;
        changed = disabled == (enable != FALSE);
        found.Style = enable != FALSE ? found.Style & ~WS_DISABLED : found.Style | WS_DISABLED;
        return disabled ? TRUE : FALSE;
    });
    if (changed) {
        SendMessageA(window, WM_ENABLE, static_cast<WPARAM>(enable != FALSE), 0);
    }
    return wasDisabled;
}

BOOL IsWindowEnabled(HWND window) {
    return With(window, BOOL{FALSE},
                [](Window& found) { return (found.Style & WS_DISABLED) == 0 ? TRUE : FALSE; });
}

BOOL UpdateWindow(HWND window) {
    return IsWindow(window);
}

HWND GetParent(HWND window) {
    return With(window, HWND{}, [](Window& found) { return found.Parent; });
}

HWND GetDlgItem(HWND parent, int id) {
    std::lock_guard lock(Lock());
    if (Find(parent) == nullptr) {
        return nullptr;
    }
    for (const auto& [handle, child] : Windows()) {
        if (child.Parent == parent && child.Id == id) {
            return handle;
        }
    }
    SetErrorCode(ERROR_CONTROL_ID_NOT_FOUND);
    return nullptr;
}

int GetDlgCtrlID(HWND window) {
    return static_cast<int>(GetWindowLongPtrA(window, GWLP_ID));
}

}  // namespace nvk::os
