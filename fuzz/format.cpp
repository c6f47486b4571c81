// Formatting against the C library. The input builds a format for one of a
// fixed set of argument lists: literal text, then for each argument a
// conversion with fuzzed flags, width, precision, size modifiers and letter,
// in the library's dialect and matching the argument, as any printf caller
// must. The expected text is each conversion printed alone by the C library,
// spelled its way ("ll" for "I64", no "F", "L", "N" or "l"), wide text by
// its known ANSI form; the value must be that text, for both strings.
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "nvk/afx/cstring.h"
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

// Wide texts with their form in the ANSI code page (Windows-1252).
struct WideText {
    const char16_t* wide;
    const char* ansi;
};
const std::u16string g_LongWide(2000, u'\u00e8');
const std::string g_LongAnsi(2000, '\xE8');
const WideText g_WideTexts[] = {
    {u"", ""},
    {u"abc", "abc"},
    {u"d\u00e9j\u00e0", "d\xE9j\xE0"},
    {u"\u20ac\u0153\u2030", "\x80\x9C\x89"},
    {g_LongWide.c_str(), g_LongAnsi.c_str()},
    {nullptr, nullptr},
};

enum class Kind { Int, Double, Text, Int64, Wide, WideChar };

std::string PrintedAlone(const char* spec, ...) {
    va_list args;
    va_start(args, spec);
    va_list copy;
    va_copy(copy, args);
    const int n = std::vsnprintf(nullptr, 0, spec, copy);
    va_end(copy);
    std::string text(static_cast<std::size_t>(n > 0 ? n : 0), '\0');
    std::vsnprintf(text.data(), text.size() + 1, spec, args);
    va_end(args);
    return text;
}

// One conversion: appends literal text and the conversion in the dialect to
// `format`, the literal text to `expected`, and returns the conversion as
// the C library spells it.
std::string AddConversion(std::string& format, std::string& expected, Input& in, Kind kind) {
    const std::uint8_t literal = in.Next() % 8;
    for (std::uint8_t i = 0; i < literal; ++i) {
        const char c = static_cast<char>(in.Next());
        format += c == '%' ? std::string("%%") : std::string(1, c == '\0' ? '.' : c);
        expected += c == '\0' ? '.' : c;
    }
    std::string spec = "%";
    const std::uint8_t flags = in.Next();
    for (int bit = 0; bit < 5; ++bit) {
        if ((flags >> bit & 1) != 0) {
            spec += "-+ #0"[bit];
        }
    }
    if (const std::uint8_t width = in.Next(); width < 120) {
        spec += std::to_string(width);
    }
    if (const std::uint8_t precision = in.Next(); precision < 120) {
        spec += "." + std::to_string(precision);
    }
    const std::uint8_t letter = in.Next();
    const std::uint8_t size = in.Next();
    format += spec;
    switch (kind) {
        case Kind::Int: {
            const char c = "diuoxXc"[letter % 7];
            // "l" before "c" would make it wide.
            const char* sizes[] = {"", "h", "l", "F", "N", "L"};
            const std::string dialect = c == 'c' && size % 6 == 2 ? "" : sizes[size % 6];
            format += dialect + c;
            return spec + (dialect == "h" && c != 'c' ? "h" : "") + c;
        }
        case Kind::Double: {
            const char c = "feEgG"[letter % 5];
            const char* sizes[] = {"", "l", "L", "F", "N"};
            format += std::string(sizes[size % 5]) + c;
            return spec + c;
        }
        case Kind::Text: {
            const char* spellings[] = {"s", "Fs", "Ns", "hs", "hS"};
            format += spellings[size % 5];
            return spec + 's';
        }
        case Kind::Int64: {
            const char c = "diuoxX"[letter % 6];
            format += std::string("I64") + c;
            return spec + "ll" + c;
        }
        case Kind::Wide: {
            const char* spellings[] = {"S", "ls", "lS", "FS", "NS"};
            format += spellings[size % 5];
            return spec + 's';
        }
        case Kind::WideChar: {
            const char* spellings[] = {"C", "lc", "lC", "FC"};
            format += spellings[size % 4];
            return spec + 'c';
        }
    }
    return spec;
}

template <class... Args>
void Check(const std::string& format, const std::string& expectedText, Args... args) {
    const std::string expected = expectedText.substr(0, std::strlen(expectedText.c_str()));
    Chaine value;
    value.Format(format.c_str(), args...);
    CString other;
    other.Format(format.c_str(), args...);
    if (std::string(value) != expected || std::string(other.GetString()) != expected) {
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
    const WideText& wideText = g_WideTexts[in.Next() % 6];
    const std::uint8_t charAt = in.Next() % 4;
    const char16_t wideChar = u"a\u00e9\u20ac\u0153"[charAt];
    const char ansiChar = "a\xE9\x80\x9C"[charAt];

    std::string format;
    std::string expected;
    auto add = [&](Kind kind) { return AddConversion(format, expected, in, kind); };
    switch (shape % 8) {
        case 0:
            expected += PrintedAlone(add(Kind::Int).c_str(), number);
            Check(format, expected, number);
            break;
        case 1:
            expected += PrintedAlone(add(Kind::Double).c_str(), real);
            Check(format, expected, real);
            break;
        case 2:
            expected += PrintedAlone(add(Kind::Text).c_str(), text);
            Check(format, expected, text);
            break;
        case 3:
            expected += PrintedAlone(add(Kind::Int64).c_str(), wide);
            Check(format, expected, wide);
            break;
        case 4:
            expected += PrintedAlone(add(Kind::Double).c_str(), real);
            expected += PrintedAlone(add(Kind::Text).c_str(), text);
            expected += PrintedAlone(add(Kind::Int).c_str(), number);
            Check(format, expected, real, text, number);
            break;
        case 5:
            expected += PrintedAlone(add(Kind::Text).c_str(), text);
            expected += PrintedAlone(add(Kind::Double).c_str(), real);
            expected += PrintedAlone(add(Kind::Double).c_str(), -real);
            expected += PrintedAlone(add(Kind::Text).c_str(), texts[3]);
            Check(format, expected, text, real, -real, texts[3]);
            break;
        case 6:
            expected += PrintedAlone(add(Kind::Wide).c_str(), wideText.ansi);
            expected += PrintedAlone(add(Kind::Int64).c_str(), wide);
            expected += PrintedAlone(add(Kind::WideChar).c_str(), ansiChar);
            expected += PrintedAlone(add(Kind::Double).c_str(), real);
            Check(format, expected, wideText.wide, wide, static_cast<int>(wideChar), real);
            break;
        default:
            expected += PrintedAlone(add(Kind::Int).c_str(), number);
            expected += PrintedAlone(add(Kind::Wide).c_str(), wideText.ansi);
            expected += PrintedAlone(add(Kind::Text).c_str(), text);
            expected += PrintedAlone(add(Kind::Int64).c_str(), wide);
            Check(format, expected, number, wideText.wide, text, wide);
            break;
    }
    return 0;
}
