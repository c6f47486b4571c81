// nvk table: the string tables packed in one text.
#include <iostream>
#include <string>

#include "cli.h"
#include "nvk/platform/string_table.h"

namespace nvk::tool {
namespace {

int Get(const Args& args);
int Index(const Args& args);

const Command kCommands[] = {
    {"get", "TEXT INDEX [--sep1 C] [--sep2 C]", "prints the entry at INDEX of a table", Get,
     "answers: the entry (exit 0), or nothing outside the table (exit 1). TEXT is\n"
     "\"base<sep1>entry<sep2>entry...\" or the entries alone, from 0; the separators are \"|\"\n"
     "and a line feed unless given (\\n and \\t name those characters). With a base, the last\n"
     "index is the number of separators less one, whatever the base."},
    {"index", "TEXT ENTRY", "prints the index of the first entry equal to ENTRY", Index,
     "answers: the index (exit 0), or nothing when no entry is equal (exit 1); the\n"
     "separators are \"|\" and a line feed."},
};

// One character, or the escapes \n and \t.
bool Separator(const std::string& text, char& sep) {
    if (text == "\\n" || text == "\\t") {
        sep = text[1] == 'n' ? '\n' : '\t';
        return true;
    }
    if (text.size() != 1) {
        return false;
    }
    sep = text[0];
    return true;
}

int Get(const Args& given) {
    Args args = given;
    char sep1 = '|';
    char sep2 = '\n';
    if (!Separator(TakeOption(args, "--sep1", "|"), sep1) ||
        !Separator(TakeOption(args, "--sep2", "\\n"), sep2)) {
        return Fail("a separator is one character, \\n or \\t");
    }
    if (!Expect(args, 2, 2, kCommands[0])) {
        return kFailure;
    }
    long long index = 0;
    if (!ParseLong(args[1], index) || index < -0x80000000LL || index > 0x7FFFFFFF) {
        return Fail("an index is a whole number");
    }
    CStringTable table(args[0].c_str(), sep1, sep2);
    if (index < table.GetZeroBaseIndex() || index > table.GetMaxIndex()) {
        std::cerr << "nvk: no entry " << index << ": the table runs from "
                  << table.GetZeroBaseIndex() << " to " << table.GetMaxIndex() << '\n';
        return kNegative;
    }
    std::cout << table.GetString(static_cast<int>(index)).GetString() << '\n';
    return kOk;
}

int Index(const Args& args) {
    if (!Expect(args, 2, 2, kCommands[1])) {
        return kFailure;
    }
    const CStringTable table(args[0].c_str(), '|', '\n');
    const int index = table.GetIndex(args[1].c_str());
    if (index < table.GetZeroBaseIndex()) {
        std::cerr << "nvk: no entry is \"" << args[1] << "\"\n";
        return kNegative;
    }
    std::cout << index << '\n';
    return kOk;
}

void Demo(std::ostream& out) {
    CStringTable table("2|deux\ntrois\nquatre\n", '|', '\n');
    out << "  \"2|deux\\ntrois\\nquatre\\n\": indices " << table.GetZeroBaseIndex() << " to "
        << table.GetMaxIndex() << ", entry 2 \"" << table.GetString(2).GetString()
        << "\", \"trois\" at " << table.GetIndex("trois") << '\n';
}

const RegisterArea kArea({"table", "string tables packed in one text", kCommands, Demo, 110});

}  // namespace
}  // namespace nvk::tool
