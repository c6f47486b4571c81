#include "os/posix/native_names.h"

#include <algorithm>

#include "os/posix/code_page.h"

namespace nvk::os::posix {

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string NativeName(std::string_view ansi) {
    return IsAscii(ansi) ? std::string(ansi) : Utf8FromAnsi(ansi);
}

std::string AnsiName(std::string_view native) {
    if (IsAscii(native)) {
        return std::string(native);
    }
    // Earlier builds wrote the ANSI bytes themselves as names; such a name is
    // not UTF-8 (beyond ASCII, ANSI text almost never is), and handing it out
    // as it stands keeps the files they made reachable under their names.
    std::string ansi;
    std::string component;
    for (std::size_t start = 0; start <= native.size();) {
        const std::size_t end = std::min(native.find_first_of("/\\", start), native.size());
        const std::string_view part = native.substr(start, end - start);
        if (IsAscii(part) || !AnsiFromUtf8(part, component, false)) {
            ansi += part;
        } else {
            ansi += component;
        }
        if (end < native.size()) {
            ansi += native[end];
        }
        start = end + 1;
    }
    return ansi;
}

}  // namespace nvk::os::posix
