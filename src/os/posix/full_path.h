// Full Windows paths, as GetFullPathNameA makes them: a relative path taken
// from the current folder, "." and ".." resolved, never above a root.
#pragma once

#include <string>
#include <string_view>

namespace nvk::os::posix {

// Pure string logic on Windows syntax. `current` is the current folder in
// full form ("C:\a" or "\\srv\share\a"); a drive other than its own starts
// at that drive's root. Empty for an empty path.
std::string FullWindowsPath(std::string_view path, std::string_view current);

// The same for this process: its current folder, and a path that begins with
// a single "/" taken as a native absolute path. Empty if the result lies on
// no mapped drive or share.
std::string SystemFullPath(std::string_view path);

// Whether a full path is a drive root ("C:\") or a share ("\\srv\share\").
bool IsFullRoot(std::string_view fullPath);

}  // namespace nvk::os::posix
