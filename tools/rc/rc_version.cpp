#include "rc_version.h"

#include <algorithm>
#include <cstdint>

namespace nvk::rc {

namespace {

void Put(std::vector<unsigned char>& bytes, std::uint32_t value, int width) {
    for (int i = 0; i < width; ++i) {
        bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

void Pad(std::vector<unsigned char>& bytes) {
    while (bytes.size() % 4 != 0) {
        bytes.push_back(0);
    }
}

void PutText(std::vector<unsigned char>& bytes, const std::u16string& text) {
    for (char16_t unit : text) {
        Put(bytes, unit, 2);
    }
    Put(bytes, 0, 2);
}

// A node: its length, value length and type, its key, its value and its
// children, each part at a 4-byte boundary; the length covers the node up to
// the end of its last child.
void PutNode(std::vector<unsigned char>& bytes, const std::u16string& key,
             const std::vector<unsigned char>& value, std::uint16_t valueLength, std::uint16_t type,
             const std::vector<VersionNode>& children) {
    Pad(bytes);
    const std::size_t start = bytes.size();
    Put(bytes, 0, 2);
    Put(bytes, valueLength, 2);
    Put(bytes, type, 2);
    PutText(bytes, key);
    Pad(bytes);
    bytes.insert(bytes.end(), value.begin(), value.end());
    for (const VersionNode& child : children) {
        std::vector<unsigned char> childValue = child.binary;
        std::uint16_t childLength = static_cast<std::uint16_t>(child.binary.size());
        if (child.text) {
            childValue.clear();
            PutText(childValue, child.textValue);
            childLength = static_cast<std::uint16_t>(child.textValue.size() + 1);
        }
        PutNode(bytes, child.key, childValue, child.block ? 0 : childLength,
                child.block || child.text ? 1 : 0, child.children);
    }
    const std::size_t length = bytes.size() - start;
    bytes[start] = static_cast<unsigned char>(length);
    bytes[start + 1] = static_cast<unsigned char>(length >> 8);
}

}  // namespace

std::vector<unsigned char> VersionBytes(const VersionInfo& version) {
    std::vector<unsigned char> fixed;
    for (std::uint32_t word :
         {0xFEEF04BDu, 0x00010000u, version.fileVersion[0], version.fileVersion[1],
          version.productVersion[0], version.productVersion[1], version.flagsMask, version.flags,
          version.os, version.type, version.subtype, 0u, 0u}) {
        Put(fixed, word, 4);
    }
    std::vector<unsigned char> bytes;
    PutNode(bytes, u"VS_VERSION_INFO", fixed, static_cast<std::uint16_t>(fixed.size()), 0,
            version.children);
    return bytes;
}

void WriteVersionSection(const Script& script, std::ostream& out) {
    if (script.versions.empty()) {
        return;
    }
    const std::vector<unsigned char> bytes = VersionBytes(script.versions.front());
    out << "\n// The module's version resource, found by the name of its section.\n"
           "__attribute__((used, section(\".nvkversion\"), aligned(4))) static const "
           "unsigned char kVersionInfo["
        << bytes.size() << "] = {";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        out << (i % 16 == 0 ? "\n    " : " ") << static_cast<unsigned>(bytes[i]) << ',';
    }
    out << "\n};\n";
}

}  // namespace nvk::rc
