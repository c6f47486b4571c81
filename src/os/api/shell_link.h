// Shell links through the interfaces Windows gives them: CoCreateInstance of
// CLSID_ShellLink hands out IShellLinkA, and its IPersistFile loads and
// saves the link file. The interfaces keep Windows' order of methods.
//
// On POSIX the link file is in Windows' own format, so that a link on a
// shared folder serves the Windows machines too. Saved in the user's desktop
// or applications folder, a link also gets a desktop entry beside it (its
// name with ".desktop") that the Linux desktop shows; Load reads link files,
// desktop entries and symbolic links alike.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];

    bool operator==(const GUID&) const = default;
};
using CLSID = GUID;
using IID = GUID;
using REFCLSID = const GUID&;
using REFIID = const GUID&;
using LPOLESTR = WCHAR*;
using LPCOLESTR = const WCHAR*;
struct ITEMIDLIST;
using PIDLIST_ABSOLUTE = ITEMIDLIST*;
using PCIDLIST_ABSOLUTE = const ITEMIDLIST*;

inline constexpr CLSID CLSID_ShellLink = {0x00021401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IUnknown = {0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IShellLinkA = {0x000214EE, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IPersist = {0x0000010C, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IPersistFile = {0x0000010B, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

inline constexpr DWORD CLSCTX_INPROC_SERVER = 0x1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = static_cast<HRESULT>(0x80040110);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = static_cast<HRESULT>(0x80040154);
inline constexpr HRESULT HRESULT_FROM_WIN32(DWORD error) {
    return error == 0 ? S_OK : static_cast<HRESULT>((error & 0xFFFF) | 0x80070000);
}
inline constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
inline constexpr bool FAILED(HRESULT result) {
    return result < 0;
}

inline constexpr DWORD SLGP_SHORTPATH = 0x1;
inline constexpr DWORD SLGP_UNCPRIORITY = 0x2;
inline constexpr DWORD SLGP_RAWPATH = 0x4;
inline constexpr DWORD SLR_NO_UI = 0x1;
inline constexpr DWORD SLR_UPDATE = 0x4;
inline constexpr DWORD STGM_READ = 0x0;
inline constexpr DWORD STGM_READWRITE = 0x2;

struct IUnknown {
    virtual HRESULT QueryInterface(REFIID iid, void** object) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

protected:
    ~IUnknown() = default;
};

struct IShellLinkA : IUnknown {
    virtual HRESULT GetPath(LPSTR file, int size, WIN32_FIND_DATAA* findData, DWORD flags) = 0;
    virtual HRESULT GetIDList(PIDLIST_ABSOLUTE* list) = 0;
    virtual HRESULT SetIDList(PCIDLIST_ABSOLUTE list) = 0;
    virtual HRESULT GetDescription(LPSTR name, int size) = 0;
    virtual HRESULT SetDescription(LPCSTR name) = 0;
    virtual HRESULT GetWorkingDirectory(LPSTR dir, int size) = 0;
    virtual HRESULT SetWorkingDirectory(LPCSTR dir) = 0;
    virtual HRESULT GetArguments(LPSTR args, int size) = 0;
    virtual HRESULT SetArguments(LPCSTR args) = 0;
    virtual HRESULT GetHotkey(WORD* hotkey) = 0;
    virtual HRESULT SetHotkey(WORD hotkey) = 0;
    virtual HRESULT GetShowCmd(int* showCmd) = 0;
    virtual HRESULT SetShowCmd(int showCmd) = 0;
    virtual HRESULT GetIconLocation(LPSTR iconPath, int size, int* icon) = 0;
    virtual HRESULT SetIconLocation(LPCSTR iconPath, int icon) = 0;
    virtual HRESULT SetRelativePath(LPCSTR path, DWORD reserved) = 0;
    virtual HRESULT Resolve(HWND window, DWORD flags) = 0;
    virtual HRESULT SetPath(LPCSTR file) = 0;

protected:
    ~IShellLinkA() = default;
};

struct IPersist : IUnknown {
    virtual HRESULT GetClassID(CLSID* classId) = 0;

protected:
    ~IPersist() = default;
};

struct IPersistFile : IPersist {
    virtual HRESULT IsDirty() = 0;
    virtual HRESULT Load(LPCOLESTR fileName, DWORD mode) = 0;
    virtual HRESULT Save(LPCOLESTR fileName, BOOL remember) = 0;
    virtual HRESULT SaveCompleted(LPCOLESTR fileName) = 0;
    virtual HRESULT GetCurFile(LPOLESTR* fileName) = 0;

protected:
    ~IPersistFile() = default;
};

// CLSID_ShellLink is the one class, served in process.
HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID iid,
                         LPVOID* object);

// What saving a link put beside it, on POSIX the desktop entry; the link file
// itself is the caller's to remove. TRUE also when there was nothing.
BOOL DeleteLinkCompanions(LPCSTR linkFile);

}  // namespace nvk::os
