// Wildcard matching of a Chaine: "*" any run, "?" any character, "#" a digit,
// "[...]" a set with "!" and ranges, "`" a literal next character.
//
// Every element but "*" stands for exactly one character, so the match keeps
// only the last "*" to fall back to: when the rest fails, that "*" takes one
// more character. Which "*" took what doesn't change whether the whole text
// matches, and the walk costs at most text x pattern steps, whatever the
// pattern.
#include <cstdint>
#include <cstring>

#include "nvk/core/case_tables.h"
#include "nvk/core/chaine.h"

namespace {

class Pattern {
public:
    Pattern(const char* text, bool noCase)
        : m_pText(text == nullptr ? "" : text),
          m_Length(static_cast<int>(std::strlen(m_pText))),
          m_NoCase(noCase) {}

    int Length() const { return m_Length; }
    bool IsStar(int at) const { return at < m_Length && m_pText[at] == '*'; }

    // Whether the element at `at` matches c; `next` receives the position
    // behind the element.
    bool Matches(int at, char c, int& next) const {
        const char element = m_pText[at];
        next = at + 1;
        switch (element) {
            case '?':
                return true;
            case '#':
                return c >= '0' && c <= '9';
            case '[':
                return MatchesSet(at + 1, c, next);
            case '`':
                return Fold(ReadLiteral(at, next)) == Fold(c);
            default:
                return Fold(element) == Fold(c);
        }
    }

private:
    // A signed byte, folded through UpperTable in the no-case form.
    std::int8_t Fold(char c) const {
        return static_cast<std::int8_t>(m_NoCase ? nvk::FoldUpper(c) : c);
    }

    // The character at `at`, or the one behind a "`" that has one.
    char ReadLiteral(int at, int& next) const {
        if (m_pText[at] == '`' && at + 1 < m_Length) {
            next = at + 2;
            return m_pText[at + 1];
        }
        next = at + 1;
        return m_pText[at];
    }

    // The set starts at `at`, behind its "["; an unclosed set runs to the end
    // of the pattern.
    bool MatchesSet(int at, char c, int& next) const {
        const bool negate = at < m_Length && m_pText[at] == '!';
        at += negate ? 1 : 0;
        const std::int8_t value = Fold(c);
        bool found = false;
        while (at < m_Length && m_pText[at] != ']') {
            const std::int8_t low = Fold(ReadLiteral(at, at));
            std::int8_t high = low;
            if (at + 1 < m_Length && m_pText[at] == '-' && m_pText[at + 1] != ']') {
                high = Fold(ReadLiteral(at + 1, at));
            }
            found = found || (value >= low && value <= high);
        }
        next = at < m_Length ? at + 1 : at;
        return found != negate;
    }

    const char* m_pText;
    int m_Length;
    bool m_NoCase;
};

// The whole of text[0, n) against the pattern. An empty text matches
// nothing: the count of matched characters would be 0, which means no match.
bool MatchWhole(const char* text, int n, const Pattern& pattern) {
    if (n <= 0) {
        return false;
    }
    int t = 0;
    int p = 0;
    int starPattern = -1;  // the pattern behind the last "*" met
    int starText = 0;      // where that "*" stopped taking characters
    while (t < n) {
        if (pattern.IsStar(p)) {
            while (pattern.IsStar(p)) {
                ++p;
            }
            if (p == pattern.Length()) {
                return true;  // a final "*" takes the rest
            }
            starPattern = p;
            starText = t;
            continue;
        }
        int next = 0;
        if (p < pattern.Length() && pattern.Matches(p, text[t], next)) {
            p = next;
            ++t;
        } else if (starPattern >= 0) {
            p = starPattern;
            t = ++starText;
        } else {
            return false;
        }
    }
    while (pattern.IsStar(p)) {
        ++p;
    }
    return p == pattern.Length();
}

}  // namespace

bool Chaine::Like(const char* pattern, int pos) const {
    const int length = Length();
    return pos >= 0 && pos < length + 1 &&
           MatchWhole(m_pText + pos, length - pos, Pattern(pattern, false));
}

bool Chaine::LikeNoCase(const char* pattern, int pos) const {
    const int length = Length();
    return pos >= 0 && pos < length + 1 &&
           MatchWhole(m_pText + pos, length - pos, Pattern(pattern, true));
}
