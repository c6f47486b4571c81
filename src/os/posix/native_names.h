// File names on disk against the library's text. The system's other programs
// write and show names in UTF-8, the library's text is in the ANSI code page:
// every name going to the system is converted to UTF-8, every name or path
// coming back to ANSI, as Windows' A functions convert names. ASCII, the same
// in both, passes without conversion or allocation.
#pragma once

#include <string>
#include <string_view>

namespace nvk::os::posix {

bool IsAscii(std::string_view text);

// The disk form of an ANSI name or path.
std::string NativeName(std::string_view ansi);

// The ANSI form of a disk name or path, component by component: a component
// in UTF-8 is converted, a character the code page lacks becoming '?' (a name
// the A functions then cannot open, as on Windows); a component that is not
// UTF-8 keeps its bytes.
std::string AnsiName(std::string_view native);

}  // namespace nvk::os::posix
