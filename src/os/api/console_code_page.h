// The code pages in which the console reads and shows text.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// On POSIX both are the terminal's charset, which the locale's LC_CTYPE names
// (the first of LC_ALL, LC_CTYPE and LANG that is set): CP_UTF8 when it names
// none ("C", "POSIX", "fr_FR"), the charset's Windows number otherwise
// (28591 for ISO-8859-1, 28605 for ISO-8859-15, 1252 for CP1252), and 20127,
// plain ASCII, for a charset that has no Windows number.
UINT GetConsoleCP();
UINT GetConsoleOutputCP();

}  // namespace nvk::os
