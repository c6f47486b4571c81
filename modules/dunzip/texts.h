// The engine's texts: every message comes from the caller's lpMessageDisplay,
// with the engine's own words only where the caller has none.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "nvk/archive/unzip_cmd.h"

namespace nvk::unzip {

// Message `id` of the caller, or `fallback` when it gives none (or "-").
std::string Message(const UNZIPCMDSTRUCT& command, int id, const char* fallback);

// `format` with each printf conversion ("%s", "%d", "%#08lx", ...) replaced by
// the next of `args`, and "%%" by "%": the caller's texts are never handed to
// printf, so a stray conversion in a translation cannot read past the
// arguments.
std::string Substitute(std::string_view format, std::initializer_list<std::string_view> args);

// Windows-1252, the library's text, from UTF-8 and back; unmappable
// characters become '?'.
std::string AnsiFromUtf8(std::string_view utf8);
std::string Utf8FromAnsi(std::string_view ansi);

}  // namespace nvk::unzip
