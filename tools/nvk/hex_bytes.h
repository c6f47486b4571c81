// Bytes written as hexadecimal digits, two a byte, as the storage commands
// take and show keys and records.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace nvk::tool {

// Upper or lower case; false for an odd count or a character that is no digit.
inline bool ParseHex(const std::string& text, std::vector<char>& bytes) {
    auto digit = [](char c) {
        if (c >= '0' && c <= '9') {
            return c - '0';
        }
        if (c >= 'a' && c <= 'f') {
            return c - 'a' + 10;
        }
        if (c >= 'A' && c <= 'F') {
            return c - 'A' + 10;
        }
        return -1;
    };
    if (text.size() % 2 != 0) {
        return false;
    }
    bytes.clear();
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = digit(text[i]);
        const int low = digit(text[i + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        bytes.push_back(static_cast<char>(high * 16 + low));
    }
    return true;
}

// Upper-case digits.
inline std::string FormatHex(const void* bytes, std::size_t size) {
    static const char kDigits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(size * 2);
    for (std::size_t i = 0; i < size; ++i) {
        const auto byte = static_cast<const unsigned char*>(bytes)[i];
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

}  // namespace nvk::tool
