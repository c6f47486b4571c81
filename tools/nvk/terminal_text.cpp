#include "terminal_text.h"

#include <algorithm>
#include <vector>

#include "os/api/nls.h"

namespace nvk::tool {

std::string AnsiToUtf8(std::string_view ansi) {
    if (ansi.empty()) {
        return {};
    }
    const auto size = static_cast<int>(ansi.size());
    std::vector<os::WCHAR> wide(ansi.size());
    const int units = os::MultiByteToWideChar(os::CP_ACP, 0, ansi.data(), size, wide.data(), size);
    const int n =
        os::WideCharToMultiByte(os::CP_UTF8, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(std::max(n, 0)), '\0');
    os::WideCharToMultiByte(os::CP_UTF8, 0, wide.data(), units, utf8.data(), n, nullptr, nullptr);
    return utf8;
}

std::string Utf8ToAnsi(std::string_view utf8) {
    if (utf8.empty()) {
        return {};
    }
    const auto size = static_cast<int>(utf8.size());
    std::vector<os::WCHAR> wide(utf8.size());
    const int units = os::MultiByteToWideChar(os::CP_UTF8, 0, utf8.data(), size, wide.data(), size);
    const int n =
        os::WideCharToMultiByte(os::CP_ACP, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
    std::string ansi(static_cast<std::size_t>(std::max(n, 0)), '\0');
    os::WideCharToMultiByte(os::CP_ACP, 0, wide.data(), units, ansi.data(), n, nullptr, nullptr);
    return ansi;
}

}  // namespace nvk::tool
