// Lays a script out as a module's resource table, and writes the table as a
// C++ source. Strings go into blocks of 16 counted UTF-16 strings, as
// executables hold them: string `id` is at place id & 15 of block
// (id >> 4) + 1, and each place is a 16-bit length and that many units.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "rc_model.h"

namespace nvk::rc {

struct TableEntry {
    ResourceId type;
    ResourceId name;
    std::uint16_t language;
    std::vector<std::uint16_t> units;  // a string block, or
    std::vector<unsigned char> bytes;  // the bytes of any other resource
};

// The table, ordered by type, name and language.
std::vector<TableEntry> Layout(const Script& script);

// How a module's table is found: kNamed, by the module's own code, which
// registers it; kExported, as the unmangled symbol that the module exports;
// kRegistered, from a registration that the source itself makes when the
// module starts, under the module that holds the table.
enum class TableUse { kNamed, kExported, kRegistered };

// The C++ source of the table. `symbol` may be qualified ("nvk::Name") unless
// the table is exported.
void WriteSource(const std::vector<TableEntry>& table, const std::string& symbol, TableUse use,
                 std::ostream& out);

}  // namespace nvk::rc
