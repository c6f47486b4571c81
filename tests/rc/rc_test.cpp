#include <gtest/gtest.h>

#include <string>

#include "rc_parser.h"
#include "rc_writer.h"

namespace nvk::rc {
namespace {

Script ParseText(const std::string& text) {
    Script script;
    Parse(text, "test.rc", script);
    return script;
}

std::string Error(const std::string& text) {
    try {
        ParseText(text);
    } catch (const RcError& e) {
        return e.what();
    }
    return "no error";
}

TEST(RcParser, StringTablesInTheirLanguages) {
    Script script = ParseText(
        "\xEF\xBB\xBF#pragma code_page(65001)\n"
        "LANGUAGE LANG_GERMAN, SUBLANG_GERMAN_SWISS\n"
        "STRINGTABLE DISCARDABLE\n{\n"
        "  17, \"M\xC3\xA4rz\\n\" \"\"\"Tab\\there\"\"\"   // joined literals\n"
        "  /* a comment */ 0x20 L\"\\x41\\101\"\n"
        "}\n"
        "STRINGTABLE LANGUAGE 0x0C, 1 BEGIN 17 \"mars\" END\n");
    ASSERT_EQ(script.strings.size(), 3u);
    EXPECT_EQ(script.strings[0].language, 2055);
    EXPECT_EQ(script.strings[0].id, 17);
    EXPECT_EQ(script.strings[0].text, u"M\u00E4rz\n\"Tab\there\"");
    EXPECT_EQ(script.strings[0].line, 5);
    EXPECT_EQ(script.strings[1].text, u"AA");
    EXPECT_EQ(script.strings[2].language, 1036);
}

TEST(RcParser, DataIsWindows1252WithoutTerminator) {
    Script script = ParseText(
        "LANGUAGE LANG_NEUTRAL, SUBLANG_NEUTRAL\n"
        "1 TXT BEGIN \"d\xC3\xA9j\xC3\xA0 \xE2\x82\xAC\\r\\n\", 0x102, 3L, L\"A\" END\n"
        "data rcdata { \"x\" }\n");
    ASSERT_EQ(script.data.size(), 2u);
    const DataResource& text = script.data[0];
    EXPECT_EQ(text.type, (ResourceId{"TXT", 0}));
    EXPECT_EQ(text.name, (ResourceId{"", 1}));
    EXPECT_EQ(std::string(text.bytes.begin(), text.bytes.end()),
              std::string("d\xE9j\xE0 \x80\r\n\x02\x01\x03\0\0\0A\0", 16));
    EXPECT_EQ(script.data[1].type, (ResourceId{"", 10}));
    EXPECT_EQ(script.data[1].name, (ResourceId{"DATA", 0}));
}

TEST(RcParser, FaultsAreToldWithTheirLine) {
    EXPECT_EQ(Error("LANGUAGE LANG_KLINGON, 1"), "test.rc:1: unknown language LANG_KLINGON");
    EXPECT_EQ(Error("STRINGTABLE\nBEGIN\n 1 \"open\nEND"),
              "test.rc:3: a string is not closed on its line");
    EXPECT_EQ(Error("STRINGTABLE BEGIN 1 \"\xE2\x86\x92\" END"),
              "test.rc:1: a character has no Windows-1252 byte");
    EXPECT_EQ(Error("STRINGTABLE BEGIN 1 \"a\"\n1 \"b\" END"),
              "test.rc:2: string 1 is defined twice");
    EXPECT_EQ(Error("STRINGTABLE BEGIN 1 \"\xC3\" END"), "test.rc:1: the text is not UTF-8");
    EXPECT_EQ(Error("STRINGTABLE BEGIN 70000 \"a\" END"), "test.rc:1: a string id was expected");
    EXPECT_EQ(Error("#include \"x.h\""), "test.rc:1: only #pragma directives are supported");
    EXPECT_EQ(Error("1 TXT BEGIN \"a\""), "test.rc:1: data or END was expected");
    EXPECT_EQ(Error("1 TXT { \"\\q\" }"), "test.rc:1: unknown escape \\q");
    EXPECT_EQ(Error("/* open"), "test.rc:1: a comment is not closed");
}

TEST(RcWriter, StringsGoIntoBlocksOfSixteenCountedStrings) {
    Script script = ParseText(
        "STRINGTABLE BEGIN 0 \"ab\" 2 \"c\" 16 \"d\" END\n"
        "LANGUAGE 9, 1\nSTRINGTABLE BEGIN 15 \"e\" END");
    std::vector<TableEntry> table = Layout(script);
    ASSERT_EQ(table.size(), 3u);
    EXPECT_EQ(table[0].name.number, 1);
    EXPECT_EQ(table[0].language, 0);
    std::vector<std::uint16_t> first = {2, u'a', u'b', 0, 1, u'c'};
    first.resize(19, 0);
    EXPECT_EQ(table[0].units, first);
    EXPECT_EQ(table[1].name.number, 1);
    EXPECT_EQ(table[1].language, 0x0409);
    EXPECT_EQ(table[1].units.back(), u'e');
    EXPECT_EQ(table[2].name.number, 2);
    EXPECT_EQ(table[2].units.size(), 17u);
}

}  // namespace
}  // namespace nvk::rc
