// The ANSI code page of the library's text, Windows-1252, against UTF-16 and
// UTF-8, for the files that the system's tools write in those encodings.
#pragma once

#include <string>
#include <string_view>

namespace nvk::os::posix {

char16_t WideFromAnsi(char c);
// Its best fit, or '?', for a character the code page lacks, as
// WideCharToMultiByte gives it.
char AnsiFromWide(char16_t c);

// Decodes UTF-8 into ANSI, a character the code page lacks becoming its best
// fit when `bestFit` allows it, else '?'; false at the first malformed or
// overlong sequence.
bool AnsiFromUtf8(std::string_view bytes, std::string& text, bool bestFit);
std::string Utf8FromAnsi(std::string_view text);

// File bytes as ANSI text: UTF-16LE with its byte order mark, UTF-8 with its
// mark or without when the bytes are valid UTF-8 beyond ASCII, else the bytes
// as they are.
std::string AnsiFromFileBytes(std::string_view bytes);
// ANSI text as UTF-16LE bytes behind a byte order mark.
std::string Utf16FileBytes(std::string_view text);

}  // namespace nvk::os::posix
