// The platform's profile functions: reads and writes of INI text files, one
// call one open, as Windows documents them.
//
// A file is lines: "[section]" opens a section, "key=value" (or a key alone)
// belongs to the last section opened, lines that begin with ';' are comments.
// Names of sections and keys are the same without regard to case; blanks
// around names and values don't count. Of two sections or keys of the same
// name the first one counts. A file name without a folder is in the Windows
// folder, "C:\Windows".
//
// Each call opens the file for one operation; a write holds it alone from
// its read to its write. A file that another open holds so (a writer, or
// EIniFile, which holds its files alone) is tried again for about a second,
// and then a read answers as for a missing file and a write fails.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// With a section and a key: the key's value, without the quotes ("..." or
// '...') that enclose it whole, or `defaultValue` (null as "", its trailing
// blanks dropped) when there is none. A value too long for `size` is cut to
// size - 1 characters, and the result is then size - 1.
// With a null section: the names of the sections; with a null key: the keys
// of the section. Each name ends with a zero and the list with a second
// zero; a list too long for `size` is cut, still ends with two zeros, and the
// result is then size - 2.
// The result is the number of characters stored without the final zero. A
// missing file gives the default (or an empty list) with ERROR_FILE_NOT_FOUND.
DWORD GetPrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR defaultValue, LPSTR buffer,
                               DWORD size, LPCSTR fileName);
// The value as a decimal number: its leading digits (after blanks and a
// sign), 0 when there are none or when it is negative, `defaultValue` when
// the key is missing or empty.
UINT GetPrivateProfileIntA(LPCSTR section, LPCSTR key, int defaultValue, LPCSTR fileName);
// The lines of a section as "key=value" (or the key alone), each ending with
// a zero, and a final zero; cut as the lists above, with size - 2.
DWORD GetPrivateProfileSectionA(LPCSTR section, LPSTR buffer, DWORD size, LPCSTR fileName);
// GetPrivateProfileStringA with a null section.
DWORD GetPrivateProfileSectionNamesA(LPSTR buffer, DWORD size, LPCSTR fileName);

// Sets a key, making the file and the section when they are missing. A null
// value deletes the key, a null key the whole section. With everything null
// there is nothing to flush (every call writes through) and the result is
// TRUE.
BOOL WritePrivateProfileStringA(LPCSTR section, LPCSTR key, LPCSTR value, LPCSTR fileName);
// Replaces the keys of a section by the "key=value" strings of `lines`, each
// ending with a zero, the list with a second zero; a null list deletes the
// section.
BOOL WritePrivateProfileSectionA(LPCSTR section, LPCSTR lines, LPCSTR fileName);

}  // namespace nvk::os
