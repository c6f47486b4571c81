// The shell's file operations and its folder browser: records, flags and the
// hook through which an application shows the browser on systems whose shell
// has none.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

using WPARAM = ULONG_PTR;
using LPARAM = LONG_PTR;
using LRESULT = LONG_PTR;

inline constexpr UINT FO_MOVE = 1;
inline constexpr UINT FO_COPY = 2;
inline constexpr UINT FO_DELETE = 3;
inline constexpr UINT FO_RENAME = 4;

inline constexpr WORD FOF_MULTIDESTFILES = 0x1;
inline constexpr WORD FOF_SILENT = 0x4;
inline constexpr WORD FOF_RENAMEONCOLLISION = 0x8;
inline constexpr WORD FOF_NOCONFIRMATION = 0x10;
inline constexpr WORD FOF_ALLOWUNDO = 0x40;
inline constexpr WORD FOF_FILESONLY = 0x80;
inline constexpr WORD FOF_NOCONFIRMMKDIR = 0x200;
inline constexpr WORD FOF_NOERRORUI = 0x400;

struct SHFILEOPSTRUCTA {
    HWND hwnd;
    UINT wFunc;
    // Names, each ended by a zero, the list by a second zero.
    LPCSTR pFrom;
    LPCSTR pTo;
    WORD fFlags;
    BOOL fAnyOperationsAborted;
    LPVOID hNameMappings;
    LPCSTR lpszProgressTitle;
};

// An item list of the shell. Here it holds a path, zero-terminated, or for a
// place without one (computer, network, printers) an empty path.
struct ITEMIDLIST {
    char path[1];
};
using LPITEMIDLIST = ITEMIDLIST*;
using LPCITEMIDLIST = const ITEMIDLIST*;

// The shell's allocator, which frees the item lists it hands out.
class IMalloc {
public:
    virtual LPVOID Alloc(SIZE_T size) = 0;
    virtual void Free(LPVOID block) = 0;
    virtual ULONG Release() = 0;

protected:
    ~IMalloc() = default;
};

using BFFCALLBACK = int (*)(HWND window, UINT message, LPARAM param, LPARAM data);

struct BROWSEINFOA {
    HWND hwndOwner;
    LPCITEMIDLIST pidlRoot;
    LPSTR pszDisplayName;
    LPCSTR lpszTitle;
    UINT ulFlags;
    BFFCALLBACK lpfn;
    LPARAM lParam;
    int iImage;
};

inline constexpr UINT BIF_RETURNONLYFSDIRS = 0x1;
inline constexpr UINT BIF_BROWSEFORCOMPUTER = 0x1000;
inline constexpr UINT BIF_BROWSEFORPRINTER = 0x2000;
inline constexpr UINT BIF_BROWSEINCLUDEFILES = 0x4000;

// Messages to the callback, and from it to the browser.
inline constexpr UINT BFFM_INITIALIZED = 1;
inline constexpr UINT BFFM_SELCHANGED = 2;
inline constexpr UINT BFFM_ENABLEOK = 1125;
inline constexpr UINT BFFM_SETSELECTIONA = 1126;

// The browser an application provides. `run` shows the dialog: it calls the
// callback of `info` with BFFM_INITIALIZED, then with BFFM_SELCHANGED and the
// item list of each selection, handing it `window`; it returns the chosen
// item list, allocated with the shell's allocator, or null for a cancel.
// What the callback sends to `window` (BFFM_SETSELECTIONA with the path as
// LPARAM, BFFM_ENABLEOK with TRUE or FALSE as LPARAM) reaches `message`.
struct FolderBrowserHook {
    LPITEMIDLIST (*run)(const BROWSEINFOA& info, HWND window);
    LRESULT (*message)(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
};

// Installs the browser of the process ({} removes it); returns the one before.
FolderBrowserHook SetFolderBrowserHook(FolderBrowserHook hook);

}  // namespace nvk::os
