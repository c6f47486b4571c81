#include "os/posix/wildcard.h"

#include <cctype>

namespace nvk::os::posix {

bool HasWildcards(std::string_view pattern) {
    return pattern.find_first_of("*?") != std::string_view::npos;
}

bool MatchWildcard(std::string_view pattern, std::string_view name) {
    if (pattern == "*.*") {
        pattern = "*";
    }
    // Greedy matching with one point of return: the last "*" seen.
    std::size_t p = 0;
    std::size_t n = 0;
    std::size_t star = std::string_view::npos;
    std::size_t resume = 0;
    auto same = [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) ==
               std::tolower(static_cast<unsigned char>(b));
    };
    while (n < name.size()) {
        if (p < pattern.size() && pattern[p] == '*') {
            star = p++;
            resume = n;
        } else if (p < pattern.size() && (pattern[p] == '?' || same(pattern[p], name[n]))) {
            ++p;
            ++n;
        } else if (star != std::string_view::npos) {
            p = star + 1;
            n = ++resume;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == '*') {
        ++p;
    }
    return p == pattern.size();
}

}  // namespace nvk::os::posix
