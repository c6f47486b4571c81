// Formatting against the C library. The input builds a format for one of a
// fixed set of argument shapes: literal text, then for each argument a
// conversion with fuzzed flags, width, precision and letter, among them
// letters the length estimate doesn't know. Whatever the estimate says, the
// value must be what the C library prints.
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "nvk/core/chaine.h"

namespace {

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_pData(data), m_Size(size) {}
    std::uint8_t Next() { return m_At < m_Size ? m_pData[m_At++] : 0; }

private:
    const std::uint8_t* m_pData;
    std::size_t m_Size;
    std::size_t m_At = 0;
};

enum class Kind { Int, Double, Text, Int64 };

void AddConversion(std::string& format, Input& in, Kind kind) {
    const std::uint8_t literal = in.Next() % 8;
    for (std::uint8_t i = 0; i < literal; ++i) {
        const char c = static_cast<char>(in.Next());
        // "I" could spell a 64-bit marker in the text: the reference below
        // only rewrites the markers of conversions.
        format += c == '%' ? std::string("%%") : std::string(1, c == '\0' || c == 'I' ? '.' : c);
    }
    format += '%';
    const std::uint8_t flags = in.Next();
    for (int bit = 0; bit < 5; ++bit) {
        if ((flags >> bit & 1) != 0) {
            format += "-+ #0"[bit];
        }
    }
    if (const std::uint8_t width = in.Next(); width < 120) {
        format += std::to_string(width);
    }
    if (const std::uint8_t precision = in.Next(); precision < 120) {
        format += "." + std::to_string(precision);
    }
    const std::uint8_t letter = in.Next();
    switch (kind) {
        case Kind::Int:
            format += "diuoxXc"[letter % 7];
            break;
        case Kind::Double:
            format += "feEgGaAF"[letter % 8];
            break;
        case Kind::Text:
            format += 's';
            break;
        case Kind::Int64:
            format += std::string("I64") + "diuxX"[letter % 5];
            break;
    }
}

std::string Printed(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    const int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::vector<char> text(static_cast<std::size_t>(n > 0 ? n : 0) + 1);
    std::vsnprintf(text.data(), text.size(), format, args);
    va_end(args);
    return n < 0 ? std::string() : std::string(text.data());
}

// The C library's spelling of the 64-bit marker.
std::string LibrarySpelling(std::string format) {
    for (std::size_t at = 0; (at = format.find("I64", at)) != std::string::npos;) {
        format.replace(at, 3, "ll");
    }
    return format;
}

template <class... Args>
void Check(const std::string& format, Args... args) {
    Chaine value;
    value.Format(format.c_str(), args...);
    const std::string expected = Printed(LibrarySpelling(format).c_str(), args...);
    if (std::string(value) != expected) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 4096) {
        return 0;
    }
    static const std::string longText(3000, 'L');
    const char* texts[] = {"", "abc", "d\xE9j\xE0", longText.c_str(), nullptr};
    Input in(data, size);
    const std::uint8_t shape = in.Next();
    const int number = static_cast<int>(in.Next()) * 1234567 - 99;
    const double real = (in.Next() - 128) * 1.7e37 / (in.Next() + 1);
    const long long wide = static_cast<long long>(number) * 9876543210LL;
    const char* text = texts[in.Next() % 5];

    std::string format;
    switch (shape % 6) {
        case 0:
            AddConversion(format, in, Kind::Int);
            Check(format, number);
            break;
        case 1:
            AddConversion(format, in, Kind::Double);
            Check(format, real);
            break;
        case 2:
            AddConversion(format, in, Kind::Text);
            Check(format, text);
            break;
        case 3:
            AddConversion(format, in, Kind::Int64);
            Check(format, wide);
            break;
        case 4:
            AddConversion(format, in, Kind::Double);
            AddConversion(format, in, Kind::Text);
            AddConversion(format, in, Kind::Int);
            Check(format, real, text, number);
            break;
        default:
            AddConversion(format, in, Kind::Text);
            AddConversion(format, in, Kind::Double);
            AddConversion(format, in, Kind::Double);
            AddConversion(format, in, Kind::Text);
            Check(format, text, real, -real, texts[3]);
            break;
    }
    return 0;
}
