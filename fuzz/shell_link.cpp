// Reads untrusted link files and desktop entries as resolving a link does:
// any bytes must be read without a fault, and what a link file says must
// come back unchanged through its own writing; a desktop entry's command
// likewise.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "os/posix/desktop_entry.h"
#include "os/posix/shell_link_format.h"

namespace {

using namespace nvk::os::posix;

bool SameLink(const LinkData& a, const LinkData& b) {
    return a.Path == b.Path && a.Arguments == b.Arguments && a.Description == b.Description &&
           a.WorkingDirectory == b.WorkingDirectory && a.RelativePath == b.RelativePath &&
           a.IconPath == b.IconPath && a.IconIndex == b.IconIndex &&
           a.ShowCommand == b.ShowCommand && a.HotKey == b.HotKey;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 1u << 16) {
        return 0;
    }
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    LinkData link;
    if (ReadShellLink(bytes, link) && link.Path.find('\0') == std::string::npos) {
        const std::vector<unsigned char> written = WriteShellLink(link);
        LinkData again;
        if (!ReadShellLink(
                std::string_view(reinterpret_cast<const char*>(written.data()), written.size()),
                again) ||
            !SameLink(link, again)) {
            std::abort();
        }
    }
    DesktopEntry entry;
    if (ReadDesktopEntry(bytes, entry)) {
        DesktopEntry again;
        if (!ReadDesktopEntry(WriteDesktopEntry(entry), again) || again.Command != entry.Command) {
            std::abort();
        }
    }
    return 0;
}
