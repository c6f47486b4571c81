// The file names under which a module is looked for in each folder.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nvk::os::posix {

// "x.dll" is looked for as itself, then as the shared object "libx.so" (and
// "libx.so" in lower case, as libraries are usually named here). A name
// without an extension gets ".dll", as on Windows; a trailing dot says that
// the name has none. Other names are taken as they are.
std::vector<std::string> ModuleFileNames(std::string_view baseName);

// The executable's native path, from the kernel.
std::string ExecutablePath();
// The native path of the shared object that holds the OS layer.
std::string LayerPath();

}  // namespace nvk::os::posix
