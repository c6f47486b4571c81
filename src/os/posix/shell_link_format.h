// Shell link files in Windows' documented format: a 76-byte header, the
// target as a path in a LinkInfo structure (its drive as a fixed volume, or
// its share as a network location), then counted strings: description,
// relative path, working folder, arguments and icon location. Strings are
// written in UTF-16 and read in either form.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "nvk/os/types.h"

namespace nvk::os::posix {

// What a link says, its texts in the ANSI code page and its paths in
// Windows syntax.
struct LinkData {
    std::string Path;
    std::string Arguments;
    std::string Description;
    std::string WorkingDirectory;
    std::string RelativePath;
    std::string IconPath;
    int IconIndex = 0;
    int ShowCommand = 1;  // SW_SHOWNORMAL
    WORD HotKey = 0;
    // Of the target, when it exists.
    DWORD FileAttributes = 0;
    FILETIME CreationTime{};
    FILETIME AccessTime{};
    FILETIME WriteTime{};
    DWORD FileSize = 0;
};

std::vector<unsigned char> WriteShellLink(const LinkData& link);
// False for bytes that are no link, or whose structures run past their end.
bool ReadShellLink(std::string_view bytes, LinkData& link);

}  // namespace nvk::os::posix
