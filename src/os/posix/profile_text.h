// An INI text as the profile functions see it, held as its lines so that a
// change rewrites the lines it touches and leaves the others as they were.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nvk::os::posix {

class ProfileText {
public:
    explicit ProfileText(std::string_view bytes);
    std::string Bytes() const;

    // Names in the order of the file, each once.
    std::vector<std::string> SectionNames() const;
    // A line without '=' is no key: Windows lists it only among the lines.
    std::vector<std::string> Keys(std::string_view section) const;
    // "key=value", or the key alone for a line without '='.
    std::vector<std::string> SectionLines(std::string_view section) const;
    // The value as written, blanks around it dropped; none for a missing key.
    std::optional<std::string> Value(std::string_view section, std::string_view key) const;

    // Each returns whether the text changed.
    bool Set(std::string_view section, std::string_view key, std::string_view value);
    bool DeleteKey(std::string_view section, std::string_view key);
    bool DeleteSection(std::string_view section);
    bool ReplaceSection(std::string_view section, const std::vector<std::string>& lines);

private:
    struct Line {
        std::string text;
        std::string end;  // "\r\n", "\n", or "" for a last line without one
    };
    static constexpr std::size_t npos = std::string::npos;

    std::size_t FindSection(std::string_view section, std::size_t from = 0) const;
    // One past the last line of the section whose header is at `header`.
    std::size_t SectionEnd(std::size_t header) const;
    // One past the last key of the section: where a new key goes, so that
    // the blank lines and comments before the next section stay with it.
    std::size_t SectionContentEnd(std::size_t header) const;
    std::size_t FindKey(std::size_t header, std::string_view key, std::size_t from = 0) const;
    void Insert(std::size_t at, std::string text);

    std::vector<Line> lines_;
};

}  // namespace nvk::os::posix
