#include "os/posix/registry_file.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "os/posix/code_page.h"

namespace nvk::os::posix {

namespace {

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::string_view kOldHeader = "REGEDIT4";
constexpr DWORD kString = 1;
constexpr DWORD kExpandString = 2;
constexpr DWORD kBinary = 3;
constexpr DWORD kDword = 4;
constexpr DWORD kMultiString = 7;

bool IsTextType(DWORD type) {
    return type == kString || type == kExpandString || type == kMultiString;
}

std::string_view TrimLeft(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    return text;
}

std::string_view TrimRight(std::string_view text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

// A quoted text at the start of `text`, which moves past it; "\x" stands for
// x, so that "\\" and "\"" are a backslash and a quote.
std::optional<std::string> TakeQuoted(std::string_view& text) {
    if (text.empty() || text.front() != '"') {
        return std::nullopt;
    }
    std::string out;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) {
            out += text[++i];
        } else if (text[i] == '"') {
            text.remove_prefix(i + 1);
            return out;
        } else {
            out += text[i];
        }
    }
    return std::nullopt;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// "01,ff, 2a" as bytes; blanks and backslashes of joined lines are skipped.
std::optional<std::string> ParseHexBytes(std::string_view text) {
    std::string bytes;
    int value = 0;
    int digits = 0;
    for (char c : text) {
        if (c == ',' || c == ' ' || c == '\t' || c == '\\') {
            if (digits > 0) {
                bytes += static_cast<char>(value);
            }
            if (c == ',' && digits == 0) {
                return std::nullopt;
            }
            value = 0;
            digits = 0;
            continue;
        }
        int digit = HexDigit(c);
        if (digit < 0 || ++digits > 2) {
            return std::nullopt;
        }
        value = value * 16 + digit;
    }
    if (digits > 0) {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

// Parses the data after "=": false if it can't be read.
bool ParseData(std::string_view text, bool unicode, RegistrySection::Entry& entry) {
    text = TrimLeft(text);
    if (text == "-") {
        entry.deleteValue = true;
        return true;
    }
    if (!text.empty() && text.front() == '"') {
        std::optional<std::string> quoted = TakeQuoted(text);
        if (!quoted || !TrimLeft(text).empty()) {
            return false;
        }
        entry.value.type = kString;
        entry.value.data = *quoted + '\0';
        return true;
    }
    if (text.starts_with("dword:")) {
        text.remove_prefix(6);
        if (text.empty() || text.size() > 8) {
            return false;
        }
        DWORD number = 0;
        for (char c : text) {
            int digit = HexDigit(c);
            if (digit < 0) {
                return false;
            }
            number = number * 16 + static_cast<DWORD>(digit);
        }
        entry.value.type = kDword;
        entry.value.data.assign(reinterpret_cast<const char*>(&number), 4);
        return true;
    }
    if (!text.starts_with("hex")) {
        return false;
    }
    text.remove_prefix(3);
    DWORD type = kBinary;
    if (text.starts_with("(")) {
        std::size_t close = text.find(')');
        if (close == std::string_view::npos || close == 1 || close > 9) {
            return false;
        }
        type = 0;
        for (char c : text.substr(1, close - 1)) {
            int digit = HexDigit(c);
            if (digit < 0) {
                return false;
            }
            type = type * 16 + static_cast<DWORD>(digit);
        }
        text.remove_prefix(close + 1);
    }
    if (!text.starts_with(":")) {
        return false;
    }
    std::optional<std::string> bytes = ParseHexBytes(text.substr(1));
    if (!bytes) {
        return false;
    }
    entry.value.type = type;
    if (unicode && IsTextType(type)) {
        // The editor's Unicode files give text types as UTF-16LE.
        std::string text8;
        for (std::size_t i = 0; i + 1 < bytes->size(); i += 2) {
            text8 += AnsiFromWide(
                static_cast<char16_t>(static_cast<unsigned char>((*bytes)[i]) |
                                      static_cast<unsigned char>((*bytes)[i + 1]) << 8));
        }
        entry.value.data = std::move(text8);
    } else {
        entry.value.data = std::move(*bytes);
    }
    return true;
}

std::string Quote(std::string_view text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '\\' || c == '"') {
            out += '\\';
        }
        out += c;
    }
    return out + '"';
}

// Whether a string value can be written as a quoted text: one terminator at
// its end, and no line break, which the text form can't hold.
bool IsPlainText(const std::string& data) {
    return !data.empty() && data.back() == '\0' &&
           data.find_first_of(std::string_view("\0\r\n", 3)) == data.size() - 1;
}

void AppendHex(std::string& line, std::string_view bytes) {
    std::size_t column = line.size();
    char digits[4];
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(bytes[i]));
        line += digits;
        column += 2;
        if (i + 1 < bytes.size()) {
            line += ',';
            ++column;
            if (column > 76) {
                line += "\\\r\n  ";
                column = 2;
            }
        }
    }
}

std::string FormatValue(const RegistryValue& value) {
    std::string line = value.name.empty() ? "@=" : Quote(value.name) + "=";
    if (value.type == kString && IsPlainText(value.data)) {
        return line + Quote(std::string_view(value.data).substr(0, value.data.size() - 1));
    }
    if (value.type == kDword && value.data.size() == 4) {
        DWORD number = 0;
        std::copy_n(value.data.data(), 4, reinterpret_cast<char*>(&number));
        char text[16];
        std::snprintf(text, sizeof text, "dword:%08x", number);
        return line + text;
    }
    if (value.type == kBinary) {
        line += "hex:";
        AppendHex(line, value.data);
        return line;
    }
    char prefix[24];
    std::snprintf(prefix, sizeof prefix, "hex(%x):", value.type);
    line += prefix;
    if (IsTextType(value.type)) {
        std::string wide;
        for (char c : value.data) {
            char16_t unit = WideFromAnsi(c);
            wide += static_cast<char>(unit & 0xFF);
            wide += static_cast<char>(unit >> 8);
        }
        AppendHex(line, wide);
    } else {
        AppendHex(line, value.data);
    }
    return line;
}

void FormatKey(std::string& out, const std::string& name, const RegistryKey& key) {
    out += "[" + name + "]\r\n";
    for (const RegistryValue& value : key.values) {
        out += FormatValue(value) + "\r\n";
    }
    out += "\r\n";
    for (const auto& [subName, subkey] : key.subkeys) {
        FormatKey(out, name + "\\" + subName, *subkey);
    }
}

}  // namespace

bool NoCaseLess::operator()(std::string_view a, std::string_view b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) <
               std::tolower(static_cast<unsigned char>(y));
    });
}

RegistryValue* RegistryKey::FindValue(std::string_view name) {
    NoCaseLess less;
    auto found = std::find_if(values.begin(), values.end(), [&](const RegistryValue& value) {
        return !less(value.name, name) && !less(name, value.name);
    });
    return found != values.end() ? &*found : nullptr;
}

RegistryKey* RegistryKey::FindSubkey(std::string_view name) {
    auto found = subkeys.find(name);
    return found != subkeys.end() ? found->second.get() : nullptr;
}

RegistryKey& RegistryKey::Subkey(std::string_view name) {
    auto found = subkeys.find(name);
    if (found == subkeys.end()) {
        found = subkeys.emplace(std::string(name), std::make_unique<RegistryKey>()).first;
    }
    return *found->second;
}

std::vector<std::string> SplitKeyPath(std::string_view path) {
    std::vector<std::string> names;
    while (!path.empty()) {
        std::size_t end = path.find('\\');
        if (end != 0) {
            names.emplace_back(path.substr(0, end));
        }
        path = end == std::string_view::npos ? std::string_view{} : path.substr(end + 1);
    }
    return names;
}

std::optional<std::vector<RegistrySection>> ParseRegistryText(std::string_view text) {
    std::vector<std::string> lines;
    std::string joined;
    while (!text.empty()) {
        std::size_t end = text.find('\n');
        std::string_view line = TrimRight(text.substr(0, end));
        text = end == std::string_view::npos ? std::string_view{} : text.substr(end + 1);
        // Long hexadecimal data goes on over lines that end in "\".
        bool goesOn = line.ends_with('\\') && !TrimLeft(line).starts_with('[');
        joined += joined.empty() ? line : TrimLeft(line);
        if (!goesOn) {
            lines.push_back(std::move(joined));
            joined.clear();
        }
    }
    if (!joined.empty()) {
        lines.push_back(std::move(joined));
    }
    auto first = std::find_if(lines.begin(), lines.end(),
                              [](const std::string& line) { return !TrimLeft(line).empty(); });
    if (first == lines.end()) {
        return std::nullopt;
    }
    std::string_view header = TrimLeft(*first);
    if (header.starts_with("\xEF\xBB\xBF")) {
        header.remove_prefix(3);
    }
    bool unicode = header == kHeader;
    if (!unicode && header != kOldHeader) {
        return std::nullopt;
    }
    std::vector<RegistrySection> sections;
    for (auto it = first + 1; it != lines.end(); ++it) {
        std::string_view line = TrimLeft(*it);
        if (line.empty() || line.front() == ';') {
            continue;
        }
        if (line.front() == '[') {
            std::size_t close = line.rfind(']');
            if (close == std::string_view::npos) {
                continue;
            }
            std::string_view inside = line.substr(1, close - 1);
            RegistrySection section;
            section.deleteKey = inside.starts_with('-');
            std::vector<std::string> names = SplitKeyPath(inside.substr(section.deleteKey ? 1 : 0));
            if (names.empty()) {
                continue;
            }
            section.root = names.front();
            section.path.assign(names.begin() + 1, names.end());
            sections.push_back(std::move(section));
            continue;
        }
        if (sections.empty() || sections.back().deleteKey) {
            continue;
        }
        RegistrySection::Entry entry;
        if (line.front() == '@') {
            line.remove_prefix(1);
        } else if (std::optional<std::string> name = TakeQuoted(line)) {
            entry.value.name = std::move(*name);
        } else {
            continue;
        }
        line = TrimLeft(line);
        if (line.starts_with('=') && ParseData(line.substr(1), unicode, entry)) {
            sections.back().entries.push_back(std::move(entry));
        }
    }
    return sections;
}

void ApplySections(const std::vector<RegistrySection>& sections, std::string_view root,
                   RegistryKey& tree) {
    NoCaseLess less;
    for (const RegistrySection& section : sections) {
        if (less(section.root, root) || less(root, section.root)) {
            continue;
        }
        if (section.deleteKey) {
            RegistryKey* parent = &tree;
            for (std::size_t i = 0; parent != nullptr && i + 1 < section.path.size(); ++i) {
                parent = parent->FindSubkey(section.path[i]);
            }
            if (parent != nullptr && !section.path.empty()) {
                if (auto found = parent->subkeys.find(section.path.back());
                    found != parent->subkeys.end()) {
                    parent->subkeys.erase(found);
                }
            }
            continue;
        }
        RegistryKey* key = &tree;
        for (const std::string& name : section.path) {
            key = &key->Subkey(name);
        }
        for (const RegistrySection::Entry& entry : section.entries) {
            RegistryValue* existing = key->FindValue(entry.value.name);
            if (entry.deleteValue) {
                if (existing != nullptr) {
                    key->values.erase(key->values.begin() + (existing - key->values.data()));
                }
            } else if (existing != nullptr) {
                existing->type = entry.value.type;
                existing->data = entry.value.data;
            } else {
                key->values.push_back(entry.value);
            }
        }
    }
}

std::string FormatRegistryText(std::string_view root, const std::vector<std::string>& path,
                               const RegistryKey& key, bool withHeader) {
    std::string out = withHeader ? std::string(kHeader) + "\r\n\r\n" : std::string();
    std::string name(root);
    for (const std::string& part : path) {
        name += "\\" + part;
    }
    FormatKey(out, name, key);
    return out;
}

}  // namespace nvk::os::posix
