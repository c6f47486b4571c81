// Changes of a Chaine in place: case mapping and trimming. Every change makes
// the buffer the value's own first.
#include <algorithm>
#include <bit>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "core/copy_bytes.h"
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

// Hands `keep` the places, from `from` on and each behind the one before, at
// which the n >= 2 bytes of `needle` stand in the `length` bytes of `text`,
// looking at sixteen starts at a time and keeping those that show the
// needle's first and last bytes. A replacement meets many places close
// together, where a search for each would cost a call apiece. Returns where
// a search for the remaining places starts: behind the last place kept and
// every start looked at.
template <class Keep>
int KeepBlockHits(const char* text, int length, const char* needle, int n, int from, Keep keep) {
    int next = from;      // where the next place may start
    int searched = from;  // every start before it has been looked at
#if defined(__SSE2__)
    const __m128i first = _mm_set1_epi8(needle[0]);
    const __m128i last = _mm_set1_epi8(needle[n - 1]);
    // Both loads stay within the text: the block's last start is at most
    // length - n - 15, so its last byte's block ends on the text's last byte.
    for (; searched + 16 <= length - n + 1; searched += 16) {
        const auto* at = text + searched;
        const __m128i starts = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const __m128i ends = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + n - 1));
        auto mask = static_cast<unsigned>(_mm_movemask_epi8(
            _mm_and_si128(_mm_cmpeq_epi8(starts, first), _mm_cmpeq_epi8(ends, last))));
        for (; mask != 0; mask &= mask - 1) {
            const int start = searched + std::countr_zero(mask);
            if (start >= next && (n == 2 || std::memcmp(text + start + 1, needle + 1,
                                                        static_cast<std::size_t>(n - 2)) == 0)) {
                keep(start);
                next = start + n;
            }
        }
    }
#endif
    return std::max(next, searched);
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

namespace {

// An argument that lies in the value's own text is copied first, since the
// change may rewrite or release that text.
class StableText {
public:
    StableText(const char* text, const Chaine& value) : m_pText(text == nullptr ? "" : text) {
        const char* own = value.c_str();
        if (m_pText >= own && m_pText <= own + value.Length()) {
            m_Copy = m_pText;
            m_pText = m_Copy.c_str();
        }
    }
    const char* Get() const { return m_pText; }
    int Length() const { return static_cast<int>(std::strlen(m_pText)); }

private:
    const char* m_pText;
    Chaine m_Copy;
};

bool IsAlnum(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

template <class Drop>
Chaine& Chaine::RemoveWhere(Drop drop) {
    const int length = Length();
    int first = 0;
    while (first < length && !drop(m_pText[first])) {
        ++first;
    }
    if (first == length) {
        return *this;
    }
    char* text = SetLength(length);  // a buffer of our own
    int kept = first;
    for (int i = first; i < length; ++i) {
        if (!drop(text[i])) {
            text[kept++] = text[i];
        }
    }
    SetLength(kept);
    return *this;
}

int Chaine::Replace(const char* old, const char* with, bool noCase, int start) {
    if (with == nullptr || with[0] == '\0') {
        Remove(old, noCase, start);
        return 0;
    }
    if (old == nullptr || old[0] == '\0' || std::strcmp(old, with) == 0) {
        return 0;
    }
    const StableText from(old, *this);
    const StableText to(with, *this);
    const int oldLength = from.Length();
    const int newLength = to.Length();
    int hit = FindBytes(from.Get(), oldLength, noCase, start);
    if (hit < 0) {
        return 0;
    }
    if (oldLength == newLength) {
        Take(nvk::MakeUnique(Buffer()));
        for (; hit >= 0; hit = FindBytes(from.Get(), oldLength, noCase, hit + 1)) {
            std::memcpy(m_pText + hit, to.Get(), static_cast<std::size_t>(newLength));
        }
        return 0;
    }
    // The next hit from `pos` on: with case, searched inline.
    const int length = Length();
    const char* const text = m_pText;
    const auto next = [&](int pos) {
        return noCase || oldLength < 2 ? FindBytes(from.Get(), oldLength, noCase, pos)
                                       : nvk::SearchBytes(text, length, from.Get(), oldLength, pos);
    };
    // The places of the first kHeld hits are kept on the stack; later ones,
    // rare, are found again while the result is written.
    constexpr int kHeld = 256;
    int held[kHeld];
    int count = 0;
    const auto keep = [&](int at) {
        if (count < kHeld) {
            held[count] = at;
        }
        ++count;
    };
    if (!noCase && oldLength >= 2) {
        hit = next(KeepBlockHits(text, length, from.Get(), oldLength, hit, keep));
    }
    for (; hit >= 0; hit = next(hit + oldLength)) {
        keep(hit);
    }
    Chaine result;
    char* out = result.SetLength(length + count * (newLength - oldLength));
    int last = 0;
    for (int k = 0; k < count; ++k) {
        const int at = k < kHeld ? held[k] : next(last);
        nvk::CopyBytes(out, m_pText + last, static_cast<std::size_t>(at - last));
        out += at - last;
        nvk::CopyBytes(out, to.Get(), static_cast<std::size_t>(newLength));
        out += newLength;
        last = at + oldLength;
    }
    std::memcpy(out, m_pText + last, static_cast<std::size_t>(length - last));
    Assign(result);
    return 0;
}

int Chaine::ReplaceFirst(const char* old, const char* with, bool noCase, int start) {
    const StableText to(with, *this);
    const int hit = Find(old, noCase, start);
    if (hit >= 0) {
        ReplaceRange(hit, old == nullptr ? 0 : static_cast<int>(std::strlen(old)), to.Get());
    }
    return hit;
}

Chaine& Chaine::Remove(const char* old, bool noCase, int start) {
    const StableText from(old, *this);
    const int n = from.Length();
    if (n == 0 || Find(from.Get(), noCase, start) < 0) {
        return *this;
    }
    const int length = Length();
    char* text = SetLength(length);  // a buffer of our own
    const auto matches = [&](int i) {
        for (int k = 0; k < n; ++k) {
            if (text[i + k] != from.Get()[k] &&
                !(noCase && nvk::FoldUpper(text[i + k]) == nvk::FoldUpper(from.Get()[k]))) {
                return false;
            }
        }
        return true;
    };
    int kept = start;
    for (int i = start; i < length;) {
        if (i + n <= length && matches(i)) {
            i += n;
        } else {
            text[kept++] = text[i++];
        }
    }
    SetLength(kept);
    return *this;
}

Chaine& Chaine::ReplaceChar(char c, char with, int start) {
    int hit = ReplaceFirstChar(c, with, start);
    while (hit >= 0) {
        hit = ReplaceFirstChar(c, with, hit + 1);
    }
    return *this;
}

int Chaine::ReplaceFirstChar(char c, char with, int start) {
    const int hit = FindChar(c, false, start);
    if (hit < 0 || hit >= Length()) {
        return -1;
    }
    SetLength(Length())[hit] = with;
    return hit;
}

Chaine& Chaine::RemoveChar(char c) {
    return RemoveWhere([c](char x) { return x == c; });
}

Chaine& Chaine::KeepOnly(const char* set) {
    return RemoveWhere([set](char x) { return !InSet(set, x); });
}

Chaine& Chaine::RemoveSet(const char* set) {
    return RemoveWhere([set](char x) { return InSet(set, x); });
}

Chaine& Chaine::KeepAlnum() {
    return RemoveWhere([](char x) { return !IsAlnum(x); });
}

Chaine& Chaine::Reverse() {
    const auto n = static_cast<int>(std::strlen(m_pText));
    if (n > 1) {
        char* text = SetLength(Length());
        std::reverse(text, text + n);
    }
    return *this;
}

Chaine& Chaine::Quote(char c) {
    const int length = Length();
    Chaine result;
    char* out = result.SetLength(length + 2 + CountChar(c));
    *out++ = c;
    for (int i = 0; i < length; ++i) {
        if (m_pText[i] == c) {
            *out++ = c;
        }
        *out++ = m_pText[i];
    }
    *out = c;
    return Assign(result);
}

Chaine& Chaine::Unquote(char c) {
    const int length = Length();
    if (length == 2 && m_pText[0] == c && m_pText[1] == c) {
        Empty();
        return *this;
    }
    if (FindChar(c) < 0 || FindChar(c) >= length) {
        return *this;
    }
    char* text = SetLength(length);  // a buffer of our own
    int kept = 0;
    for (int i = 0; i < length; ++i) {
        if (text[i] != c) {
            text[kept++] = text[i];
        } else if (i + 1 < length && text[i + 1] == c) {
            text[kept++] = c;
            ++i;
        }
    }
    SetLength(kept);
    return *this;
}
