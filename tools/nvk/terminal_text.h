// The tool's edge: the library's text is Windows-1252, the terminal's UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace nvk::tool {

std::string AnsiToUtf8(std::string_view ansi);
// Characters that Windows-1252 lacks become "?".
std::string Utf8ToAnsi(std::string_view utf8);

}  // namespace nvk::tool
