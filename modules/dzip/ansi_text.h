// The callers' texts are Windows-1252; the archive's names and comments are
// UTF-8, which every reader takes, while the library refuses a comment whose
// bytes are neither ASCII nor UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace zipengine {

std::string AnsiToUtf8(std::string_view ansi);

}  // namespace zipengine
