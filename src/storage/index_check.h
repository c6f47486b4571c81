// Verification of an index file as it lies on its file: every tree, its
// links and counts, and the free-page list.
#pragma once

#include <string>

class EBaseFile;

namespace nvk {

// The first violation found, as one line of text, or an empty string for a
// sound file. Reads through `file`, and leaves it at its position.
std::string CheckIndexFile(EBaseFile& file);

}  // namespace nvk
