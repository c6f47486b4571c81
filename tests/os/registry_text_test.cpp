// The registry's text form read as the registry editors import it, written
// so that whatever the reader takes comes back unchanged, and imported into
// the registry and exported from it.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "os/api/nls.h"
#include "os/api/registry.h"
#include "os/common/registry_text.h"
#include "os_test_support.h"

namespace nvk::os::common {
namespace {

// The value "v" of HKEY_CURRENT_USER\T after the text: "type:bytes in hex",
// "none" when missing, "refused" without a header. `whole` receives whether
// every line was read.
std::string ValueAfter(const std::string& text, bool* whole = nullptr) {
    auto sections = ParseRegistryText(text, whole);
    if (!sections) {
        return "refused";
    }
    RegistryKey tree;
    ApplySections(*sections, "HKEY_CURRENT_USER", tree);
    RegistryKey* key = tree.FindSubkey("T");
    RegistryValue* value = key != nullptr ? key->FindValue("v") : nullptr;
    if (value == nullptr) {
        return "none";
    }
    std::string out = std::to_string(value->type) + ":";
    for (unsigned char c : value->data) {
        out += "0123456789abcdef"[c >> 4];
        out += "0123456789abcdef"[c & 15];
    }
    return out;
}

std::string InKey(const std::string& lines, const char* header = "REGEDIT4") {
    return std::string(header) + "\n[HKEY_CURRENT_USER\\T]\n" + lines + "\n";
}

TEST(RegistryTextTest, ReadsAsTheRegistryEditorsImport) {
    struct Case {
        std::string text;
        std::string value;
    };
    const Case cases[] = {
        // A backslash at the end of a line goes on only in hexadecimal data,
        // after a comma; blank and comment lines inside are passed over.
        {InKey("\"v\"=hex:01,02,\\\n  03"), "3:010203"},
        {InKey("\"v\"=hex:01,02,\\\n\n; note\n  03,\\ ; more\n  04"), "3:01020304"},
        {InKey("\"v\"=hex:01,\\"), "3:01"},
        {InKey("\"v\"=hex:01,02\\\n  03"), "none"},
        {InKey("\"v\"=hex:01,\\\n  zz"), "none"},
        {InKey("\"v\"=hex:01,\\\n\"w\"=dword:1"), "none"},
        {InKey("; a comment \\\n\"v\"=dword:1"), "4:01000000"},
        {InKey("\"v\"=\"a\\\n\"v\"=\"b\""), "1:6200"},
        {InKey("\"v\"=dword:1,\\\n  2"), "none"},
        {InKey("\"v\"=hex:01 02"), "none"},
        {InKey("\"v\"=hex:01,,02"), "none"},
        {InKey("\"v\"=hex:1ff"), "none"},
        // Comments after the data.
        {InKey("\"v\"=\"x\";c"), "1:7800"},
        {InKey("\"v\"=\"x\" ;c"), "1:7800"},
        {InKey("\"v\"=dword:00000001 ;c"), "4:01000000"},
        {InKey("\"v\"=hex:01 ;c"), "3:01"},
        {InKey("\"v\"=hex:01,02, ;c"), "3:0102"},
        {InKey("\"v\"=\"x\"\n\"v\"=- ;c"), "none"},
        {InKey("\"v\"=\"x\"\n\"v\"=- x"), "1:7800"},
        {InKey("\"v\"=\"x\" y"), "none"},
        // Escapes: "\0" is refused, "\n" and "\r" are line breaks, any other
        // character stands for itself.
        {InKey("\"v\"=\"a\\0b\""), "none"},
        {InKey("\"v\"=\"a\\nb\\r\\q\\\\\\\"\""), "1:610a620d715c2200"},
        // Text in hexadecimal gets its terminating zero.
        {InKey("\"v\"=hex(2):41,00,42,00", "Windows Registry Editor Version 5.00"), "2:414200"},
        {InKey("\"v\"=hex(1):41,00,00,00", "Windows Registry Editor Version 5.00"), "1:4100"},
        {InKey("\"v\"=hex(7):41,00,00,00,42,00", "Windows Registry Editor Version 5.00"),
         "7:41004200"},
        {InKey("\"v\"=hex(1):41,42"), "1:414200"},
        {InKey("\"v\"=hex(2):"), "2:"},
        {InKey("\"v\"=hex(715):01"), "1813:01"},
        {InKey("\"v\"=hex(100000000):01"), "none"},
        // Blanks after "dword:", at most 8 digits.
        {InKey("\"v\"=dword: \t0000002a"), "4:2a000000"},
        {InKey("\"v\"=dword:000000001"), "none"},
        {InKey("\"v\"=dword:"), "none"},
        {InKey("\"v\"=dword:12x"), "none"},
        {InKey("\"v\" = \"x\""), "1:7800"},
        // Line ends: CR alone, CR LF, LF.
        {"REGEDIT4\r[HKEY_CURRENT_USER\\T]\r\"v\"=hex:01,\\\r  02\r", "3:0102"},
        {"REGEDIT4\r\n[HKEY_CURRENT_USER\\T]\r\n\"v\"=dword:2\r\n", "4:02000000"},
        // The header is the first line; blanks may come before it.
        {"\nREGEDIT4\n[HKEY_CURRENT_USER\\T]\n\"v\"=dword:2\n", "refused"},
        {" \tREGEDIT4\n[HKEY_CURRENT_USER\\T]\n\"v\"=dword:2\n", "4:02000000"},
        {"REGEDIT4X\n[HKEY_CURRENT_USER\\T]\n\"v\"=dword:2\n", "refused"},
        // A section of an unknown root is skipped alone, with its values.
        {"REGEDIT4\n[HKEY_NOWHERE\\T]\n\"v\"=dword:1\n[HKEY_CURRENT_USER\\T]\n\"w\"=dword:1\n",
         "none"},
        {InKey("\"v\"=dword:1\n[HKEY_NOWHERE\\T]\n\"v\"=dword:2"), "4:01000000"},
        {"REGEDIT4\n[HKEY_NOWHERE\\T]\n[HKEY_CURRENT_USER\\T]\n\"v\"=dword:3\n", "4:03000000"},
        // A line that opens no section leaves the current one open; one
        // that opens a section that can't be (no root) closes it.
        {InKey("[ HKEY_CURRENT_USER\\U]\n\"v\"=dword:4"), "4:04000000"},
        {InKey("[HKEY_CURRENT_USER\\U\n\"v\"=dword:4"), "4:04000000"},
        {InKey("[]\n\"v\"=dword:4"), "none"},
        {InKey("[HKEY_CURRENT_USER\\\\U]\n\"v\"=dword:4"), "none"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(ValueAfter(one.text), one.value) << one.text;
    }

    bool whole = false;
    ValueAfter(InKey("; note\n\n\"v\"=hex:01,\\\n  02 ;c\n@=\"x\""), &whole);
    EXPECT_TRUE(whole);
    for (const char* skipped :
         {"junk", "\"v\"=dword:x", "[HKEY_NOWHERE\\x]", "[ x]", "\"v\"=\"\\0\""}) {
        ValueAfter(InKey(skipped), &whole);
        EXPECT_FALSE(whole) << skipped;
    }
    ValueAfter("", &whole);
    EXPECT_TRUE(whole);
    ValueAfter("\x01\x02garbage", &whole);
    EXPECT_FALSE(whole);
}

// Random trees whose names and data hold what the text form must escape,
// through the writer and the reader: the same tree comes back, whole.
TEST(RegistryTextTest, WhatTheWriterWritesReadsBackTheSame) {
    std::mt19937 random(7);
    const std::string alphabet = std::string("a\"\\]=[;@- \t\r\n\x01\xE9", 16) + '\0';
    auto text = [&](std::size_t most, bool zero) {
        std::string out;
        for (std::size_t n = random() % (most + 1); n > 0; --n) {
            char c = alphabet[random() % alphabet.size()];
            out += zero || c != '\0' ? c : 'z';
        }
        return out;
    };
    const DWORD types[] = {REG_NONE,  REG_SZ,       REG_EXPAND_SZ, REG_BINARY,
                           REG_DWORD, REG_MULTI_SZ, 0x715,         0xFFFFFFFF};
    for (int round = 0; round < 300; ++round) {
        RegistryKey tree;
        for (int k = 0; k < 4; ++k) {
            std::string name = text(6, false);
            name.erase(std::remove_if(name.begin(), name.end(),
                                      [](char c) { return c == '\\' || c == '\r' || c == '\n'; }),
                       name.end());
            RegistryKey& key = name.empty() ? tree : tree.Subkey("k").Subkey(name);
            for (int v = 0; v < 3; ++v) {
                RegistryValue value{text(5, false), types[random() % std::size(types)],
                                    text(90, true)};
                bool isText = value.type == REG_SZ || value.type == REG_EXPAND_SZ ||
                              value.type == REG_MULTI_SZ;
                if (isText && !value.data.empty() && value.data.back() != '\0') {
                    value.data += '\0';  // as the calls store them
                }
                if (key.FindValue(value.name) == nullptr) {
                    key.values.push_back(value);
                }
            }
        }
        std::string once = FormatRegistryText("HKEY_USERS", {}, tree);
        bool whole = false;
        auto sections = ParseRegistryText(once, &whole);
        ASSERT_TRUE(sections.has_value());
        EXPECT_TRUE(whole) << once;
        RegistryKey back;
        ApplySections(*sections, "HKEY_USERS", back);
        ASSERT_EQ(FormatRegistryText("HKEY_USERS", {}, back), once);
    }
}

// The text as the editor's Unicode files hold it: UTF-16LE behind its mark.
std::string Utf16Bytes(const std::string& text) {
    std::basic_string<WCHAR> wide(text.size(), WCHAR{});
    MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                        static_cast<int>(wide.size()));
    std::string bytes = "\xFF\xFE";
    for (WCHAR unit : wide) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

// A key written as text, imported from a Unicode file into the registry,
// exports as the same text, and a deletion takes it all away. The values are
// made in the order of their names, the order in which Windows may list them.
TEST(RegistryTextTest, ImportedKeysExportAsTheirText) {
    test::TempFolder folder;
    test::ScopedEnv registry("NVK_REGISTRY_DIR", folder.str().c_str());
    RegistryKey tree;
    tree.values = {{"", REG_SZ, std::string("default\0", 8)},
                   {"a \"quoted\" \\ name", REG_SZ,
                    std::string("C:\\Donn\xE9"
                                "es\r\n\0",
                                13)},
                   {"b", REG_DWORD, std::string("\x2A\0\0\0", 4)},
                   {"c", REG_BINARY, std::string(100, '\x5A')},
                   {"d", REG_MULTI_SZ, std::string("one\0two\0\0", 9)},
                   {"e", REG_EXPAND_SZ, std::string("%TEMP%\\x\0", 9)}};
    tree.Subkey("Below").values = {{"f", REG_NONE, ""}};
    const std::vector<std::string> path = {"Software", "NvkTextTest"};
    std::string text = FormatRegistryText("HKEY_CURRENT_USER", path, tree);
    ASSERT_EQ(RegImportText(Utf16Bytes(text)), ERROR_SUCCESS);
    std::string exported;
    ASSERT_EQ(RegExportText(HKEY_CURRENT_USER, "software\\nvktexttest", exported), ERROR_SUCCESS);
    EXPECT_EQ(exported, text);
    ASSERT_EQ(RegImportText("REGEDIT4\r\n[-HKEY_CURRENT_USER\\Software\\NvkTextTest]\r\n"),
              ERROR_SUCCESS);
    EXPECT_EQ(RegExportText(HKEY_CURRENT_USER, "Software\\NvkTextTest", exported),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegImportText("[HKEY_CURRENT_USER\\x]\r\n"), ERROR_BAD_FORMAT);
}

}  // namespace
}  // namespace nvk::os::common
