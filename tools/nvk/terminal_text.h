// The tool's edge: the library's text is Windows-1252, the terminal's UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace nvk::tool {

std::string AnsiToUtf8(std::string_view ansi);
// The terminal's text in Windows-1252; what it can't hold becomes '?'.
std::string Utf8ToAnsi(std::string_view utf8);

}  // namespace nvk::tool
