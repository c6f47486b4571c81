// The folder browser: with the application's browser installed, its dialog
// runs in place of the system's, against a window whose messages go to it.

#include "os/common/folder_browser_hook.h"
#include "os/win32/forward.h"

namespace nvk::os {

namespace {

::LRESULT CALLBACK BrowserProcedure(::HWND window, ::UINT message, ::WPARAM wParam,
                                    ::LPARAM lParam) {
    // Only the dialog's own messages go to the browser: the window's life
    // (WM_NCCREATE answered 0 would refuse the window) stays the system's.
    const FolderBrowserHook hook = CurrentFolderBrowserHook();
    if (hook.message == nullptr || message < WM_USER) {
        return ::DefWindowProcA(window, message, wParam, lParam);
    }
    return hook.message(window, message, wParam, lParam);
}

const char* BrowserClass() {
    static const char* name = [] {
        ::WNDCLASSA windowClass{};
        windowClass.lpfnWndProc = BrowserProcedure;
        windowClass.lpszClassName = "NvkFolderBrowser";
        ::RegisterClassA(&windowClass);
        return "NvkFolderBrowser";
    }();
    return name;
}

}  // namespace

LPITEMIDLIST SHBrowseForFolderA(BROWSEINFOA* info) {
    const FolderBrowserHook hook = CurrentFolderBrowserHook();
    if (info == nullptr) {
        return nullptr;
    }
    if (hook.run == nullptr) {
        return win32::Call<LPITEMIDLIST>(::SHBrowseForFolderA, info);
    }
    // A message-only window: never shown, so no display is needed.
    HWND window = ::CreateWindowExA(0, BrowserClass(), nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE,
                                    nullptr, nullptr, nullptr);
    LPITEMIDLIST chosen = hook.run(*info, window);
    ::DestroyWindow(window);
    return chosen;
}

LPITEMIDLIST ItemListFromPath(LPCSTR path) {
    return reinterpret_cast<LPITEMIDLIST>(::ILCreateFromPathA(path != nullptr ? path : ""));
}

}  // namespace nvk::os
