#include "ansi_text.h"

#include "os/api/nls.h"
#include "os/api/path_map.h"

namespace zipengine {

using namespace nvk::os;

std::string AnsiToUtf8(std::string_view ansi) {
    if (ansi.empty()) {
        return {};
    }
    int size = static_cast<int>(ansi.size());
    std::basic_string<WCHAR> wide(static_cast<std::size_t>(size), 0);
    int wideSize = MultiByteToWideChar(CP_ACP, 0, ansi.data(), size, wide.data(), size);
    int utf8Size =
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), wideSize, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(utf8Size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), wideSize, utf8.data(), utf8Size, nullptr, nullptr);
    return utf8;
}

std::string NameToUtf8(std::string_view name) {
    bool ascii = true;
    for (char c : name) {
        ascii = ascii && static_cast<unsigned char>(c) < 0x80;
    }
    if (ascii) {
        return std::string(name);
    }
    bool utf8 = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, name.data(),
                                    static_cast<int>(name.size()), nullptr, 0) > 0;
    return utf8 ? std::string(name) : AnsiToUtf8(name);
}

std::string WindowsForm(std::string const& path) {
    if (path.starts_with('/') && !path.starts_with("//")) {
        std::string windows = ToWindowsPath(path.c_str());
        return windows.empty() ? path : windows;
    }
    return path;
}

}  // namespace zipengine
