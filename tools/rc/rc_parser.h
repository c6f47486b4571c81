// The parser of resource scripts: the part of the .rc language that the
// library's resources are written in.
//
//   #pragma code_page(65001)              other #pragma lines are ignored too
//   LANGUAGE LANG_FRENCH, SUBLANG_FRENCH  the language of what follows
//   STRINGTABLE [flags] [LANGUAGE x, y]   BEGIN id[,] "text" ... END
//   name TYPE [flags] BEGIN "text", 12, 7L ... END
//   name ICON [flags] "file.ico"          see rc_icon.h
//   1 VERSIONINFO FILEVERSION 1,2,3,4 ... BEGIN BLOCK "x" BEGIN VALUE "k", "v" END END
//
// Braces stand for BEGIN and END; adjacent literals join. In data blocks a
// narrow literal gives its Windows-1252 bytes with no terminator, a wide one
// (L"...") its UTF-16 units, a number a 16-bit word, or 32 bits with an L.
#pragma once

#include <string>
#include <string_view>

#include "rc_model.h"

namespace nvk::rc {

// Adds what `source` declares to `script`; throws RcError.
void Parse(std::string_view source, const std::string& fileName, Script& script);

}  // namespace nvk::rc
