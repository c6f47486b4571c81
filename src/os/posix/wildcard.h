// The wildcards of file searches, with the DOS rules that Windows applies to
// them: "*" any run of characters and "?" one character, both without regard
// to case; "*.*" matches every name, with or without a dot; "*." the names
// without an extension; "a.*" matches "a" too; a "?" at the end of a name or
// before its dot also matches no character ("??.txt" matches "a.txt").
#pragma once

#include <string_view>

namespace nvk::os::posix {

bool HasWildcards(std::string_view pattern);
bool MatchWildcard(std::string_view pattern, std::string_view name);

}  // namespace nvk::os::posix
