// Searches in a Chaine. Positions are signed and -1 means not found; a start
// out of range finds nothing.
#include <algorithm>
#include <cstring>

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

int Chaine::FindBytes(const char* text, int n, bool noCase, int start) const {
    const int length = Length();
    if (start < 0 || start > length - n) {
        return -1;
    }
    if (n == 0) {
        return start;
    }
    if (!noCase) {
        if (n == 1) {
            const void* hit =
                std::memchr(m_pText + start, text[0], static_cast<std::size_t>(length - start));
            return hit == nullptr ? -1 : static_cast<int>(static_cast<const char*>(hit) - m_pText);
        }
        return nvk::SearchBytes(m_pText, length, text, n, start);
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

namespace {

// A 256-entry membership table, built on the stack per call so that the scan
// does one load per character.
class CharSet {
public:
    explicit CharSet(const char* set) {
        for (const char* p = set; p != nullptr && *p != '\0'; ++p) {
            m_In[static_cast<std::uint8_t>(*p)] = true;
        }
    }
    bool Has(char c) const { return m_In[static_cast<std::uint8_t>(c)]; }

private:
    bool m_In[256] = {};
};

bool Same(char a, char b, bool noCase) {
    return a == b || (noCase && FoldUpper(a) == FoldUpper(b));
}

}  // namespace

int Chaine::FindOneOf(const char* set, int start) const {
    const CharSet members(set);
    const int length = Length();
    for (int i = std::max(start, 0); i < length; ++i) {
        if (members.Has(m_pText[i])) {
            return i;
        }
    }
    return -1;
}

bool Chaine::ConsistsOf(const char* set) const {
    const CharSet members(set);
    const int length = Length();
    for (int i = 0; i < length; ++i) {
        if (!members.Has(m_pText[i])) {
            return false;
        }
    }
    return true;
}

int Chaine::FindCharQuoted(char c, char quote, bool noCase, int start) const {
    const int size = Length() + 1;
    bool inside = false;
    for (int i = std::max(start, 0); i < size; ++i) {
        const char here = m_pText[i];
        if (!inside) {
            if (Same(here, c, noCase)) {
                return i;
            }
            inside = here == quote;
        } else if (here == quote) {
            if (i + 1 < size && m_pText[i + 1] == quote) {
                ++i;
            } else {
                inside = false;
            }
        }
    }
    return -1;
}

int Chaine::CountChar(char c, bool noCase) const {
    const int length = Length();
    int count = 0;
    for (int i = 0; i < length; ++i) {
        count += Same(m_pText[i], c, noCase) ? 1 : 0;
    }
    return count;
}

Chaine Chaine::GetBracketed(char open, char close, int n, bool noCase) const {
    if (n == 0) {
        const int first = FindChar(open, noCase);
        return first < 0 ? *this : Left(first);
    }
    const int size = Length() + 1;
    int depth = 0;
    int opened = 0;
    int pairs = 0;
    for (int i = 0; i < size && n > 0; ++i) {
        if (Same(m_pText[i], open, noCase)) {
            if (depth++ == 0) {
                opened = i;
            }
        } else if (Same(m_pText[i], close, noCase) && depth > 0) {
            if (--depth == 0 && ++pairs == n) {
                return Mid(opened + 1, i - opened - 1);
            }
        }
    }
    return Chaine();
}
