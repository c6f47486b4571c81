#include "os/posix/profile_text.h"

#include "os/posix/names.h"

namespace nvk::os::posix {

namespace {

enum class Kind { Blank, Comment, Section, Entry };

struct Parsed {
    Kind kind = Kind::Blank;
    std::string_view name;   // of a section, or the key of an entry
    std::string_view value;  // of an entry
    bool hasValue = false;
};

std::string_view Trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

Parsed Parse(std::string_view line) {
    Parsed parsed;
    line = Trim(line);
    if (line.empty()) {
        return parsed;
    }
    if (line.front() == ';') {
        parsed.kind = Kind::Comment;
    } else if (line.front() == '[') {
        // A header without its ']' still opens the section named by the rest.
        parsed.kind = Kind::Section;
        parsed.name = Trim(line.substr(1, line.find(']') - 1));
    } else {
        parsed.kind = Kind::Entry;
        const std::size_t equal = line.find('=');
        parsed.name = Trim(line.substr(0, equal));
        if (equal != std::string_view::npos) {
            parsed.value = Trim(line.substr(equal + 1));
            parsed.hasValue = true;
        }
    }
    return parsed;
}

}  // namespace

ProfileText::ProfileText(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t newline = bytes.find('\n');
        Line line;
        if (newline == std::string_view::npos) {
            line.text = bytes;
            bytes = {};
        } else {
            const bool crlf = newline > 0 && bytes[newline - 1] == '\r';
            line.text = bytes.substr(0, crlf ? newline - 1 : newline);
            line.end = crlf ? "\r\n" : "\n";
            bytes.remove_prefix(newline + 1);
        }
        lines_.push_back(std::move(line));
    }
}

std::string ProfileText::Bytes() const {
    std::string bytes;
    for (const Line& line : lines_) {
        bytes += line.text;
        bytes += line.end;
    }
    return bytes;
}

std::vector<std::string> ProfileText::SectionNames() const {
    std::vector<std::string> names;
    for (const Line& line : lines_) {
        const Parsed parsed = Parse(line.text);
        if (parsed.kind != Kind::Section) {
            continue;
        }
        bool seen = false;
        for (const std::string& name : names) {
            seen = seen || SameName(name, parsed.name);
        }
        if (!seen) {
            names.emplace_back(parsed.name);
        }
    }
    return names;
}

std::vector<std::string> ProfileText::Keys(std::string_view section) const {
    std::vector<std::string> keys;
    const std::size_t header = FindSection(section);
    if (header == npos) {
        return keys;
    }
    for (std::size_t i = header + 1, end = SectionEnd(header); i < end; ++i) {
        const Parsed parsed = Parse(lines_[i].text);
        if (parsed.kind == Kind::Entry && parsed.hasValue) {
            keys.emplace_back(parsed.name);
        }
    }
    return keys;
}

std::vector<std::string> ProfileText::SectionLines(std::string_view section) const {
    std::vector<std::string> result;
    const std::size_t header = FindSection(section);
    if (header == npos) {
        return result;
    }
    for (std::size_t i = header + 1, end = SectionEnd(header); i < end; ++i) {
        const Parsed parsed = Parse(lines_[i].text);
        if (parsed.kind == Kind::Entry) {
            std::string line(parsed.name);
            if (parsed.hasValue) {
                line += '=';
                line += parsed.value;
            }
            result.push_back(std::move(line));
        }
    }
    return result;
}

std::optional<std::string> ProfileText::Value(std::string_view section,
                                              std::string_view key) const {
    const std::size_t header = FindSection(section);
    const std::size_t line = header == npos ? npos : FindKey(header, key);
    if (line == npos) {
        return std::nullopt;
    }
    return std::string(Parse(lines_[line].text).value);
}

bool ProfileText::Set(std::string_view section, std::string_view key, std::string_view value) {
    std::string text(key);
    text += '=';
    text += value;
    std::size_t header = FindSection(section);
    if (header == npos) {
        header = lines_.size();
        Insert(header, "[" + std::string(section) + "]");
    }
    const std::size_t line = FindKey(header, key);
    if (line == npos) {
        Insert(SectionContentEnd(header), std::move(text));
        return true;
    }
    // A value that is already there keeps its line as it was written.
    if (Parse(lines_[line].text).value == value) {
        return false;
    }
    lines_[line].text = std::move(text);
    return true;
}

bool ProfileText::DeleteKey(std::string_view section, std::string_view key) {
    const std::size_t header = FindSection(section);
    if (header == npos) {
        return false;
    }
    // Every line of the key goes, so that a later one doesn't come to light.
    bool changed = false;
    for (std::size_t line = FindKey(header, key); line != npos; line = FindKey(header, key, line)) {
        lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(line));
        changed = true;
    }
    return changed;
}

bool ProfileText::DeleteSection(std::string_view section) {
    bool changed = false;
    for (std::size_t header = FindSection(section); header != npos;
         header = FindSection(section, header)) {
        lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(header),
                     lines_.begin() + static_cast<std::ptrdiff_t>(SectionEnd(header)));
        changed = true;
    }
    return changed;
}

bool ProfileText::ReplaceSection(std::string_view section, const std::vector<std::string>& lines) {
    std::size_t header = FindSection(section);
    if (header == npos) {
        header = lines_.size();
        Insert(header, "[" + std::string(section) + "]");
    } else {
        lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(header) + 1,
                     lines_.begin() + static_cast<std::ptrdiff_t>(SectionContentEnd(header)));
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        Insert(header + 1 + i, lines[i]);
    }
    return true;
}

std::size_t ProfileText::FindSection(std::string_view section, std::size_t from) const {
    for (std::size_t i = from; i < lines_.size(); ++i) {
        const Parsed parsed = Parse(lines_[i].text);
        if (parsed.kind == Kind::Section && SameName(parsed.name, Trim(section))) {
            return i;
        }
    }
    return npos;
}

std::size_t ProfileText::SectionEnd(std::size_t header) const {
    std::size_t i = header + 1;
    while (i < lines_.size() && Parse(lines_[i].text).kind != Kind::Section) {
        ++i;
    }
    return i;
}

std::size_t ProfileText::SectionContentEnd(std::size_t header) const {
    std::size_t end = SectionEnd(header);
    while (end > header + 1 && Parse(lines_[end - 1].text).kind != Kind::Entry) {
        --end;
    }
    return end;
}

std::size_t ProfileText::FindKey(std::size_t header, std::string_view key, std::size_t from) const {
    for (std::size_t i = std::max(header + 1, from), end = SectionEnd(header); i < end; ++i) {
        const Parsed parsed = Parse(lines_[i].text);
        if (parsed.kind == Kind::Entry && parsed.hasValue && SameName(parsed.name, Trim(key))) {
            return i;
        }
    }
    return npos;
}

void ProfileText::Insert(std::size_t at, std::string text) {
    // New lines end as the files Windows writes do; a last line that had no
    // end gets one before something follows it.
    if (at > 0 && lines_[at - 1].end.empty()) {
        lines_[at - 1].end = "\r\n";
    }
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(at), Line{std::move(text), "\r\n"});
}

}  // namespace nvk::os::posix
