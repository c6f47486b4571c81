#include "rc_icon.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace nvk::rc {

namespace {

// The file's header is 6 bytes (reserved 0, type 1, count), then 16 bytes
// for each image: width, height, colour count, reserved, planes and bits
// per pixel (words), size and offset of the image (double words). A group
// entry keeps the first 12 bytes and puts the image's resource number in
// place of the offset.
constexpr std::size_t kHeaderSize = 6;
constexpr std::size_t kFileEntrySize = 16;

std::uint32_t Read(const std::vector<unsigned char>& bytes, std::size_t at, int width) {
    std::uint32_t value = 0;
    for (int i = width - 1; i >= 0; --i) {
        value = (value << 8) | bytes[at + static_cast<std::size_t>(i)];
    }
    return value;
}

void Put(std::vector<unsigned char>& bytes, std::uint32_t value, int width) {
    for (int i = 0; i < width; ++i) {
        bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

}  // namespace

void AddIcon(Script& script, const ResourceId& name, std::uint16_t language,
             const std::string& iconFile, const std::string& scriptFile, int line) {
    std::filesystem::path path(iconFile);
    if (path.is_relative()) {
        path = std::filesystem::path(scriptFile).parent_path() / path;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw RcError(scriptFile, line, "can't read the icon file " + path.string());
    }
    const std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(in)),
                                           std::istreambuf_iterator<char>());
    if (bytes.size() < kHeaderSize || Read(bytes, 0, 2) != 0 || Read(bytes, 2, 2) != 1) {
        throw RcError(scriptFile, line, path.string() + " is not an icon file");
    }
    const std::size_t count = Read(bytes, 4, 2);
    if (count == 0 || bytes.size() < kHeaderSize + count * kFileEntrySize) {
        throw RcError(scriptFile, line, path.string() + " has no complete list of images");
    }

    std::uint16_t number = 0;
    for (const DataResource& other : script.data) {
        if (other.type.text.empty() && other.type.number == kIconType && other.name.text.empty()) {
            number = std::max(number, other.name.number);
        }
        if (other.type == ResourceId{{}, kGroupIconType} && other.name == name &&
            other.language == language) {
            throw RcError(scriptFile, line, "the icon is defined twice");
        }
    }
    if (number + count > 0xFFFF) {
        throw RcError(scriptFile, line, "too many icon images");
    }

    DataResource group{{{}, kGroupIconType}, name, language, {}, line};
    Put(group.bytes, 0, 2);
    Put(group.bytes, 1, 2);
    Put(group.bytes, static_cast<std::uint32_t>(count), 2);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = kHeaderSize + i * kFileEntrySize;
        const std::uint32_t size = Read(bytes, entry + 8, 4);
        const std::uint32_t offset = Read(bytes, entry + 12, 4);
        if (offset > bytes.size() || size > bytes.size() - offset) {
            throw RcError(scriptFile, line, path.string() + " lists an image past its end");
        }
        ++number;
        DataResource image{{{}, kIconType}, {{}, number}, language, {}, line};
        image.bytes.assign(bytes.begin() + offset, bytes.begin() + offset + size);
        script.data.push_back(std::move(image));
        group.bytes.insert(group.bytes.end(), bytes.begin() + static_cast<std::ptrdiff_t>(entry),
                           bytes.begin() + static_cast<std::ptrdiff_t>(entry + 12));
        Put(group.bytes, number, 2);
    }
    script.data.push_back(std::move(group));
}

}  // namespace nvk::rc
