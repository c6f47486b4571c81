#include "os/posix/code_page.h"

#include "os/posix/code_page_tables.h"

namespace nvk::os::posix {

namespace {

// The ANSI code page's table, the one the conversion calls use.
const SingleByteCodePage& Ansi() {
    static const SingleByteCodePage* table = SingleByteCodePage::For(1252);
    return *table;
}

}  // namespace

bool AnsiFromUtf8(std::string_view bytes, std::string& text, bool bestFit) {
    static constexpr char32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
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
        // An overlong form would smuggle in an ASCII character ("/" as C0 AF),
        // and surrogates are no characters.
        if (code < kLeast[extra] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            return false;
        }
        if (code > 0xFFFF) {
            text += '?';
        } else if (bestFit) {
            text += AnsiFromWide(static_cast<char16_t>(code));
        } else {
            const int byte = Ansi().Byte(static_cast<char16_t>(code), false);
            text += byte == SingleByteCodePage::kNone ? '?' : static_cast<char>(byte);
        }
        i += extra + 1;
    }
    return true;
}

std::string Utf8FromAnsi(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 2);
    for (char c : text) {
        const char32_t unit = WideFromAnsi(c);
        if (unit < 0x80) {
            out += static_cast<char>(unit);
        } else if (unit < 0x800) {
            out += static_cast<char>(0xC0 | (unit >> 6));
            out += static_cast<char>(0x80 | (unit & 0x3F));
        } else {
            out += static_cast<char>(0xE0 | (unit >> 12));
            out += static_cast<char>(0x80 | ((unit >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (unit & 0x3F));
        }
    }
    return out;
}

char16_t WideFromAnsi(char c) {
    return Ansi().Wide(static_cast<unsigned char>(c));
}

char AnsiFromWide(char16_t c) {
    const int byte = Ansi().Byte(c, true);
    return byte == SingleByteCodePage::kNone ? '?' : static_cast<char>(byte);
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
        return AnsiFromUtf8(bytes, text, true) ? text : std::string(bytes);
    }
    return AnsiFromUtf8(bytes, text, true) ? text : std::string(bytes);
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
