// The texts of string literals: the script is UTF-8, string tables hold
// UTF-16, and narrow data is Windows-1252, the code page of the library's
// text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace nvk::rc {

// The characters of a literal's body (what stands between its quotes), with
// its escapes and doubled quotes resolved. An escape gives the code unit it
// names. Throws std::invalid_argument on text that isn't UTF-8 or a bad
// escape.
std::u16string DecodeLiteral(std::string_view body);

// The Windows-1252 bytes of a text; throws std::invalid_argument when a
// character has none.
std::vector<unsigned char> ToAnsi(std::u16string_view text);

// Whether every character of the text has a Windows-1252 byte.
bool IsAnsi(std::u16string_view text);

}  // namespace nvk::rc
