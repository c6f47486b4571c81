// Desktop entries in the freedesktop.org format (.desktop files), for
// the links the Linux desktop shows: an application with its command, a
// comment and an icon. Texts are UTF-8, as the entries are; paths native.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nvk::os::posix {

struct DesktopEntry {
    std::string Name;
    std::vector<std::string> Command;  // the program, then its arguments
    std::string Comment;
    std::string Icon;
};

std::string WriteDesktopEntry(const DesktopEntry& entry);
// False for a text without a [Desktop Entry] group that has an Exec key.
bool ReadDesktopEntry(std::string_view text, DesktopEntry& entry);

}  // namespace nvk::os::posix
