#include "os/posix/code_page.h"

#include <array>

namespace nvk::os::posix {

namespace {

// 0x80..0x9F; the five holes of the code page keep their own value.
constexpr std::array<char16_t, 32> kHigh = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// Decodes UTF-8 into ANSI; false at the first malformed sequence.
bool AnsiFromUtf8(std::string_view bytes, std::string& text) {
    text.clear();
    for (std::size_t i = 0; i < bytes.size();) {
        auto lead = static_cast<unsigned char>(bytes[i]);
        int extra = 0;
        if ((lead & 0xE0) == 0xC0) {
            extra = 1;
        } else if ((lead & 0xF0) == 0xE0) {
            extra = 2;
        } else if ((lead & 0xF8) == 0xF0) {
            extra = 3;
        } else if (lead >= 0x80) {
            return false;
        }
        char32_t code = extra == 0 ? lead : lead & (0x3F >> extra);
        for (int k = 1; k <= extra; ++k) {
            if (i + k >= bytes.size() || (static_cast<unsigned char>(bytes[i + k]) >> 6) != 2) {
                return false;
            }
            code = (code << 6) | (static_cast<unsigned char>(bytes[i + k]) & 0x3F);
        }
        text += code > 0xFFFF ? '?' : AnsiFromWide(static_cast<char16_t>(code));
        i += extra + 1;
    }
    return true;
}

}  // namespace

char16_t WideFromAnsi(char c) {
    auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 && byte < 0xA0 ? kHigh[byte - 0x80] : byte;
}

char AnsiFromWide(char16_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) {
        return static_cast<char>(c);
    }
    for (std::size_t i = 0; i < kHigh.size(); ++i) {
        if (kHigh[i] == c) {
            return static_cast<char>(0x80 + i);
        }
    }
    return '?';
}

std::string AnsiFromFileBytes(std::string_view bytes) {
    std::string text;
    if (bytes.starts_with("\xFF\xFE")) {
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
            auto unit = static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                              static_cast<unsigned char>(bytes[i + 1]) << 8);
            text += AnsiFromWide(unit);
        }
        return text;
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
        return AnsiFromUtf8(bytes, text) ? text : std::string(bytes);
    }
    return AnsiFromUtf8(bytes, text) ? text : std::string(bytes);
}

std::string Utf16FileBytes(std::string_view text) {
    std::string bytes = "\xFF\xFE";
    bytes.reserve(2 + text.size() * 2);
    for (char c : text) {
        char16_t unit = WideFromAnsi(c);
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

}  // namespace nvk::os::posix
