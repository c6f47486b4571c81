// Resources of modules. A module's resources are a table compiled into it
// from its .rc sources: the executable registers its own (module handle
// null), and a loaded module either registers its table or exports it under
// the name kResourceTableSymbol, where the lookup finds it.
#pragma once

#include "nvk/os/types.h"

struct HRSRC__;

namespace nvk::os {

using HRSRC = ::HRSRC__*;
using HGLOBAL = void*;

// A type or name is a text, or a number in a pointer whose upper bits are 0.
inline LPCSTR MAKEINTRESOURCEA(WORD id) {
    return reinterpret_cast<LPCSTR>(static_cast<ULONG_PTR>(id));
}
inline bool IS_INTRESOURCE(LPCSTR name) {
    return (reinterpret_cast<ULONG_PTR>(name) >> 16) == 0;
}
inline const LPCSTR RT_STRING = MAKEINTRESOURCEA(6);
inline const LPCSTR RT_RCDATA = MAKEINTRESOURCEA(10);

inline constexpr WORD LANG_NEUTRAL = 0x00;
inline constexpr WORD SUBLANG_NEUTRAL = 0x00;
inline constexpr WORD MAKELANGID(WORD primary, WORD sub) {
    return static_cast<WORD>((sub << 10) | primary);
}
inline constexpr WORD PRIMARYLANGID(WORD lang) {
    return lang & 0x3FF;
}
inline constexpr WORD SUBLANGID(WORD lang) {
    return lang >> 10;
}

// One resource of a table. A type or name is a number when its text is null,
// else an upper-case text. Tables are constant data, made at build time.
struct ResourceEntry {
    LPCSTR TypeText;
    WORD TypeId;
    LPCSTR NameText;
    WORD NameId;
    WORD Language;
    DWORD Size;
    const void* Data;
};

struct ResourceTable {
    DWORD Count;
    const ResourceEntry* Entries;
};

// What a module exports its table as, for modules that don't register one.
inline constexpr const char* kResourceTableSymbol = "NVKResourceTable";

// Adds a table to a module's resources; a module may have several. The table
// must stay valid until it is unregistered.
void RegisterResourceTable(HMODULE module, const ResourceTable* table);
void UnregisterResourceTable(const ResourceTable* table);

using ENUMRESLANGPROCA = BOOL (*)(HMODULE module, LPCSTR type, LPCSTR name, WORD language,
                                  LONG_PTR param);

// The resource in that language, else in its primary language with a
// neutral sublanguage, else the language-neutral one; LANG_NEUTRAL asks for
// the search of FindResourceA.
HRSRC FindResourceExA(HMODULE module, LPCSTR type, LPCSTR name, WORD language);
// Searches the languages in order: neutral, the thread's language, its
// language with a neutral sublanguage, then with any sublanguage, the
// user's, the system's, English (United States), then the lowest one that
// the module has.
HRSRC FindResourceA(HMODULE module, LPCSTR name, LPCSTR type);
HGLOBAL LoadResource(HMODULE module, HRSRC resource);
DWORD SizeofResource(HMODULE module, HRSRC resource);
LPVOID LockResource(HGLOBAL data);
// Resources are never unloaded: always FALSE, as on Win32.
BOOL FreeResource(HGLOBAL data);
// Calls `callback` for each language of the resource, in ascending order,
// until it returns FALSE.
BOOL EnumResourceLanguagesA(HMODULE module, LPCSTR type, LPCSTR name, ENUMRESLANGPROCA callback,
                            LONG_PTR param);

}  // namespace nvk::os
