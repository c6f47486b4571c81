// Names of the file system as Windows sees them: the same without regard to
// letter case (in the ANSI code page's rules), and found so.
#pragma once

#include <cerrno>
#include <string>
#include <string_view>

namespace nvk::os::posix {

// Whether two names are equal without regard to case, Windows-1252 letters
// included.
bool SameName(std::string_view a, std::string_view b);
char FoldCase(char c);

// A native path whose exact name does not exist, resolved as Windows would:
// each missing component is replaced by its ANSI bytes when an earlier build
// wrote it so, else by the first entry of its folder (in byte order) whose
// ANSI form matches it without regard to case; the components after
// one that matches nothing stay as given, so that a new file takes the name
// it was given. True when the path changed. The exact name costs nothing
// here: callers try it first and come here only when it is missing.
bool ResolveCase(std::string& nativePath);

// Whether a call that failed with `error` on `nativePath` is worth another
// try on the path resolved without case; resolves it when so.
inline bool RetryWithoutCase(int error, std::string& nativePath) {
    return (error == ENOENT || error == ENOTDIR) && ResolveCase(nativePath);
}

}  // namespace nvk::os::posix
