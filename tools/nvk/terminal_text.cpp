#include "terminal_text.h"

#include <unicode/ucnv.h>

namespace nvk::tool {

std::string AnsiToUtf8(std::string_view ansi) {
    if (ansi.empty()) {
        return {};
    }
    std::string utf8(ansi.size() * 3 + 1, '\0');
    UErrorCode status = U_ZERO_ERROR;
    int32_t n =
        ucnv_convert("UTF-8", "windows-1252", utf8.data(), static_cast<int32_t>(utf8.size()),
                     ansi.data(), static_cast<int32_t>(ansi.size()), &status);
    utf8.resize(U_SUCCESS(status) ? static_cast<std::size_t>(n) : 0);
    return utf8;
}

}  // namespace nvk::tool
