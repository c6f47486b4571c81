// printf formatting into a Chaine. A first pass over the format estimates the
// length, so that one vsnprintf into a buffer of that size is usually enough;
// the write is bounded by the buffer, and a short estimate (a conversion the
// estimate doesn't know, say) costs a second run with the exact size.
#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

#include "nvk/core/chaine.h"

namespace {

// The first buffer is never made larger than this on the estimate alone.
constexpr std::int64_t kLargestFirstBuffer = 1 << 20;

int ReadNumber(const char*& p) {
    const int value = std::atoi(p);
    while (*p >= '0' && *p <= '9') {
        ++p;
    }
    return value;
}

class Estimate {
public:
    Estimate(const char* format, va_list args) : m_pFormat(format) { va_copy(m_Args, args); }
    ~Estimate() { va_end(m_Args); }
    Estimate(const Estimate&) = delete;
    Estimate& operator=(const Estimate&) = delete;

    std::int64_t Length() {
        std::int64_t total = 0;
        for (const char* p = m_pFormat; *p != '\0';) {
            if (*p != '%' || p[1] == '%') {
                p += *p == '%' ? 2 : 1;
                ++total;
                continue;
            }
            total += Conversion(p);
        }
        return total;
    }

    // The format as the C library spells it: the 64-bit size "I64" of the
    // conversions becomes "ll"; the same letters in plain text stay.
    std::string LibraryFormat() const {
        std::string spelled(m_pFormat);
        for (auto at = m_Wide64At.rbegin(); at != m_Wide64At.rend(); ++at) {
            spelled.replace(*at, 3, "ll");
        }
        return spelled;
    }
    bool SpelledAlike() const { return m_Wide64At.empty(); }

private:
    // One conversion from its "%"; moves p behind it.
    std::int64_t Conversion(const char*& p) {
        const char* spec = p++;
        std::int64_t extra = 0;
        for (;; ++p) {
            if (*p == '#') {
                extra += 2;
            } else if (std::strchr("-+0 ", *p) == nullptr || *p == '\0') {
                break;
            }
        }
        std::int64_t width = 0;
        if (*p == '*') {
            width = std::abs(static_cast<std::int64_t>(va_arg(m_Args, int)));
            ++p;
        } else {
            width = ReadNumber(p);
        }
        std::int64_t precision = -1;
        if (*p == '.') {
            ++p;
            if (*p == '*') {
                precision = va_arg(m_Args, int);
                ++p;
            } else {
                precision = ReadNumber(p);
            }
        }
        bool wide64 = false;
        bool wideText = false;
        for (;;) {
            if (std::strncmp(p, "I64", 3) == 0) {
                wide64 = true;
                m_Wide64At.push_back(static_cast<std::size_t>(p - m_pFormat));
                p += 3;
            } else if (*p != '\0' && std::strchr("hlFLN", *p) != nullptr) {
                // The C library reads "F" and "N" as conversions and "L" as a
                // long double: its arguments no longer line up with ours.
                m_Trusted = m_Trusted && std::strchr("FLN", *p) == nullptr;
                wideText = wideText || *p == 'l';
                ++p;
            } else {
                break;
            }
        }
        const char conversion = *p;
        if (conversion != '\0') {
            ++p;
        }
        const std::int64_t numeric = width + std::max<std::int64_t>(precision, 0);
        switch (conversion) {
            case 'c':
            case 'C':
                va_arg(m_Args, int);
                return extra + TextRule(2, width, precision);
            case 's':
            case 'S':
                return extra +
                       TextRule(TextLength(conversion == 'S' || wideText), width, precision);
            case 'd':
            case 'i':
            case 'u':
            case 'o':
            case 'x':
            case 'X':
                if (wide64) {
                    va_arg(m_Args, long long);
                } else {
                    va_arg(m_Args, int);
                }
                return extra + std::max<std::int64_t>(numeric, 32);
            case 'e':
            case 'g':
            case 'G':
                va_arg(m_Args, double);
                return extra + std::max<std::int64_t>(numeric, 400);
            case 'f':
                return extra + FixedLength(width, precision);
            case 'p':
                va_arg(m_Args, void*);
                return extra + std::max<std::int64_t>(numeric, 32);
            case 'n':
                va_arg(m_Args, void*);
                return extra;
            default:
                // Unknown to the estimate: its own text, and no argument. The
                // C library may take one, so later texts aren't read.
                m_Trusted = false;
                return p - spec;
        }
    }

    // A text's length, at least 1; 6 for a null pointer. Once the arguments
    // may not line up, a pointer isn't followed: the second run corrects
    // the estimate.
    std::int64_t TextLength(bool wide) {
        const void* text = va_arg(m_Args, const void*);
        if (text == nullptr) {
            return 6;
        }
        if (!m_Trusted) {
            return 1;
        }
        const std::size_t length = wide ? std::wcslen(static_cast<const wchar_t*>(text))
                                        : std::strlen(static_cast<const char*>(text));
        return std::max<std::int64_t>(static_cast<std::int64_t>(length), 1);
    }

    // The true length of a fixed-point number.
    std::int64_t FixedLength(std::int64_t width, std::int64_t precision) {
        const double value = va_arg(m_Args, double);
        const int length = std::snprintf(
            nullptr, 0, "%*.*f", static_cast<int>(std::min<std::int64_t>(width, 1 << 20)),
            static_cast<int>(std::clamp<std::int64_t>(precision < 0 ? 6 : precision, 0, 1 << 20)),
            value);
        return std::max(length, 0);
    }

    static std::int64_t TextRule(std::int64_t estimate, std::int64_t width,
                                 std::int64_t precision) {
        if (precision > 0) {
            estimate = std::min(estimate, precision);
        }
        return std::max(estimate, width);
    }

    const char* m_pFormat;
    va_list m_Args;
    bool m_Trusted = true;
    std::vector<std::size_t> m_Wide64At;
};

}  // namespace

Chaine& Chaine::FormatV(const char* format, va_list args) {
    if (format == nullptr) {
        Empty();
        return *this;
    }
    Estimate first(format, args);
    const std::int64_t estimate = first.Length();
    const std::string spelled = first.SpelledAlike() ? std::string() : first.LibraryFormat();
    const char* library = first.SpelledAlike() ? format : spelled.c_str();

    // The text goes into a buffer of its own: the format and the arguments
    // may point into this value.
    Chaine out;
    int room = static_cast<int>(std::min(estimate, kLargestFirstBuffer)) + 1;
    for (;;) {
        char* text = out.SetLength(room - 1);
        va_list pass;
        va_copy(pass, args);
        const int written = std::vsnprintf(text, static_cast<std::size_t>(room), library, pass);
        va_end(pass);
        if (written < 0) {
            Empty();
            return *this;
        }
        if (written < room) {
            break;
        }
        room = written + 1;
    }
    const auto length = static_cast<int>(std::strlen(out));
    if (length == 0) {
        Empty();
        return *this;
    }
    return Assign(Chaine(out.c_str(), length));
}

Chaine& Chaine::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
    return *this;
}
