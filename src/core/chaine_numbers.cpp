// Numbers and hexadecimal bytes in a Chaine.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "nvk/core/case_tables.h"
#include "nvk/core/chaine.h"

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The digits, a value of the module made at first use.
const Chaine& HexDigits() {
    static const Chaine digits("0123456789ABCDEF");
    return digits;
}

}  // namespace

int Chaine::ToInt() const {
    Chaine digits(*this);
    digits.RemoveChar(' ');
    return std::atoi(digits);
}

bool Chaine::IsInteger(int maxDigits) const {
    const char* p = m_pText;
    while (*p == ' ') {
        ++p;
    }
    const char* first = p;
    if (!IsDigit(*p) && *p != '-' && *p != '+') {
        return false;
    }
    ++p;
    while (IsDigit(*p)) {
        ++p;
    }
    if (p - first > maxDigits) {
        return false;
    }
    while (*p == ' ') {
        ++p;
    }
    return p == m_pText + Length();
}

Chaine& Chaine::FromInt(int n) {
    char text[16];
    std::snprintf(text, sizeof text, "%d", n);
    return Assign(text);
}

Chaine& Chaine::FromHex(const void* bytes, int n) {
    if (bytes == nullptr || n <= 0) {
        Empty();
        return *this;
    }
    const char* digits = HexDigits();
    const auto* in = static_cast<const std::uint8_t*>(bytes);
    Chaine result;
    char* out = result.SetLength(2 * n);
    for (int i = 0; i < n; ++i) {
        out[2 * i] = digits[in[i] >> 4];
        out[2 * i + 1] = digits[in[i] & 15];
    }
    return Assign(result);
}

int Chaine::ToBytes(void* dest, int size) const {
    const int available = Length() / 2;
    size = std::max(size, 0);
    if (dest == nullptr) {
        return std::min(available, size);
    }
    auto* out = static_cast<std::uint8_t*>(dest);
    if (size > available) {
        std::memset(out, 0, static_cast<std::size_t>(size));
        size = available;
    }
    const Chaine& digits = HexDigits();
    const auto value = [&](char c) {
        return digits.FindChar(static_cast<char>(nvk::FoldUpper(c)));
    };
    for (int i = 0; i < size; ++i) {
        out[i] = static_cast<std::uint8_t>(value(m_pText[2 * i]) * 16 + value(m_pText[2 * i + 1]));
    }
    return size;
}
