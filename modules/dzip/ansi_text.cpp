#include "ansi_text.h"

#include "os/api/nls.h"

namespace zipengine {

using namespace nvk::os;

std::string AnsiToUtf8(std::string_view ansi) {
    if (ansi.empty()) {
        return {};
    }
    int size = static_cast<int>(ansi.size());
    std::u16string wide(static_cast<std::size_t>(size), u'\0');
    int wideSize = MultiByteToWideChar(CP_ACP, 0, ansi.data(), size,
                                       reinterpret_cast<LPWSTR>(wide.data()), size);
    int utf8Size = WideCharToMultiByte(CP_UTF8, 0, reinterpret_cast<LPCWSTR>(wide.data()), wideSize,
                                       nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(utf8Size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, reinterpret_cast<LPCWSTR>(wide.data()), wideSize, utf8.data(),
                        utf8Size, nullptr, nullptr);
    return utf8;
}

}  // namespace zipengine
