// Changes of a Chaine in place: case mapping and trimming. Every change makes
// the buffer the value's own first.
#include <cstring>

#include "nvk/core/case_tables.h"
#include "nvk/core/chaine.h"

namespace {

void MapBytes(char* text, int length, const nvk::CaseTable& table) {
    for (int i = 0; i < length; ++i) {
        text[i] = static_cast<char>(table[static_cast<std::uint8_t>(text[i])]);
    }
}

// Whether `c` is one of the characters of the terminated `set`; the
// terminator is not one of them.
bool InSet(const char* set, char c) {
    return c != '\0' && set != nullptr && std::strchr(set, c) != nullptr;
}

}  // namespace

void Chaine::KeepRange(int pos, int count) {
    if (pos == 0 && count == Length()) {
        return;
    }
    Chaine kept(m_pText + pos, count);
    Assign(kept);
}

template <class Strip>
Chaine& Chaine::TrimLeftWhile(Strip strip) {
    const int length = Length();
    int first = 0;
    while (first < length && strip(m_pText[first])) {
        ++first;
    }
    KeepRange(first, length - first);
    return *this;
}

template <class Strip>
Chaine& Chaine::TrimRightWhile(Strip strip) {
    int end = Length();
    while (end > 0 && strip(m_pText[end - 1])) {
        --end;
    }
    KeepRange(0, end);
    return *this;
}

Chaine& Chaine::Upper() {
    Take(nvk::MakeUnique(Buffer()));
    MapBytes(m_pText, Length(), nvk::UpperTable);
    return *this;
}

Chaine& Chaine::Lower() {
    Take(nvk::MakeUnique(Buffer()));
    MapBytes(m_pText, Length(), nvk::LowerTable);
    return *this;
}

Chaine& Chaine::TrimLeft(char c) {
    return TrimLeftWhile([c](char x) { return x == c; });
}

Chaine& Chaine::TrimRight(char c) {
    return TrimRightWhile([c](char x) { return x == c; });
}

Chaine& Chaine::TrimLeft(const char* set) {
    return TrimLeftWhile([set](char x) { return InSet(set, x); });
}

Chaine& Chaine::TrimRight(const char* set) {
    return TrimRightWhile([set](char x) { return InSet(set, x); });
}
