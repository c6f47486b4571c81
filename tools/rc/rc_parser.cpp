#include "rc_parser.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>

#include "rc_icon.h"
#include "rc_text.h"

namespace nvk::rc {

namespace {

enum class Kind { Word, String, Comma, Begin, End, Eof };

struct Token {
    Kind kind;
    std::string text;  // a word as written, or a literal's body
    bool wide = false;
    int line = 0;
};

const std::map<std::string, std::uint16_t>& LanguageSymbols() {
    static const std::map<std::string, std::uint16_t> symbols = {
        {"LANG_NEUTRAL", 0x00},
        {"SUBLANG_NEUTRAL", 0x00},
        {"SUBLANG_DEFAULT", 0x01},
        {"SUBLANG_SYS_DEFAULT", 0x02},
        {"LANG_ENGLISH", 0x09},
        {"SUBLANG_ENGLISH_US", 0x01},
        {"SUBLANG_ENGLISH_UK", 0x02},
        {"LANG_FRENCH", 0x0C},
        {"SUBLANG_FRENCH", 0x01},
        {"SUBLANG_FRENCH_BELGIAN", 0x02},
        {"SUBLANG_FRENCH_CANADIAN", 0x03},
        {"SUBLANG_FRENCH_SWISS", 0x04},
        {"LANG_GERMAN", 0x07},
        {"SUBLANG_GERMAN", 0x01},
        {"SUBLANG_GERMAN_SWISS", 0x02},
        {"SUBLANG_GERMAN_AUSTRIAN", 0x03},
        {"LANG_ITALIAN", 0x10},
        {"SUBLANG_ITALIAN", 0x01},
        {"SUBLANG_ITALIAN_SWISS", 0x02},
    };
    return symbols;
}

// Memory flags of the 16-bit days, accepted and ignored.
bool IsMemoryFlag(const std::string& word) {
    static const std::set<std::string> flags = {"DISCARDABLE", "MOVEABLE", "FIXED",
                                                "PURE",        "IMPURE",   "PRELOAD",
                                                "LOADONCALL",  "SHARED",   "NONSHARED"};
    return flags.count(word) != 0;
}

bool IsWordChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

class Lexer {
public:
    Lexer(std::string_view source, const std::string& file) : m_Source(source), m_File(file) {}

    Token Next() {
        SkipSpaceAndComments();
        if (m_Pos >= m_Source.size()) {
            return {Kind::Eof, {}, false, m_Line};
        }
        char c = m_Source[m_Pos];
        if (c == ',') {
            ++m_Pos;
            return {Kind::Comma, ",", false, m_Line};
        }
        if (c == '{' || c == '}') {
            ++m_Pos;
            return {c == '{' ? Kind::Begin : Kind::End, std::string(1, c), false, m_Line};
        }
        if (c == '"' || (c == 'L' && m_Pos + 1 < m_Source.size() && m_Source[m_Pos + 1] == '"')) {
            bool wide = c == 'L';
            m_Pos += wide ? 2 : 1;
            return {Kind::String, Literal(), wide, m_Line};
        }
        if (IsWordChar(c)) {
            std::size_t start = m_Pos;
            while (m_Pos < m_Source.size() && IsWordChar(m_Source[m_Pos])) {
                ++m_Pos;
            }
            std::string word(m_Source.substr(start, m_Pos - start));
            if (word == "BEGIN") {
                return {Kind::Begin, word, false, m_Line};
            }
            if (word == "END") {
                return {Kind::End, word, false, m_Line};
            }
            return {Kind::Word, word, false, m_Line};
        }
        throw RcError(m_File, m_Line, std::string("unexpected character '") + c + "'");
    }

private:
    void SkipSpaceAndComments() {
        bool lineStart = m_Pos == 0 || m_Source[m_Pos - 1] == '\n';
        while (m_Pos < m_Source.size()) {
            char c = m_Source[m_Pos];
            if (c == '\n') {
                ++m_Line;
                ++m_Pos;
                lineStart = true;
            } else if (std::isspace(static_cast<unsigned char>(c)) != 0) {
                ++m_Pos;
            } else if (m_Source.substr(m_Pos, 2) == "//") {
                SkipLine();
            } else if (m_Source.substr(m_Pos, 2) == "/*") {
                std::size_t end = m_Source.find("*/", m_Pos + 2);
                if (end == std::string_view::npos) {
                    throw RcError(m_File, m_Line, "a comment is not closed");
                }
                m_Line += static_cast<int>(
                    std::count(m_Source.begin() + static_cast<std::ptrdiff_t>(m_Pos),
                               m_Source.begin() + static_cast<std::ptrdiff_t>(end), '\n'));
                m_Pos = end + 2;
            } else if (c == '#' && lineStart) {
                // The code page is always UTF-8 here; no other directive is
                // supported.
                if (m_Source.substr(m_Pos, 7) != "#pragma") {
                    throw RcError(m_File, m_Line, "only #pragma directives are supported");
                }
                SkipLine();
            } else {
                return;
            }
        }
    }

    void SkipLine() {
        while (m_Pos < m_Source.size() && m_Source[m_Pos] != '\n') {
            ++m_Pos;
        }
    }

    // The body of a literal whose opening quote has been read.
    std::string Literal() {
        std::size_t start = m_Pos;
        while (m_Pos < m_Source.size()) {
            char c = m_Source[m_Pos];
            if (c == '\n') {
                break;
            }
            if (c == '\\') {
                m_Pos += 2;
                continue;
            }
            if (c == '"') {
                if (m_Pos + 1 < m_Source.size() && m_Source[m_Pos + 1] == '"') {
                    m_Pos += 2;
                    continue;
                }
                std::string body(m_Source.substr(start, m_Pos - start));
                ++m_Pos;
                return body;
            }
            ++m_Pos;
        }
        throw RcError(m_File, m_Line, "a string is not closed on its line");
    }

    std::string_view m_Source;
    const std::string& m_File;
    std::size_t m_Pos = 0;
    int m_Line = 1;
};

// A number with an optional "L": decimal, or hexadecimal after "0x".
std::optional<std::uint32_t> ParseNumber(const std::string& word, bool& isLong) {
    std::string digits = word;
    isLong = false;
    if (!digits.empty() && (digits.back() == 'L' || digits.back() == 'l')) {
        isLong = true;
        digits.pop_back();
    }
    if (digits.empty() || std::isdigit(static_cast<unsigned char>(digits[0])) == 0) {
        return std::nullopt;
    }
    int base = 10;
    std::size_t start = 0;
    if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X')) {
        base = 16;
        start = 2;
    }
    unsigned long long value = 0;
    for (std::size_t i = start; i < digits.size(); ++i) {
        int digit = std::isdigit(static_cast<unsigned char>(digits[i])) != 0
                        ? digits[i] - '0'
                        : (base == 16 && std::isxdigit(static_cast<unsigned char>(digits[i])) != 0
                               ? std::toupper(static_cast<unsigned char>(digits[i])) - 'A' + 10
                               : -1);
        if (digit < 0 || digit >= base) {
            return std::nullopt;
        }
        value = value * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
        if (value > 0xFFFFFFFFull) {
            return std::nullopt;
        }
    }
    return static_cast<std::uint32_t>(value);
}

class Parser {
public:
    Parser(std::string_view source, const std::string& file, Script& script)
        : m_Lexer(source, file), m_File(file), m_Script(script) {
        Advance();
    }

    void Run() {
        while (m_Token.kind != Kind::Eof) {
            if (IsWord("LANGUAGE")) {
                Advance();
                m_Language = Language();
            } else if (IsWord("STRINGTABLE")) {
                Advance();
                StringTable();
            } else if (m_Token.kind == Kind::Word) {
                Data();
            } else {
                Fail("a statement was expected");
            }
        }
    }

private:
    void Advance() { m_Token = m_Lexer.Next(); }
    bool IsWord(const char* word) const {
        return m_Token.kind == Kind::Word && m_Token.text == word;
    }
    [[noreturn]] void Fail(const std::string& message) const {
        throw RcError(m_File, m_Token.line, message);
    }

    std::uint16_t LanguagePart() {
        if (m_Token.kind != Kind::Word) {
            Fail("a language was expected");
        }
        bool isLong = false;
        std::optional<std::uint32_t> number = ParseNumber(m_Token.text, isLong);
        auto symbol = LanguageSymbols().find(m_Token.text);
        if (!number && symbol == LanguageSymbols().end()) {
            Fail("unknown language " + m_Token.text);
        }
        Advance();
        return number ? static_cast<std::uint16_t>(*number) : symbol->second;
    }

    std::uint16_t Language() {
        std::uint16_t primary = LanguagePart();
        if (m_Token.kind != Kind::Comma) {
            Fail("LANGUAGE takes a language and a sublanguage");
        }
        Advance();
        std::uint16_t sub = LanguagePart();
        if (primary > 0x3FF || sub > 0x3F) {
            Fail("the language is out of range");
        }
        return static_cast<std::uint16_t>((sub << 10) | primary);
    }

    // Flags and options between a resource's head and its BEGIN; the
    // language it gives, if any.
    std::uint16_t Options(std::uint16_t language) {
        while (m_Token.kind == Kind::Word) {
            if (IsMemoryFlag(m_Token.text)) {
                Advance();
            } else if (IsWord("LANGUAGE")) {
                Advance();
                language = Language();
            } else if (IsWord("CHARACTERISTICS") || IsWord("VERSION")) {
                Advance();
                Advance();
            } else {
                Fail("unknown option " + m_Token.text);
            }
        }
        if (m_Token.kind != Kind::Begin) {
            Fail("BEGIN was expected");
        }
        Advance();
        return language;
    }

    std::u16string Text() {
        try {
            return DecodeLiteral(m_Token.text);
        } catch (const std::invalid_argument& e) {
            Fail(e.what());
        }
    }

    void StringTable() {
        std::uint16_t language = Options(m_Language);
        while (m_Token.kind != Kind::End) {
            bool isLong = false;
            std::optional<std::uint32_t> id =
                m_Token.kind == Kind::Word ? ParseNumber(m_Token.text, isLong) : std::nullopt;
            if (!id || *id > 0xFFFF) {
                Fail("a string id was expected");
            }
            int line = m_Token.line;
            Advance();
            if (m_Token.kind == Kind::Comma) {
                Advance();
            }
            if (m_Token.kind != Kind::String) {
                Fail("a string was expected");
            }
            std::u16string text;
            while (m_Token.kind == Kind::String) {
                text += Text();
                if (!IsAnsi(text)) {
                    Fail("a character has no Windows-1252 byte");
                }
                Advance();
            }
            if (text.size() > 0xFFFF) {
                throw RcError(m_File, line, "the string is too long");
            }
            for (const StringEntry& other : m_Script.strings) {
                if (other.language == language && other.id == *id) {
                    throw RcError(m_File, line,
                                  "string " + std::to_string(*id) + " is defined twice");
                }
            }
            m_Script.strings.push_back(
                {language, static_cast<std::uint16_t>(*id), std::move(text), line});
        }
        Advance();
    }

    ResourceId Id() {
        bool isLong = false;
        std::optional<std::uint32_t> number = ParseNumber(m_Token.text, isLong);
        ResourceId id;
        if (number) {
            if (*number > 0xFFFF) {
                Fail("a resource number is out of range");
            }
            id.number = static_cast<std::uint16_t>(*number);
        } else {
            id.text = m_Token.text;
            std::transform(id.text.begin(), id.text.end(), id.text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
            if (id.text == "RCDATA") {
                id = {{}, 10};
            }
        }
        Advance();
        return id;
    }

    void Data() {
        DataResource resource;
        resource.line = m_Token.line;
        resource.name = Id();
        if (m_Token.kind != Kind::Word) {
            Fail("a resource type was expected");
        }
        resource.type = Id();
        if (resource.type.text == "ICON") {
            Icon(resource.name, resource.line);
            return;
        }
        if (resource.type.text == "VERSIONINFO") {
            Version(resource.line);
            return;
        }
        resource.language = Options(m_Language);
        while (m_Token.kind != Kind::End) {
            if (m_Token.kind == Kind::String) {
                std::u16string text = Text();
                if (m_Token.wide) {
                    for (char16_t unit : text) {
                        Put(resource.bytes, unit, 2);
                    }
                } else {
                    try {
                        std::vector<unsigned char> bytes = ToAnsi(text);
                        resource.bytes.insert(resource.bytes.end(), bytes.begin(), bytes.end());
                    } catch (const std::invalid_argument& e) {
                        Fail(e.what());
                    }
                }
            } else if (m_Token.kind == Kind::Word) {
                bool isLong = false;
                std::optional<std::uint32_t> number = ParseNumber(m_Token.text, isLong);
                if (!number || (!isLong && *number > 0xFFFF)) {
                    Fail("a number was expected");
                }
                Put(resource.bytes, *number, isLong ? 4 : 2);
            } else if (m_Token.kind != Kind::Comma) {
                Fail("data or END was expected");
            }
            Advance();
        }
        Advance();
        for (const DataResource& other : m_Script.data) {
            if (other.type == resource.type && other.name == resource.name &&
                other.language == resource.language) {
                throw RcError(m_File, resource.line, "the resource is defined twice");
            }
        }
        m_Script.data.push_back(std::move(resource));
    }

    // name ICON [flags] "file.ico"
    void Icon(const ResourceId& name, int line) {
        while (m_Token.kind == Kind::Word && IsMemoryFlag(m_Token.text)) {
            Advance();
        }
        if (m_Token.kind != Kind::String) {
            Fail("an icon file was expected");
        }
        std::vector<unsigned char> file;
        try {
            file = ToAnsi(Text());
        } catch (const std::invalid_argument& e) {
            Fail(e.what());
        }
        Advance();
        AddIcon(m_Script, name, m_Language, std::string(file.begin(), file.end()), m_File, line);
    }

    // VERSIONINFO: fixed fields up to BEGIN, then BLOCK and VALUE statements.
    void Version(int line) {
        if (!m_Script.versions.empty()) {
            Fail("a module has one VERSIONINFO");
        }
        VersionInfo version;
        version.line = line;
        const std::map<std::string, std::uint32_t*> fields = {{"FILEFLAGSMASK", &version.flagsMask},
                                                              {"FILEFLAGS", &version.flags},
                                                              {"FILEOS", &version.os},
                                                              {"FILETYPE", &version.type},
                                                              {"FILESUBTYPE", &version.subtype}};
        while (m_Token.kind == Kind::Word) {
            const std::string field = m_Token.text;
            Advance();
            if (field == "FILEVERSION" || field == "PRODUCTVERSION") {
                std::uint32_t* words =
                    field == "FILEVERSION" ? version.fileVersion : version.productVersion;
                for (int part = 0; part < 4 && (part == 0 || m_Token.kind == Kind::Comma); ++part) {
                    if (part > 0) {
                        Advance();
                    }
                    words[part / 2] |= VersionNumber(0xFFFF) << (part % 2 == 0 ? 16 : 0);
                }
            } else if (fields.contains(field)) {
                *fields.at(field) = VersionNumber(0xFFFFFFFF);
            } else {
                Fail("unknown VERSIONINFO field " + field);
            }
        }
        if (m_Token.kind != Kind::Begin) {
            Fail("BEGIN was expected");
        }
        Advance();
        version.children = VersionChildren();
        m_Script.versions.push_back(std::move(version));
    }

    std::uint32_t VersionNumber(std::uint32_t most) {
        bool isLong = false;
        std::optional<std::uint32_t> number =
            m_Token.kind == Kind::Word ? ParseNumber(m_Token.text, isLong) : std::nullopt;
        if (!number || *number > most) {
            Fail("a number was expected");
        }
        Advance();
        return *number;
    }

    // The statements of a BLOCK, up to and past its END.
    std::vector<VersionNode> VersionChildren() {
        std::vector<VersionNode> children;
        while (m_Token.kind != Kind::End) {
            VersionNode node;
            node.block = IsWord("BLOCK");
            if (!node.block && !IsWord("VALUE")) {
                Fail("BLOCK, VALUE or END was expected");
            }
            Advance();
            if (m_Token.kind != Kind::String) {
                Fail("a name was expected");
            }
            node.key = Text();
            Advance();
            if (node.block) {
                if (m_Token.kind != Kind::Begin) {
                    Fail("BEGIN was expected");
                }
                Advance();
                node.children = VersionChildren();
            } else {
                VersionValue(node);
            }
            children.push_back(std::move(node));
        }
        Advance();
        return children;
    }

    // A value is text (joined literals) or numbers: 16-bit words, or 32 bits
    // with an L.
    void VersionValue(VersionNode& node) {
        bool numbers = false;
        bool isLong = false;
        while (m_Token.kind == Kind::Comma || m_Token.kind == Kind::String ||
               (m_Token.kind == Kind::Word && ParseNumber(m_Token.text, isLong))) {
            if (m_Token.kind == Kind::String) {
                node.text = true;
                node.textValue += Text();
            } else if (m_Token.kind == Kind::Word) {
                numbers = true;
                const std::uint32_t number = *ParseNumber(m_Token.text, isLong);
                if (!isLong && number > 0xFFFF) {
                    Fail("a 16-bit number was expected");
                }
                Put(node.binary, number, isLong ? 4 : 2);
            }
            Advance();
        }
        if (node.text && numbers) {
            Fail("a VALUE is either text or numbers");
        }
    }

    static void Put(std::vector<unsigned char>& bytes, std::uint32_t value, int width) {
        for (int i = 0; i < width; ++i) {
            bytes.push_back(static_cast<unsigned char>(value >> (8 * i)));
        }
    }

    Lexer m_Lexer;
    const std::string& m_File;
    Script& m_Script;
    Token m_Token;
    std::uint16_t m_Language = 0;
};

}  // namespace

void Parse(std::string_view source, const std::string& fileName, Script& script) {
    if (source.starts_with("\xEF\xBB\xBF")) {
        source.remove_prefix(3);
    }
    Parser parser(source, fileName, script);
    parser.Run();
}

}  // namespace nvk::rc
