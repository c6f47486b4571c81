// Searches in a Chaine. Positions are signed and -1 means not found; a start
// out of range finds nothing.
#include <cstring>
#include <string_view>

#include "nvk/core/case_tables.h"
#include "nvk/core/chaine.h"

using nvk::FoldUpper;

int Chaine::FindChar(char c, bool noCase, int start) const {
    const int size = Length() + 1;
    if (start < 0 || start >= size) {
        return -1;
    }
    if (!noCase) {
        const void* hit = std::memchr(m_pText + start, c, static_cast<std::size_t>(size - start));
        return hit == nullptr ? -1 : static_cast<int>(static_cast<const char*>(hit) - m_pText);
    }
    const std::uint8_t folded = FoldUpper(c);
    for (int i = start; i < size; ++i) {
        if (FoldUpper(m_pText[i]) == folded) {
            return i;
        }
    }
    return -1;
}

int Chaine::Find(const char* text, bool noCase, int start) const {
    const int length = Length();
    const int n = text == nullptr ? 0 : static_cast<int>(std::strlen(text));
    if (start < 0 || start > length - n) {
        return -1;
    }
    if (!noCase) {
        const std::string_view haystack(m_pText, static_cast<std::size_t>(length));
        const auto hit = haystack.find(std::string_view(text, static_cast<std::size_t>(n)),
                                       static_cast<std::size_t>(start));
        return hit == std::string_view::npos ? -1 : static_cast<int>(hit);
    }
    if (n == 0) {
        return start;
    }
    const std::uint8_t first = FoldUpper(text[0]);
    for (int i = start; i <= length - n; ++i) {
        if (FoldUpper(m_pText[i]) != first) {
            continue;
        }
        int k = 1;
        while (k < n && FoldUpper(m_pText[i + k]) == FoldUpper(text[k])) {
            ++k;
        }
        if (k == n) {
            return i;
        }
    }
    return -1;
}
