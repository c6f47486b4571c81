// The arguments of a Windows command line, split as the C runtime of
// Windows programs splits them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nvk::os::posix {

// Only blanks and tabs separate. The program name ends at the first blank
// outside quotes; its quotes, wherever they stand, are dropped, and it keeps
// its backslashes. In the arguments, blanks separate outside quotes, 2n backslashes before a quote
// give n backslashes and a quote that opens or closes, 2n+1 give n backslashes and a literal quote,
// and "" inside quotes gives a literal quote.
std::vector<std::string> SplitCommandLine(std::string_view commandLine);

}  // namespace nvk::os::posix
