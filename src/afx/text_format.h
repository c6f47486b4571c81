// The printf dialect of the library's two strings, Chaine and CString, in
// one place so that both print every format alike. It is the platform's:
//   - "I64" before an integer conversion takes a 64-bit argument;
//   - "h", "l", "F", "L" and "N" are size modifiers and take nothing more:
//     "%ld" reads a 32-bit LONG, "%Lf" a double, "%Fs" and "%Ns" a pointer;
//   - "%S", "%C", "%ls" and "%lc" take the library's 16-bit WCHAR text and
//     print it in the ANSI code page ("%hS" and "%hC" stay narrow);
//   - an unknown conversion prints its letter and takes no argument.
// Each conversion's argument is read once, by the one parser; the C library
// then prints each conversion alone, spelled its own way, with that value.
#pragma once

#include <cstdarg>
#include <string>

#include "nvk/nvkafx_export.h"

namespace nvk::afx {

// The formatted text up to its first zero byte, as a printf caller reads
// it back. Exhausted memory throws CMemoryException*. Exported for Chaine,
// whose frame lies in every module.
NVKAFX_EXPORT std::string FormatText(const char* format, va_list args);

}  // namespace nvk::afx
