// The callers' texts are Windows-1252; the archive's names and comments are
// UTF-8, which every reader takes, while the library refuses a comment whose
// bytes are neither ASCII nor UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace zipengine {

std::string AnsiToUtf8(std::string_view ansi);

// Names of files come as the file system holds them: bytes that are
// already UTF-8 (the names this system's own programs give) stay as they
// are, others are Windows-1252 (the names the applications give).
std::string NameToUtf8(std::string_view name);

// A folder or file path in a form where '\\' separates: the system's own
// absolute paths ("/home/ann") take their drive form.
std::string WindowsForm(std::string const& path);

}  // namespace zipengine
