// What a resource script declares, before it is laid out into a table.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace nvk::rc {

// A type or name: a number, or an upper-case text when `text` isn't empty.
struct ResourceId {
    std::string text;
    std::uint16_t number = 0;

    bool operator==(const ResourceId&) const = default;
    auto operator<=>(const ResourceId&) const = default;
};

struct StringEntry {
    std::uint16_t language;
    std::uint16_t id;
    std::u16string text;
    int line;
};

struct DataResource {
    ResourceId type;
    ResourceId name;
    std::uint16_t language;
    std::vector<unsigned char> bytes;
    int line;
};

struct Script {
    std::vector<StringEntry> strings;
    std::vector<DataResource> data;
};

// A fault in a script, with the place it was found at.
class RcError : public std::runtime_error {
public:
    RcError(const std::string& file, int line, const std::string& message)
        : std::runtime_error(file + ":" + std::to_string(line) + ": " + message) {}
};

}  // namespace nvk::rc
