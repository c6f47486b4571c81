// The tool's edges: the library's text is Windows-1252, the terminal's in the
// charset of its locale, UTF-8 by default. Arguments and standard input are
// converted on the way in, standard output and error on the way out, here
// and in the shared frame only, so that no command can forget it.
#pragma once

#include <string>
#include <string_view>

namespace nvk::tool {

// With raw bytes (--raw) nothing is converted, either way. Set once, before
// anything is read or written.
void SetRawBytes(bool raw);

// The terminal's text in Windows-1252, or why it cannot be: empty when
// `ansi` holds the text, else "is not UTF-8 text" and the like.
std::string FromTerminal(std::string_view text, std::string& ansi);

// From now on what goes through std::cout and std::cerr is Windows-1252
// written in the terminal's charset.
void ConvertStandardStreams();

// Whether some character written had no form in the terminal's charset and
// went out as '?'.
bool LostCharacters();

}  // namespace nvk::tool
