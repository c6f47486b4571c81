#include "os/posix/wildcard.h"

#include <string>
#include <vector>

#include "os/posix/names.h"

namespace nvk::os::posix {

namespace {

// The DOS forms a pattern's characters take, as Windows rewrites them
// before it matches: a "*" before a dot stops at the name's last dot, a "?"
// may match nothing at a dot or the end, and a dot before a wildcard or at
// the end may match the end of the name.
constexpr char kDosStar = '<';
constexpr char kDosQuestion = '>';
constexpr char kDosDot = '"';

std::string DosForm(std::string_view pattern) {
    std::string form(pattern);
    for (std::size_t i = 0; i < form.size(); ++i) {
        const char next = i + 1 < form.size() ? pattern[i + 1] : '\0';
        if (form[i] == '?') {
            form[i] = kDosQuestion;
        } else if (form[i] == '*' && next == '.') {
            form[i] = kDosStar;
        } else if (form[i] == '.' && (next == '?' || next == '*' || next == '\0')) {
            form[i] = kDosDot;
        }
    }
    return form;
}

}  // namespace

bool HasWildcards(std::string_view pattern) {
    return pattern.find_first_of("*?") != std::string_view::npos;
}

bool MatchWildcard(std::string_view pattern, std::string_view name) {
    if (pattern == "*.*" || pattern == "*") {
        return true;
    }
    // "." and ".." answer only to the patterns of every name, and to
    // themselves.
    if (name == "." || name == "..") {
        return pattern == name;
    }
    const std::string form = DosForm(pattern);
    const std::size_t lastDot = name.rfind('.');
    // matches[p][n]: the form from p matches the name from n. Filled from the
    // ends, so that no pattern costs more than its length times the name's.
    const std::size_t width = name.size() + 1;
    std::vector<char> matches((form.size() + 1) * width, 0);
    auto at = [&](std::size_t p, std::size_t n) -> char& { return matches[p * width + n]; };
    at(form.size(), name.size()) = 1;
    for (std::size_t p = form.size(); p-- > 0;) {
        for (std::size_t n = name.size() + 1; n-- > 0;) {
            const bool more = n < name.size();
            const char c = more ? name[n] : '\0';
            bool match = false;
            switch (form[p]) {
                case '*':
                    match = at(p + 1, n) || (more && at(p, n + 1));
                    break;
                case kDosStar:
                    match = at(p + 1, n) || (more && (c != '.' || lastDot != n) && at(p, n + 1));
                    break;
                case kDosQuestion:
                    match = (more && c != '.') ? at(p + 1, n + 1) : at(p + 1, n);
                    break;
                case kDosDot:
                    match = more ? c == '.' && at(p + 1, n + 1) : at(p + 1, n);
                    break;
                default:
                    match = more && FoldCase(form[p]) == FoldCase(c) && at(p + 1, n + 1);
                    break;
            }
            at(p, n) = match ? 1 : 0;
        }
    }
    return at(0, 0) != 0;
}

}  // namespace nvk::os::posix
