#include "os/common/registry_text.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdint>
#include <cstdio>

#include "os/api/nls.h"

namespace nvk::os::common {

namespace {

// One character of the ANSI code page in UTF-16, and back (best fit or '?').
WCHAR WideFromAnsi(char c) {
    WCHAR unit = 0;
    MultiByteToWideChar(CP_ACP, 0, &c, 1, &unit, 1);
    return unit;
}

char AnsiFromWide(WCHAR c) {
    char out = '?';
    WideCharToMultiByte(CP_ACP, 0, &c, 1, &out, 1, nullptr, nullptr);
    return out;
}

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::string_view kOldHeader = "REGEDIT4";
constexpr DWORD kString = 1;
constexpr DWORD kExpandString = 2;
constexpr DWORD kBinary = 3;
constexpr DWORD kDword = 4;
constexpr DWORD kMultiString = 7;

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view TrimLeft(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

std::string_view TrimRight(std::string_view text) {
    while (!text.empty() && IsBlank(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool IsTextType(DWORD type) {
    return type == kString || type == kExpandString || type == kMultiString;
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

// The hexadecimal number at the start of `text`, which moves past its digits;
// nothing when there is no digit or the number passes `limit`.
std::optional<DWORD> TakeHex(std::string_view& text, DWORD limit) {
    std::size_t digits = 0;
    std::uint64_t number = 0;
    for (; digits < text.size() && HexDigit(text[digits]) >= 0; ++digits) {
        number = std::min<std::uint64_t>(number * 16 + HexDigit(text[digits]), limit + 1ull);
    }
    text.remove_prefix(digits);
    if (digits == 0 || number > limit) {
        return std::nullopt;
    }
    return static_cast<DWORD>(number);
}

// Whether nothing but a comment is left.
bool AtEnd(std::string_view text) {
    text = TrimLeft(text);
    return text.empty() || text.front() == ';';
}

// A quoted text at the start of `text`, which moves past its closing quote.
// "\\", "\"", "\n" and "\r" are escapes, any other "\x" stands for x; "\0"
// is refused, as the registry editors refuse it.
std::optional<std::string> TakeQuoted(std::string_view& text) {
    if (text.empty() || text.front() != '"') {
        return std::nullopt;
    }
    std::string out;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            text.remove_prefix(i + 1);
            return out;
        }
        if (text[i] != '\\') {
            out += text[i];
        } else if (++i == text.size() || text[i] == '0') {
            return std::nullopt;
        } else {
            out += text[i] == 'n' ? '\n' : text[i] == 'r' ? '\r' : text[i];
        }
    }
    return std::nullopt;
}

enum class HexLine { Bad, Done, GoesOn };

// Adds the bytes of "01,ff, 2a" to `bytes`. A line that ends in "," and "\"
// goes on in the next one; a comment may follow the data or the "\".
HexLine TakeHexBytes(std::string_view text, std::string& bytes) {
    while (true) {
        text = TrimLeft(text);
        if (text.empty() || text.front() == ';') {
            return HexLine::Done;
        }
        if (text.front() == '\\') {
            return AtEnd(text.substr(1)) ? HexLine::GoesOn : HexLine::Bad;
        }
        std::optional<DWORD> byte = TakeHex(text, 0xFF);
        if (!byte) {
            return HexLine::Bad;
        }
        bytes += static_cast<char>(*byte);
        if (!text.starts_with(',')) {
            return AtEnd(text) ? HexLine::Done : HexLine::Bad;
        }
        text.remove_prefix(1);
    }
}

// What a value line gives: `text` is what follows its name, and `next` the
// lines after it, which hexadecimal data may go on over. False if it can't be
// read.
bool ParseData(std::string_view text, bool unicode, const std::vector<std::string_view>& lines,
               std::size_t& next, RegistrySection::Entry& entry) {
    text = TrimLeft(text);
    if (!text.starts_with('=')) {
        return false;
    }
    text = TrimLeft(text.substr(1));
    if (text.starts_with('-')) {
        entry.deleteValue = true;
        return AtEnd(text.substr(1));
    }
    if (text.starts_with('"')) {
        std::optional<std::string> quoted = TakeQuoted(text);
        if (!quoted || !AtEnd(text)) {
            return false;
        }
        entry.value.type = kString;
        entry.value.data = *quoted + '\0';
        return true;
    }
    if (text.starts_with("dword:")) {
        text = TrimLeft(text.substr(6));
        std::string_view digits = text;
        std::optional<DWORD> number = TakeHex(text, 0xFFFFFFFF);
        if (!number || digits.size() - text.size() > 8 || !AtEnd(text)) {
            return false;
        }
        entry.value.type = kDword;
        entry.value.data.assign(reinterpret_cast<const char*>(&*number), 4);
        return true;
    }
    DWORD type = kBinary;
    if (text.starts_with("hex(")) {
        text.remove_prefix(4);
        std::optional<DWORD> number = TakeHex(text, 0xFFFFFFFF);
        if (!number || !text.starts_with("):")) {
            return false;
        }
        type = *number;
        text.remove_prefix(2);
    } else if (text.starts_with("hex:")) {
        text.remove_prefix(4);
    } else {
        return false;
    }
    std::string bytes;
    for (HexLine state = TakeHexBytes(text, bytes); state != HexLine::Done;) {
        if (state == HexLine::Bad) {
            return false;
        }
        // Blank and comment lines inside the data are passed over; the data
        // goes on on the first other line, which must begin with a digit.
        while (next < lines.size() && AtEnd(lines[next])) {
            ++next;
        }
        if (next == lines.size()) {
            break;
        }
        std::string_view line = TrimLeft(lines[next++]);
        state = HexDigit(line.front()) < 0 ? HexLine::Bad : TakeHexBytes(line, bytes);
    }
    entry.value.type = type;
    if (unicode && IsTextType(type)) {
        // The editor's Unicode files give text types as UTF-16LE.
        std::string text8;
        for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
            text8 +=
                AnsiFromWide(static_cast<WCHAR>(static_cast<unsigned char>(bytes[i]) |
                                                static_cast<unsigned char>(bytes[i + 1]) << 8));
        }
        bytes = std::move(text8);
    }
    // Text given in hexadecimal gets the terminating zero it lacks, as the
    // registry editors give it.
    if (IsTextType(type) && !bytes.empty() && bytes.back() != '\0') {
        bytes += '\0';
    }
    entry.value.data = std::move(bytes);
    return true;
}

// The lines of a text: they end in "\r\n", "\n" or "\r" alone, and at a zero
// character, as the editors read them; blanks at their ends don't count.
std::vector<std::string_view> SplitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty()) {
        std::size_t end = text.find_first_of("\r\n");
        std::string_view line = text.substr(0, end);
        line = TrimRight(line.substr(0, line.find('\0')));
        lines.push_back(line);
        if (end == std::string_view::npos) {
            break;
        }
        text.remove_prefix(end + (text.substr(end).starts_with("\r\n") ? 2 : 1));
    }
    return lines;
}

// The section that "[...]" opens, its brackets taken off: nothing when the
// root is unknown or a name is over the limit.
std::optional<RegistrySection> SectionOf(std::string_view inside) {
    RegistrySection section;
    section.deleteKey = inside.starts_with('-');
    if (section.deleteKey) {
        inside.remove_prefix(1);
    }
    std::size_t cut = inside.find('\\');
    std::string_view root = RegistryRootName(inside.substr(0, cut));
    std::string_view below = cut == std::string_view::npos ? "" : inside.substr(cut + 1);
    if (root.empty() || below.starts_with('\\')) {
        return std::nullopt;
    }
    section.root = root;
    section.path = SplitKeyPath(below);
    for (const std::string& name : section.path) {
        if (name.size() > kMaxKeyNameLength) {
            return std::nullopt;
        }
    }
    if (section.deleteKey && section.path.empty()) {
        return std::nullopt;  // a root key stays
    }
    return section;
}

std::string Quote(std::string_view text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '\\' || c == '"') {
            out += '\\';
        }
        out += c == '\n' ? "\\n" : c == '\r' ? "\\r" : std::string(1, c);
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
        std::uint32_t number = 0;
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
    std::snprintf(prefix, sizeof prefix, "hex(%x):", static_cast<unsigned>(value.type));
    line += prefix;
    if (IsTextType(value.type)) {
        std::string wide;
        for (char c : value.data) {
            WCHAR unit = WideFromAnsi(c);
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

std::uint64_t NewKeySerial() {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

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

std::string_view RegistryRootName(std::string_view name) {
    static constexpr std::string_view kRoots[][2] = {
        {"HKEY_CLASSES_ROOT", "HKCR"},   {"HKEY_CURRENT_USER", "HKCU"},
        {"HKEY_LOCAL_MACHINE", "HKLM"},  {"HKEY_USERS", "HKU"},
        {"HKEY_CURRENT_CONFIG", "HKCC"},
    };
    NoCaseLess less;
    auto same = [&](std::string_view a, std::string_view b) { return !less(a, b) && !less(b, a); };
    for (const auto& root : kRoots) {
        if (same(name, root[0]) || same(name, root[1])) {
            return root[0];
        }
    }
    return {};
}

std::optional<std::vector<RegistrySection>> ParseRegistryText(std::string_view text, bool* whole) {
    std::vector<std::string_view> lines = SplitLines(text);
    // The header is the first line; blanks may stand before it, but no line.
    std::string_view header = lines.empty() ? std::string_view{} : TrimLeft(lines.front());
    if (header.starts_with("\xEF\xBB\xBF")) {
        header.remove_prefix(3);
    }
    bool unicode = header == kHeader;
    if (!unicode && header != kOldHeader) {
        if (whole != nullptr) {
            *whole = text.find_first_not_of(" \t\r\n") == std::string_view::npos;
        }
        return std::nullopt;
    }
    bool skipped = false;
    std::vector<RegistrySection> sections;
    // The section that values go to; none before the first, after a deletion
    // and in a section that can't be opened, whose values are passed over.
    bool open = false;
    for (std::size_t next = 1; next < lines.size();) {
        std::string_view line = TrimLeft(lines[next++]);
        if (line.empty() || line.front() == ';') {
            continue;
        }
        if (line.front() == '[') {
            // A line that doesn't make a section leaves the current one open.
            std::size_t close = line.rfind(']');
            std::string_view inside = line.substr(1, close - 1);
            if (close == std::string_view::npos ||
                (!inside.empty() && (IsBlank(inside.front()) || inside.front() == '['))) {
                skipped = true;
                continue;
            }
            std::optional<RegistrySection> section = SectionOf(inside);
            open = section && !section->deleteKey;
            skipped = skipped || !section;
            if (section) {
                sections.push_back(std::move(*section));
            }
            continue;
        }
        RegistrySection::Entry entry;
        if (line.front() == '@') {
            line.remove_prefix(1);
        } else if (std::optional<std::string> name = TakeQuoted(line)) {
            entry.value.name = std::move(*name);
        } else {
            skipped = true;
            continue;
        }
        bool read = ParseData(line, unicode, lines, next, entry) &&
                    entry.value.name.size() <= kMaxValueNameLength;
        if (read && open) {
            sections.back().entries.push_back(std::move(entry));
        } else {
            skipped = true;
        }
    }
    if (whole != nullptr) {
        *whole = !skipped;
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

}  // namespace nvk::os::common
