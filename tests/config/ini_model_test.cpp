// The in-memory model: how text is parsed into sections and written back.
#include <gtest/gtest.h>

#include <string>

#include "nvk/config/ini_file.h"

namespace {

std::string Text(const Chaine& value) {
    return {value.c_str(), static_cast<std::size_t>(value.Length())};
}

// Parses `text` and returns what Close would write.
std::string Rewrite(const char* text) {
    EIniFile ini;
    ini.ReadInData(text);
    return Text(ini.AsChaine());
}

TEST(IniModel, CommentsNamedAndUnnamedLines) {
    EIniFile ini;
    ini.ReadInData("[A]\r\n\r\n;c\r\nx=1\r\n;d\r\ny\r\nz=2\r\n");
    EIniFile::SectionDesc& a = ini["A"];
    EXPECT_EQ(a.GetNamedLinesNB(), 2u);
    EXPECT_EQ(Text(a.GetLineName(0)), "x");
    EXPECT_EQ(Text(a.GetLineName(1)), "z");
    EXPECT_EQ(a.UnNamedSize(), 1u);
    EXPECT_EQ(Text(a[0u]), "y");
    // The comment after the first data line is gone; unnamed lines move last.
    EXPECT_EQ(Text(a.AsChaine()), ";c\r\nx=1\r\nz=2\r\ny\r\n");
    EXPECT_EQ(Text(ini.AsChaine()), "[A]\r\n;c\r\nx=1\r\nz=2\r\ny\r\n");
}

TEST(IniModel, SectionHeaders) {
    // A header with no line under it makes no section.
    EXPECT_EQ(Rewrite("[Empty]\r\n[B]\r\nk=v\r\n"), "[B]\r\nk=v\r\n");
    // Brackets nest, and what follows the closing one is ignored.
    EXPECT_EQ(Rewrite("[a[b]c] tail\nk=v\n"), "[a[b]c]\r\nk=v\r\n");
    // An empty or unclosed name sends the lines to the preamble.
    EXPECT_EQ(Rewrite("[]\nq=1\n[A]\nk=v\n[open\n;r\n"), "q=1\r\n;r\r\n[A]\r\nk=v\r\n");
    // Sections meet again under any case, with the first spelling.
    EXPECT_EQ(Rewrite("[Sec]\na=1\n[Other]\nb=2\n[SEC]\nc=3\n"),
              "[Sec]\r\na=1\r\nc=3\r\n\r\n[Other]\r\nb=2\r\n");
}

TEST(IniModel, PreambleAndLineEnds) {
    EXPECT_EQ(Rewrite("; head\r\n\r\n  free text\r\n[S]\r\nk=v\r\n"),
              "; head\r\n  free text\r\n[S]\r\nk=v\r\n");
    EXPECT_EQ(Rewrite("; head\n[S]\nk=v\n[T]\nj=w"), Rewrite("; head\r\n[S]\r\nk=v\r\n[T]\r\nj=w"));
    // Carriage returns go from both ends of each line, but a text without a
    // line feed is taken whole.
    EXPECT_EQ(Rewrite("\r\rtext\r\r\n"), "text\r\n");
    EXPECT_EQ(Rewrite("text\r"), "text\r\r\n");
}

TEST(IniModel, NamesAndValues) {
    EIniFile ini;
    ini.ReadInData("[S]\nA=1\nkey = value\n=x\na=2\n  ;dropped\n  lead\n");
    const EIniFile& view = ini;
    EXPECT_EQ(Text(view["S"]["A"]), "2");
    EXPECT_EQ(Text(view["S"]["key "]), " value");
    EXPECT_EQ(Text(view["S"][""]), "x");
    EXPECT_EQ(Text(ini.AsChaine()), "[S]\r\nA=2\r\nkey = value\r\n=x\r\nlead\r\n");
}

TEST(IniModel, SectionAccess) {
    EIniFile ini;
    ini.ReadInData("[A]\nk=v\n");
    const EIniFile& view = ini;
    EXPECT_EQ(view["missing"].GetNamedLinesNB(), 0u);
    EXPECT_FALSE(ini.SectionExist("missing"));
    EXPECT_TRUE(ini.SectionExist("a"));

    ini["B"]["x"] = "1";
    ASSERT_EQ(ini.GetSectionNames().Size(), 2);
    EXPECT_EQ(Text(ini.GetSectionName(1)), "B");
    EXPECT_EQ(Text(ini.GetSectionName(7)), "");

    // By place: the order grows, and the new place is the empty name.
    ini[3u]["y"] = "2";
    EXPECT_EQ(ini.GetSectionNames().Size(), 4);
    EXPECT_EQ(Text(ini.GetSectionName(3)), "");
    EXPECT_EQ(Text(view[3u]["y"]), "2");
    EXPECT_EQ(view[9u].GetNamedLinesNB(), 0u);
}

TEST(IniModel, SectionDescLines) {
    EIniFile::SectionDesc section;
    section.AddLine("one=1");
    section.AddLine("two=2");
    section.AddLine("bare");
    EXPECT_EQ(Text(section.GetLine(1)), "2");
    const EIniFile::SectionDesc& view = section;
    EXPECT_EQ(Text(view.GetLine(5)), "");
    EXPECT_EQ(Text(view[4u]), "");

    EXPECT_TRUE(section.RemoveLine("ONE"));
    EXPECT_FALSE(section.RemoveLine("one"));
    EXPECT_EQ(Text(section.GetLineName(0)), "two");

    // The unnamed lines are handed over shared, and copied on change.
    PTableau<Chaine> lines;
    section.GetUnNamedLines(lines);
    lines.Add("more");
    EXPECT_EQ(section.UnNamedSize(), 1u);
    section.SetUnNamedLines(lines);
    EXPECT_EQ(Text(section.AsChaine()), "two=2\r\nbare\r\nmore\r\n");

    section.Clean();
    EXPECT_EQ(Text(section.AsChaine()), "");
    EXPECT_EQ(section.GetNamedLinesNB(), 0u);
}

// The written text is sized from the sections' dictionaries; an order that
// names one line more than once writes more than they hold.
TEST(IniModel, OrderLongerThanTheDictionaryIsWrittenWhole) {
    EIniFile ini;
    ini.ReadInData("[S]\r\nb=2\r\n");
    ini["S"].GetLine(3) = "x";  // three more places, all of the empty name
    std::string expected = "[S]\r\nb=2\r\n=x\r\n=x\r\n=x\r\n";
    EXPECT_EQ(Text(ini.AsChaine()), expected);
    // Large enough that the room has to grow more than once.
    for (unsigned i = 4; i < 3000; ++i) {
        ini["S"].GetLine(i);
        expected += "=x\r\n";
    }
    EXPECT_EQ(Text(ini.AsChaine()), expected);
}

TEST(IniModel, RemoveAndRenameSections) {
    EIniFile ini;
    ini.ReadInData("[A]\na=1\n[B]\nb=1\n[C]\nc=1\n");
    EXPECT_TRUE(ini.ChangeSectionName("A", "a"));
    EXPECT_EQ(Text(ini.GetSectionName(0)), "A");
    EXPECT_FALSE(ini.ChangeSectionName("A", "c"));
    EXPECT_TRUE(ini.ChangeSectionName("nothing", "D"));

    // A name above all others keeps its place in the order, and every section
    // is still found.
    EXPECT_TRUE(ini.ChangeSectionName("a", "Z"));
    EXPECT_EQ(Text(ini.AsChaine()), "[Z]\r\na=1\r\n\r\n[B]\r\nb=1\r\n\r\n[C]\r\nc=1\r\n");
    EXPECT_TRUE(ini.SectionExist("c"));
    EXPECT_TRUE(ini.SectionExist("z"));

    EXPECT_TRUE(ini.RemoveSection("b"));
    EXPECT_FALSE(ini.RemoveSection("B"));
    EXPECT_EQ(ini.GetSectionNB(), 2u);
    EXPECT_EQ(Text(ini.AsChaine()), "[Z]\r\na=1\r\n\r\n[C]\r\nc=1\r\n");
}

TEST(IniModel, MemoryObjectsWriteNothing) {
    EIniFile ini;
    ini.ReadInData("[A]\nk=v\n");
    // Open, so a second text is refused.
    ini.ReadInData("[B]\nk=v\n");
    EXPECT_TRUE(ini.SectionExist("A"));
    EXPECT_FALSE(ini.Open("unused.ini", true));
    EXPECT_TRUE(ini.Close());
    EXPECT_EQ(ini.GetSectionNB(), 0u);
    EXPECT_EQ(Text(ini.GetFileName()), "");
}

}  // namespace
