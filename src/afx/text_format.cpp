#include "afx/text_format.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

#include "nvk/afx/exceptions.h"
#include "os/api/nls.h"

namespace {

using nvk::os::WCHAR;

// The text is reserved for up to this much on the estimate alone.
constexpr std::int64_t kLargestReservation = 1 << 20;

enum class Argument { None, Int, Int64, Double, Text, WideText, Char, WideChar, Pointer, Count };

struct Conversion {
    std::string_view literal;  // the plain text in front of the "%"
    std::string_view spec;     // from the "%" to the letter, both included
    std::string flags;
    bool hasWidth = false;
    int width = 0;
    bool hasPrecision = false;
    int precision = 0;
    bool shortSize = false;  // "h": the C library narrows the integer
    char letter = '\0';
    Argument argument = Argument::None;
    union {
        int i;
        long long i64;
        double real;
        const void* pointer;
    } value{};
};

// A number of the format, held at INT_MAX rather than overflowing.
int ReadNumber(const char*& p) {
    std::int64_t value = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
        value = std::min<std::int64_t>(value * 10 + (*p - '0'), INT_MAX);
    }
    return static_cast<int>(value);
}

// Splits the format into conversions and reads each one's argument, the
// only place that reads them, so that the estimate and the printing can't
// take different arguments.
class Parser {
public:
    explicit Parser(va_list args) { va_copy(m_Args, args); }
    ~Parser() { va_end(m_Args); }
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    // The last conversion has no letter when the format ends in text.
    std::vector<Conversion> Parse(const char* format) {
        std::vector<Conversion> conversions;
        const char* p = format;
        while (*p != '\0') {
            const char* percent = std::strchr(p, '%');
            Conversion& c = conversions.emplace_back();
            if (percent == nullptr) {
                c.literal = p;
                break;
            }
            c.literal = std::string_view(p, static_cast<std::size_t>(percent - p));
            p = ReadConversion(percent, c);
        }
        return conversions;
    }

private:
    const char* ReadConversion(const char* p, Conversion& c) {
        const char* start = p++;
        while (*p != '\0' && std::strchr("-+0 #", *p) != nullptr) {
            c.flags += *p++;
        }
        if (*p == '*') {
            ++p;
            c.hasWidth = true;
            c.width = va_arg(m_Args, int);
        } else if (*p >= '0' && *p <= '9') {
            c.hasWidth = true;
            c.width = ReadNumber(p);
        }
        if (*p == '.') {
            ++p;
            c.hasPrecision = true;
            if (*p == '*') {
                ++p;
                c.precision = va_arg(m_Args, int);
            } else {
                c.precision = ReadNumber(p);
            }
        }
        bool wide64 = false;
        bool longSize = false;
        for (;;) {
            if (std::strncmp(p, "I64", 3) == 0) {
                wide64 = true;
                p += 3;
            } else if (*p != '\0' && std::strchr("hlFLN", *p) != nullptr) {
                c.shortSize = c.shortSize || *p == 'h';
                longSize = longSize || *p == 'l';
                ++p;
            } else {
                break;
            }
        }
        c.letter = *p;
        if (*p != '\0') {
            ++p;
        }
        c.spec = std::string_view(start, static_cast<std::size_t>(p - start));
        // Upper case takes wide text unless "h" says narrow; "l" always wide.
        const bool wide = longSize || (!c.shortSize && (c.letter == 'S' || c.letter == 'C'));
        switch (c.letter) {
            case 'c':
            case 'C':
                c.argument = wide ? Argument::WideChar : Argument::Char;
                c.value.i = va_arg(m_Args, int);
                break;
            case 's':
            case 'S':
                c.argument = wide ? Argument::WideText : Argument::Text;
                c.value.pointer = va_arg(m_Args, const void*);
                break;
            case 'd':
            case 'i':
            case 'u':
            case 'o':
            case 'x':
            case 'X':
                if (wide64) {
                    c.argument = Argument::Int64;
                    c.value.i64 = va_arg(m_Args, long long);
                } else {
                    c.argument = Argument::Int;
                    c.value.i = va_arg(m_Args, int);
                }
                break;
            // "E" is printed by the platform's vsprintf from a double like
            // "e": read it here too, or every later argument would be read
            // one place off (a text pointer taken from a number's bits).
            case 'e':
            case 'E':
            case 'f':
            case 'g':
            case 'G':
                c.argument = Argument::Double;
                c.value.real = va_arg(m_Args, double);
                break;
            case 'p':
                c.argument = Argument::Pointer;
                c.value.pointer = va_arg(m_Args, const void*);
                break;
            case 'n':
                c.argument = Argument::Count;
                c.value.pointer = va_arg(m_Args, int*);
                break;
            default:
                break;
        }
        return p;
    }

    va_list m_Args;
};

std::size_t WideLength(const WCHAR* text) {
    std::size_t n = 0;
    while (text[n] != 0) {
        ++n;
    }
    return n;
}

// Wide text in the ANSI code page, as the platform's vsprintf converts it.
std::string ToAnsi(const WCHAR* text, int length) {
    if (length <= 0) {
        return {};
    }
    const int size = nvk::os::WideCharToMultiByte(nvk::os::CP_ACP, 0, text, length, nullptr, 0,
                                                  nullptr, nullptr);
    std::string ansi(static_cast<std::size_t>(std::max(size, 0)), '\0');
    nvk::os::WideCharToMultiByte(nvk::os::CP_ACP, 0, text, length, ansi.data(), size, nullptr,
                                 nullptr);
    return ansi;
}

std::int64_t TextRule(std::int64_t estimate, const Conversion& c) {
    if (c.hasPrecision && c.precision > 0) {
        estimate = std::min<std::int64_t>(estimate, c.precision);
    }
    return std::max<std::int64_t>(estimate, c.width);
}

// The length the text of one conversion is expected to take: an upper bound
// for most, the exact length of a fixed-point number. It only sizes the
// first reservation; the printing is never bounded by it.
std::int64_t Estimate(const Conversion& c) {
    const std::int64_t hash =
        static_cast<std::int64_t>(std::count(c.flags.begin(), c.flags.end(), '#')) * 2;
    const std::int64_t width = c.hasWidth ? std::abs(static_cast<std::int64_t>(c.width)) : 0;
    const std::int64_t numeric = width + (c.hasPrecision ? std::max(c.precision, 0) : 0);
    switch (c.argument) {
        case Argument::Char:
        case Argument::WideChar:
            return hash + TextRule(2, c);
        case Argument::Text:
        case Argument::WideText: {
            std::int64_t length = 6;
            if (c.value.pointer != nullptr) {
                length = static_cast<std::int64_t>(
                    c.argument == Argument::Text
                        ? std::strlen(static_cast<const char*>(c.value.pointer))
                        : WideLength(static_cast<const WCHAR*>(c.value.pointer)));
                length = std::max<std::int64_t>(length, 1);
            }
            return hash + TextRule(length, c);
        }
        case Argument::Int:
        case Argument::Int64:
        case Argument::Pointer:
            return hash + std::max<std::int64_t>(numeric, 32);
        case Argument::Double:
            if (c.letter == 'f') {
                const int precision = c.hasPrecision && c.precision >= 0 ? c.precision : 6;
                return hash + std::max(std::snprintf(nullptr, 0, "%*.*f", static_cast<int>(width),
                                                     precision, c.value.real),
                                       0);
            }
            return hash + std::max<std::int64_t>(numeric, 400);
        case Argument::Count:
            return 0;
        case Argument::None:
            break;
    }
    return static_cast<std::int64_t>(c.spec.size());
}

int PrintOne(char* out, std::size_t size, const char* spec, ...) {
    va_list args;
    va_start(args, spec);
    const int n = std::vsnprintf(out, size, spec, args);
    va_end(args);
    return n;
}

// Appends one conversion printed by the C library with the value read for
// it, under `letter` and the C library's own size spelling; false when the C
// library refuses it.
template <class T>
bool AppendPrinted(std::string& out, const Conversion& c, const char* size, char letter, T value) {
    std::string spec = "%" + c.flags;
    spec += c.hasWidth ? "*" : "";
    spec += c.hasPrecision ? ".*" : "";
    spec += size;
    spec += letter;
    auto print = [&](char* to, std::size_t room) {
        if (c.hasWidth && c.hasPrecision) {
            return PrintOne(to, room, spec.c_str(), c.width, c.precision, value);
        }
        if (c.hasWidth) {
            return PrintOne(to, room, spec.c_str(), c.width, value);
        }
        if (c.hasPrecision) {
            return PrintOne(to, room, spec.c_str(), c.precision, value);
        }
        return PrintOne(to, room, spec.c_str(), value);
    };
    const int n = print(nullptr, 0);
    if (n < 0) {
        return false;
    }
    const std::size_t at = out.size();
    out.resize(at + static_cast<std::size_t>(n));
    // The terminator lands on the string's own, which may be written as 0.
    print(out.data() + at, static_cast<std::size_t>(n) + 1);
    return true;
}

bool Append(std::string& out, const Conversion& c) {
    out.append(c.literal);
    switch (c.argument) {
        case Argument::Char:
            return AppendPrinted(out, c, "", 'c', c.value.i);
        case Argument::WideChar: {
            const auto wide = static_cast<WCHAR>(c.value.i);
            const std::string ansi = wide == 0 ? std::string(1, '\0') : ToAnsi(&wide, 1);
            return AppendPrinted(out, c, "", 'c', ansi.empty() ? 0 : ansi[0]);
        }
        case Argument::Text:
            return AppendPrinted(out, c, "", 's', static_cast<const char*>(c.value.pointer));
        case Argument::WideText: {
            if (c.value.pointer == nullptr) {
                return AppendPrinted(out, c, "", 's', static_cast<const char*>(nullptr));
            }
            const auto* wide = static_cast<const WCHAR*>(c.value.pointer);
            const std::string ansi = ToAnsi(wide, static_cast<int>(WideLength(wide)));
            return AppendPrinted(out, c, "", 's', ansi.c_str());
        }
        case Argument::Int:
            return AppendPrinted(out, c, c.shortSize ? "h" : "", c.letter, c.value.i);
        case Argument::Int64:
            return AppendPrinted(out, c, "ll", c.letter, c.value.i64);
        case Argument::Double:
            return AppendPrinted(out, c, "", c.letter, c.value.real);
        case Argument::Pointer:
            return AppendPrinted(out, c, "", 'p', c.value.pointer);
        case Argument::Count:
            if (c.value.pointer != nullptr) {
                *static_cast<int*>(const_cast<void*>(c.value.pointer)) =
                    static_cast<int>(std::min<std::size_t>(out.size(), INT_MAX));
            }
            return true;
        case Argument::None:
            // The platform prints an unknown conversion's letter, "%" among them.
            if (c.letter != '\0') {
                out += c.letter;
            }
            return true;
    }
    return true;
}

}  // namespace

namespace nvk::afx {

std::string FormatText(const char* format, va_list args) {
    try {
        Parser parser(args);
        const std::vector<Conversion> conversions = parser.Parse(format);
        std::int64_t estimate = 0;
        for (const Conversion& c : conversions) {
            estimate += static_cast<std::int64_t>(c.literal.size()) + Estimate(c);
        }
        std::string out;
        out.reserve(static_cast<std::size_t>(std::min(estimate, kLargestReservation)));
        for (const Conversion& c : conversions) {
            // The C library refuses a text longer than INT_MAX; so do we.
            if (!Append(out, c) || out.size() > static_cast<std::size_t>(INT_MAX)) {
                return {};
            }
        }
        out.resize(std::strlen(out.c_str()));
        return out;
    } catch (const std::bad_alloc&) {
        AfxThrowMemoryException();
    }
}

}  // namespace nvk::afx
