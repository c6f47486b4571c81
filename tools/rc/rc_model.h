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

// A node of a VERSIONINFO: a BLOCK with its children, or a VALUE with a
// text or binary value.
struct VersionNode {
    std::u16string key;
    bool block = false;
    bool text = false;
    std::u16string textValue;
    std::vector<unsigned char> binary;
    std::vector<VersionNode> children;
};

// A VERSIONINFO statement: its fixed fields, then its tree.
struct VersionInfo {
    std::uint32_t fileVersion[2] = {};  // the MS and LS words
    std::uint32_t productVersion[2] = {};
    std::uint32_t flagsMask = 0;
    std::uint32_t flags = 0;
    std::uint32_t os = 0;
    std::uint32_t type = 0;
    std::uint32_t subtype = 0;
    std::vector<VersionNode> children;
    int line = 0;
};

struct Script {
    std::vector<StringEntry> strings;
    std::vector<DataResource> data;
    std::vector<VersionInfo> versions;
};

// A fault in a script, with the place it was found at.
class RcError : public std::runtime_error {
public:
    RcError(const std::string& file, int line, const std::string& message)
        : std::runtime_error(file + ":" + std::to_string(line) + ": " + message) {}
};

}  // namespace nvk::rc
