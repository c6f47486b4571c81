// The folder browser through the application's hook, and item lists that
// hold a path.
#include <cstdlib>
#include <cstring>

#include "os/api/shell.h"
#include "os/api/shell_folder.h"
#include "os/api/window.h"
#include "os/common/folder_browser_hook.h"

namespace nvk::os {

namespace {

class Allocator final : public IMalloc {
public:
    LPVOID Alloc(SIZE_T size) override { return std::malloc(size); }
    void Free(LPVOID block) override { std::free(block); }
    ULONG Release() override { return 1; }
};

Allocator g_Allocator;

// The browser's window while its dialog runs: what the callback sends it goes
// to the hook; its own coming and going does not.
LRESULT BrowserProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const FolderBrowserHook hook = CurrentFolderBrowserHook();
    if (hook.message == nullptr || message == WM_DESTROY || message == WM_NCDESTROY) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    return hook.message(window, message, wParam, lParam);
}

const char* BrowserClass() {
    static const char* name = [] {
        WNDCLASSA windowClass{};
        windowClass.lpfnWndProc = BrowserProcedure;
        windowClass.lpszClassName = "NvkFolderBrowser";
        RegisterClassA(&windowClass);
        return "NvkFolderBrowser";
    }();
    return name;
}

}  // namespace

LPITEMIDLIST SHBrowseForFolderA(BROWSEINFOA* info) {
    const FolderBrowserHook hook = CurrentFolderBrowserHook();
    if (info == nullptr || hook.run == nullptr) {
        return nullptr;
    }
    HWND window = CreateWindowExA(0, BrowserClass(), nullptr, 0, 0, 0, 0, 0, nullptr, nullptr,
                                  nullptr, nullptr);
    LPITEMIDLIST chosen = hook.run(*info, window);
    DestroyWindow(window);
    return chosen;
}

LPITEMIDLIST ItemListFromPath(LPCSTR path) {
    const char* text = path != nullptr ? path : "";
    const std::size_t size = std::strlen(text) + 1;
    auto* list = static_cast<LPITEMIDLIST>(g_Allocator.Alloc(size));
    if (list != nullptr) {
        std::memcpy(list->path, text, size);
    }
    return list;
}

HRESULT SHGetSpecialFolderLocation(HWND owner, int csidl, LPITEMIDLIST* list) {
    if (list == nullptr) {
        return E_INVALIDARG;
    }
    *list = nullptr;
    char path[MAX_PATH];
    const HRESULT found = SHGetFolderPathA(owner, csidl, nullptr, 0, path);
    if (found == E_INVALIDARG) {
        return found;
    }
    // Computer, network and printers are places without a path.
    *list = ItemListFromPath(found == S_OK ? path : "");
    return *list != nullptr ? S_OK : E_FAIL;
}

BOOL SHGetPathFromIDListA(LPCITEMIDLIST list, LPSTR path) {
    if (list == nullptr || path == nullptr || list->path[0] == '\0' ||
        std::strlen(list->path) >= MAX_PATH) {
        if (path != nullptr) {
            path[0] = '\0';
        }
        return FALSE;
    }
    std::strcpy(path, list->path);
    return TRUE;
}

HRESULT SHGetMalloc(IMalloc** allocator) {
    if (allocator == nullptr) {
        return E_INVALIDARG;
    }
    *allocator = &g_Allocator;
    return S_OK;
}

}  // namespace nvk::os
