#include "rc_text.h"

#include <unicode/ucnv.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <memory>
#include <stdexcept>

namespace nvk::rc {

namespace {

int HexValue(char c) {
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
}

// Resolves the escape at body[i] (just behind the backslash); i moves past it.
char16_t Escape(std::string_view body, std::size_t& i) {
    if (i >= body.size()) {
        throw std::invalid_argument("a backslash ends the string");
    }
    char c = body[i++];
    switch (c) {
        case 'n':
            return u'\n';
        case 'r':
            return u'\r';
        case 't':
            return u'\t';
        case 'a':
            return u'\a';
        case '\\':
            return u'\\';
        case '"':
            return u'"';
        case '\'':
            return u'\'';
        case 'x':
        case 'X': {
            unsigned value = 0;
            std::size_t digits = 0;
            while (digits < 4 && i < body.size() && HexValue(body[i]) >= 0) {
                value = value * 16 + static_cast<unsigned>(HexValue(body[i++]));
                ++digits;
            }
            if (digits == 0) {
                throw std::invalid_argument("\\x without hexadecimal digits");
            }
            return static_cast<char16_t>(value);
        }
        default:
            break;
    }
    if (c >= '0' && c <= '7') {
        unsigned value = static_cast<unsigned>(c - '0');
        for (int digits = 1; digits < 3 && i < body.size() && body[i] >= '0' && body[i] <= '7';
             ++digits) {
            value = value * 8 + static_cast<unsigned>(body[i++] - '0');
        }
        return static_cast<char16_t>(value);
    }
    throw std::invalid_argument(std::string("unknown escape \\") + c);
}

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

// A Windows-1252 converter that stops at a character it has no byte for.
std::unique_ptr<UConverter, ConverterCloser> AnsiConverter() {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, ConverterCloser> converter(ucnv_open("windows-1252", &status));
    if (U_FAILURE(status)) {
        throw std::runtime_error("no Windows-1252 converter");
    }
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                          &status);
    return converter;
}

}  // namespace

std::u16string DecodeLiteral(std::string_view body) {
    std::u16string text;
    std::size_t i = 0;
    while (i < body.size()) {
        if (body[i] == '\\') {
            ++i;
            text.push_back(Escape(body, i));
            continue;
        }
        if (body[i] == '"') {
            // A doubled quote stands for one.
            i += 2;
            text.push_back(u'"');
            continue;
        }
        UChar32 c = 0;
        auto length = static_cast<std::int32_t>(body.size());
        auto at = static_cast<std::int32_t>(i);
        U8_NEXT(reinterpret_cast<const std::uint8_t*>(body.data()), at, length, c);
        if (c < 0) {
            throw std::invalid_argument("the text is not UTF-8");
        }
        i = static_cast<std::size_t>(at);
        if (c > 0xFFFF) {
            text.push_back(U16_LEAD(c));
            text.push_back(U16_TRAIL(c));
        } else {
            text.push_back(static_cast<char16_t>(c));
        }
    }
    return text;
}

std::vector<unsigned char> ToAnsi(std::u16string_view text) {
    auto converter = AnsiConverter();
    std::vector<unsigned char> bytes(text.size() + 1);
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t n = ucnv_fromUChars(converter.get(), reinterpret_cast<char*>(bytes.data()),
                                     static_cast<std::int32_t>(bytes.size()),
                                     reinterpret_cast<const UChar*>(text.data()),
                                     static_cast<std::int32_t>(text.size()), &status);
    if (U_FAILURE(status)) {
        throw std::invalid_argument("a character has no Windows-1252 byte");
    }
    bytes.resize(static_cast<std::size_t>(n));
    return bytes;
}

bool IsAnsi(std::u16string_view text) {
    try {
        ToAnsi(text);
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    }
}

}  // namespace nvk::rc
