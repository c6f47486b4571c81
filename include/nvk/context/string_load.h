// String resources, loaded by hand so that one language can be asked for
// with a fall-back. String `id` lies at place id & 15 of block (id >> 4) + 1.
#pragma once

#include <cstdint>

#include "nvk/core/chaine.h"
#include "nvk/os/types.h"

namespace nvk {

constexpr std::uint16_t StringBlock(unsigned id) {
    return static_cast<std::uint16_t>((id >> 4) + 1);
}

// The module whose resources hold the string block of `id`: the
// executable's first, then this module's own; this module's when neither has
// it.
os::HMODULE FindStringModule(unsigned id);

// This module: the one that carries the library's resource table, which is
// registered at the first call.
os::HMODULE LibraryModule();

// Sets `value` to string `id` of `module` in `language`; when the module has
// no such block and `language` is not 0, to the block the system's own
// search finds. False when no block was found or the string is empty; the
// value is then empty.
bool LoadStringIn(Chaine& value, unsigned id, os::HMODULE module, std::uint16_t language);

// The same in the process's string language, ELoc's LangID.
bool LoadString(Chaine& value, unsigned id, os::HMODULE module);

}  // namespace nvk
