// The registry. On POSIX each root key is a text file in the registry
// editor's format (ROOT.reg in NVK_REGISTRY_DIR, else in the user's
// configuration folder); every change is written through at once under a
// lock, so that several processes may write side by side. The calls return
// Win32 codes: ERROR_FILE_NOT_FOUND for a missing key or value,
// ERROR_NO_MORE_ITEMS at the end of an enumeration, ERROR_MORE_DATA for a
// buffer that is too small, ERROR_ACCESS_DENIED for an access the key was not
// opened with.
#pragma once

#include <string>
#include <string_view>

#include "nvk/os/types.h"

namespace nvk::os {

LSTATUS RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM desired, PHKEY result);
// `disposition` receives REG_CREATED_NEW_KEY or REG_OPENED_EXISTING_KEY;
// missing keys on the way are made too.
LSTATUS RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options,
                        REGSAM desired, LPSECURITY_ATTRIBUTES security, PHKEY result,
                        LPDWORD disposition);
// A null or empty name is the default value. Null `data` with a `dataSize`
// asks for the size alone.
LSTATUS RegQueryValueExA(HKEY key, LPCSTR valueName, LPDWORD reserved, LPDWORD type, LPBYTE data,
                         LPDWORD dataSize);
LSTATUS RegSetValueExA(HKEY key, LPCSTR valueName, DWORD reserved, DWORD type, const BYTE* data,
                       DWORD dataSize);
// Subkeys in name order without regard to case; `nameSize` holds the
// buffer's size in characters and receives the name's length.
LSTATUS RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, LPDWORD nameSize, LPDWORD reserved,
                      LPSTR keyClass, LPDWORD classSize, FILETIME* lastWriteTime);
// Values in the order they were made.
LSTATUS RegEnumValueA(HKEY key, DWORD index, LPSTR valueName, LPDWORD valueNameSize,
                      LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD dataSize);
// A key that has subkeys is not deleted: ERROR_ACCESS_DENIED.
LSTATUS RegDeleteKeyA(HKEY key, LPCSTR subKey);
LSTATUS RegDeleteValueA(HKEY key, LPCSTR valueName);
LSTATUS RegCloseKey(HKEY key);

// Beyond Win32, what the registry editor does: the text of a key and all
// below it, with its header, in ANSI with "\r\n" line ends; and the import of
// a text in any encoding the editor writes (ERROR_BAD_FORMAT when it has no
// header).
LSTATUS RegExportText(HKEY key, LPCSTR subKey, std::string& text);
LSTATUS RegImportText(std::string_view bytes);

}  // namespace nvk::os
