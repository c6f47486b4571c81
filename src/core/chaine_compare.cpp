// Comparison of Chaine values: raw, through the case tables, and by prefix.
#include <algorithm>
#include <cstring>

#include "nvk/core/case_tables.h"
#include "nvk/core/chaine.h"

namespace {

int Sign(int value) {
    return (value > 0) - (value < 0);
}

// Compares `size` bytes of each side through `fold`, then the sizes. `Byte`
// is the type the folded bytes are compared as.
template <class Byte>
int CompareFolded(const char* left, std::uint32_t leftSize, const char* right,
                  std::uint32_t rightSize, const nvk::CaseTable& fold) {
    const std::uint32_t size = std::min(leftSize, rightSize);
    for (std::uint32_t i = 0; i < size; ++i) {
        if (left[i] == right[i]) {
            continue;
        }
        const auto a = static_cast<Byte>(fold[static_cast<std::uint8_t>(left[i])]);
        const auto b = static_cast<Byte>(fold[static_cast<std::uint8_t>(right[i])]);
        if (a != b) {
            return a < b ? -1 : 1;
        }
    }
    return leftSize == rightSize ? 0 : (leftSize < rightSize ? -1 : 1);
}

bool EqualFolded(const char* left, const char* right, std::uint32_t n) {
    for (std::uint32_t i = 0; i < n; ++i) {
        if (left[i] != right[i] && nvk::FoldUpper(left[i]) != nvk::FoldUpper(right[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace

int Chaine::Compare(const Chaine& other) const {
    if (m_pText == other.m_pText) {
        return 0;
    }
    const std::uint32_t leftSize = Buffer()->Size;
    const std::uint32_t rightSize = other.Buffer()->Size;
    const int bytes = std::memcmp(m_pText, other.m_pText, std::min(leftSize, rightSize));
    if (bytes != 0) {
        return Sign(bytes);
    }
    return leftSize == rightSize ? 0 : (leftSize < rightSize ? -1 : 1);
}

int Chaine::CompareBytes(const Chaine& other) const {
    if (m_pText == other.m_pText) {
        return 0;
    }
    static constexpr nvk::CaseTable kIdentity = nvk::detail::MakeCaseTable({});
    return CompareFolded<std::uint8_t>(m_pText, Buffer()->Size, other.m_pText, other.Buffer()->Size,
                                       kIdentity);
}

int Chaine::CompareNoCase(const Chaine& other) const {
    if (m_pText == other.m_pText) {
        return 0;
    }
    return CompareFolded<std::int8_t>(m_pText, Buffer()->Size, other.m_pText, other.Buffer()->Size,
                                      nvk::UpperTable);
}

int Chaine::CompareNoCase(const char* other) const {
    if (other == nullptr) {
        other = "";
    }
    const auto otherSize = static_cast<std::uint32_t>(std::strlen(other) + 1);
    return CompareFolded<std::int8_t>(m_pText, Buffer()->Size, other, otherSize, nvk::UpperTable);
}

int Chaine::CompareLower(const Chaine& other) const {
    if (m_pText == other.m_pText) {
        return 0;
    }
    return CompareFolded<std::uint8_t>(m_pText, Buffer()->Size, other.m_pText, other.Buffer()->Size,
                                       nvk::LowerTable);
}

bool Chaine::EqualsNoCase(const Chaine& other) const {
    const std::uint32_t size = Buffer()->Size;
    return m_pText == other.m_pText ||
           (size == other.Buffer()->Size && EqualFolded(m_pText, other.m_pText, size));
}

bool Chaine::EqualsChar(char c) const {
    return Length() == 1 && nvk::FoldUpper(m_pText[0]) == nvk::FoldUpper(c);
}

bool Chaine::StartsWithNoCase(const Chaine& prefix) const {
    // What Left(prefix length) followed by EqualsNoCase answers, without the copy.
    const int n = prefix.Length();
    return Length() >= n && EqualFolded(m_pText, prefix.m_pText, static_cast<std::uint32_t>(n));
}

bool Chaine::MatchAt(const Chaine& other, int n, bool noCase, int pos) const {
    if (n < 0 || pos < 0 ||
        static_cast<std::int64_t>(Buffer()->Size) <= static_cast<std::int64_t>(n) + pos) {
        return false;
    }
    if (n > other.Length()) {
        return false;
    }
    const char* here = m_pText + pos;
    const auto count = static_cast<std::uint32_t>(n);
    return noCase ? EqualFolded(here, other.m_pText, count)
                  : std::memcmp(here, other.m_pText, count) == 0;
}
