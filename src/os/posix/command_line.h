// The arguments of a Windows command line, split as the C runtime of
// Windows programs splits them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nvk::os::posix {

// The program name ends at the first blank, or at the closing quote if it
// begins with one, and keeps its backslashes. In the arguments, blanks
// separate outside quotes, 2n backslashes before a quote give n backslashes
// and a quote that opens or closes, 2n+1 give n backslashes and a literal
// quote, and "" inside quotes gives a literal quote.
std::vector<std::string> SplitCommandLine(std::string_view commandLine);

}  // namespace nvk::os::posix
