// The registry. On POSIX each root key is a text file in the registry
// editor's format (ROOT.reg in NVK_REGISTRY_DIR, else in the user's
// configuration folder, found in the password database when HOME is unset);
// every change is written through at once under a lock, so that several
// processes may write side by side. The folder must belong to the user and be
// closed to others' writes, else every call answers ERROR_ACCESS_DENIED; the
// files are made with mode 0600 and keep their mode and owner when rewritten.
// The calls return Win32 codes: ERROR_FILE_NOT_FOUND for a missing key or
// value, ERROR_NO_MORE_ITEMS at the end of an enumeration, ERROR_MORE_DATA for
// a buffer that is too small, ERROR_ACCESS_DENIED for an access the key was
// not opened with, ERROR_KEY_DELETED for a handle whose key was deleted (a key
// made again under its name is another key), ERROR_BAD_PATHNAME for a subkey
// path that begins with "\", ERROR_INVALID_PARAMETER for a key name over 255
// characters or with a line break and a value name over 16,383, and
// ERROR_BADDB for a change to a root whose file holds a part that did not
// read: it is not rewritten, which would lose that part, until repaired.
#pragma once

#include <string>
#include <string_view>

#include "nvk/os/types.h"

namespace nvk::os {

// A null or empty `subKey` on a root key gives the root key itself.
LSTATUS RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD options, REGSAM desired, PHKEY result);
// `disposition` receives REG_CREATED_NEW_KEY or REG_OPENED_EXISTING_KEY;
// missing keys on the way are made too.
LSTATUS RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD reserved, LPSTR keyClass, DWORD options,
                        REGSAM desired, LPSECURITY_ATTRIBUTES security, PHKEY result,
                        LPDWORD disposition);
// A null or empty name is the default value. Null `data` with a `dataSize`
// asks for the size alone; a missing value sets the size to 0. A text type
// gets a terminating zero after the data where the buffer has room.
LSTATUS RegQueryValueExA(HKEY key, LPCSTR valueName, LPDWORD reserved, LPDWORD type, LPBYTE data,
                         LPDWORD dataSize);
// A text type given without its terminating zero is stored with one.
LSTATUS RegSetValueExA(HKEY key, LPCSTR valueName, DWORD reserved, DWORD type, const BYTE* data,
                       DWORD dataSize);
// Subkeys in name order without regard to case; `nameSize` holds the
// buffer's size in characters and receives the name's length.
LSTATUS RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, LPDWORD nameSize, LPDWORD reserved,
                      LPSTR keyClass, LPDWORD classSize, FILETIME* lastWriteTime);
// Values in the order they were made. When the name or the data does not
// fit, ERROR_MORE_DATA gives the type and the data's size and leaves the
// name and its length as they were.
LSTATUS RegEnumValueA(HKEY key, DWORD index, LPSTR valueName, LPDWORD valueNameSize,
                      LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD dataSize);
// A key that has subkeys is not deleted: ERROR_ACCESS_DENIED. A null
// `subKey` is ERROR_INVALID_PARAMETER; an empty one deletes the handle's key.
LSTATUS RegDeleteKeyA(HKEY key, LPCSTR subKey);
LSTATUS RegDeleteValueA(HKEY key, LPCSTR valueName);
LSTATUS RegCloseKey(HKEY key);

// Beyond Win32, what the registry editor does: the text of a key and all
// below it, with its header, in ANSI with "\r\n" line ends; and the import of
// a text in any encoding the editor writes (ERROR_BAD_FORMAT when its first
// line is not the header; what can't be read is skipped, sections of an
// unknown root included, as the editors skip it).
LSTATUS RegExportText(HKEY key, LPCSTR subKey, std::string& text);
LSTATUS RegImportText(std::string_view bytes);

}  // namespace nvk::os
