// The wildcards of file searches: "*" any run of characters, "?" one
// character, both without regard to case; "*.*" matches every name, with or
// without a dot, as on Windows.
#pragma once

#include <string_view>

namespace nvk::os::posix {

bool HasWildcards(std::string_view pattern);
bool MatchWildcard(std::string_view pattern, std::string_view name);

}  // namespace nvk::os::posix
