#include "native_path.h"

#include <vector>

#include "os/api/nls.h"

namespace nvk::tool {

namespace {

constexpr os::UINT kAnsi = 1252;

bool IsAscii(std::string_view text) {
    for (char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            return false;
        }
    }
    return true;
}

// `text` from one code page to the other; empty when it is not text of
// `from` (MB_ERR_INVALID_CHARS).
std::string Convert(std::string_view text, os::UINT from, os::UINT to) {
    const auto size = static_cast<int>(text.size());
    std::vector<os::WCHAR> wide(text.size());
    const int units = os::MultiByteToWideChar(from, os::MB_ERR_INVALID_CHARS, text.data(), size,
                                              wide.data(), size);
    if (units == 0) {
        return {};
    }
    const int bytes =
        os::WideCharToMultiByte(to, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<std::size_t>(bytes), '\0');
    os::WideCharToMultiByte(to, 0, wide.data(), units, out.data(), bytes, nullptr, nullptr);
    return out;
}

}  // namespace

std::string NativeFromAnsi(std::string_view ansi) {
    return IsAscii(ansi) ? std::string(ansi) : Convert(ansi, kAnsi, os::CP_UTF8);
}

std::string AnsiFromNative(std::string_view native) {
    if (IsAscii(native)) {
        return std::string(native);
    }
    std::string ansi = Convert(native, os::CP_UTF8, kAnsi);
    return ansi.empty() ? std::string(native) : ansi;
}

}  // namespace nvk::tool
