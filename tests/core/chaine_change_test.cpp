#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"

namespace {

std::vector<std::string> Fields(const PTableau<Chaine>& array) {
    std::vector<std::string> fields;
    for (int i = 0; i < array.Size(); ++i) {
        fields.emplace_back(array[i].c_str(), static_cast<std::size_t>(array[i].Length()));
    }
    return fields;
}

using Strings = std::vector<std::string>;

TEST(ChaineSearch, SetsQuotesCountsAndBrackets) {
    const Chaine text("key = \"a;b\"\"c;d\";e");
    EXPECT_EQ(text.FindOneOf(";="), 4);
    EXPECT_EQ(text.FindOneOf(";", 5), 8);
    EXPECT_EQ(text.FindOneOf(""), -1);
    EXPECT_TRUE(Chaine("0110").ConsistsOf("01"));
    EXPECT_FALSE(Chaine("012").ConsistsOf("01"));
    EXPECT_TRUE(Chaine().ConsistsOf(""));
    EXPECT_EQ(text.FindCharQuoted(';', '"'), 16);  // the doubled quote stays inside
    EXPECT_EQ(text.FindCharQuoted('"', '"'), 6);   // a c equal to quote is found at once
    EXPECT_EQ(text.FindCharQuoted('E', '"', true, 2), 17);
    EXPECT_EQ(Chaine("\"open;").FindCharQuoted(';', '"'), -1);
    EXPECT_EQ(text.CountChar('"'), 4);
    EXPECT_EQ(text.CountChar('E', true), 2);

    const Chaine nested("f(a(b)c)(d)x");
    EXPECT_STREQ(nested.GetBracketed('(', ')', 0), "f");
    EXPECT_STREQ(nested.GetBracketed('(', ')', 1), "a(b)c");
    EXPECT_STREQ(nested.GetBracketed('(', ')', 2), "d");
    EXPECT_TRUE(nested.GetBracketed('(', ')', 3).IsEmpty());
    EXPECT_STREQ(Chaine("abc").GetBracketed('[', ']', 0), "abc");
    EXPECT_TRUE(Chaine("a(b").GetBracketed('(', ')', 1).IsEmpty());
}

TEST(ChaineChange, ReplaceAndRemove) {
    Chaine grow("aXa");
    EXPECT_EQ(grow.Replace("a", "aa"), 0);
    EXPECT_STREQ(grow, "aaXaa");
    // Same size: written in place, overlapping matches seen in the changed text.
    Chaine overlap("aaaa");
    overlap.Replace("aa", "ba");
    EXPECT_STREQ(overlap, "bbba");
    Chaine folded("One one ONE");
    folded.Replace("one", "1", true, 1);
    EXPECT_STREQ(folded, "One 1 1");
    Chaine shared("x-y-z");
    const Chaine copy(shared);
    shared.Replace("-", "+");
    EXPECT_STREQ(copy, "x-y-z");
    EXPECT_STREQ(shared, "x+y+z");
    shared.Replace("+", "");
    EXPECT_STREQ(shared, "xyz");
    Chaine self("abab");
    self.Replace(self.c_str() + 2, "c");  // an argument read from our own text
    EXPECT_STREQ(self, "cc");
    // Every place, as a scan from the start that skips each place it
    // replaces finds them: texts dense in places and sparse, with more places
    // than are held at once, from starts within the text.
    std::mt19937 random(7);
    const char* const needles[] = {"ab", "aa", "aba", "abba", "b<a", "<<<<<<<<<<<<<<<<<<a"};
    for (int round = 0; round < 600; ++round) {
        const std::string needle = needles[round % std::size(needles)];
        const std::string with = needle.size() == 2 ? "xyz" : "#";
        std::string text(random() % (round < 60 ? 1400 : 100), ' ');
        for (char& c : text) {
            c = "aab<"[random() % 4];
        }
        const std::size_t start = random() % (text.size() / 4 + 1);
        Chaine value(text.c_str());
        value.Replace(needle.c_str(), with.c_str(), false, static_cast<int>(start));
        std::string expected = text.substr(0, start);
        for (std::size_t i = start; i < text.size();) {
            const bool hit = text.compare(i, needle.size(), needle) == 0;
            expected += hit ? with : text.substr(i, 1);
            i += hit ? needle.size() : 1;
        }
        ASSERT_EQ(std::string(value), expected) << "round " << round;
    }

    Chaine first("a.b.c");
    EXPECT_EQ(first.ReplaceFirst(".", "::", false, 2), 3);
    EXPECT_STREQ(first, "a.b::c");
    EXPECT_EQ(first.ReplaceFirst("?", "!"), -1);

    Chaine removed("abcABCabc");
    removed.Remove("B", true, 3);
    EXPECT_STREQ(removed, "abcACac");
    removed.Remove("");
    EXPECT_STREQ(removed, "abcACac");
}

TEST(ChaineChange, CharactersSetsAndOrder) {
    Chaine text("a,b,c");
    EXPECT_EQ(text.ReplaceFirstChar(',', ';', 2), 3);
    text.ReplaceChar(',', '|');
    EXPECT_STREQ(text, "a|b;c");
    EXPECT_EQ(text.ReplaceFirstChar('\0', 'x'), -1);  // never the terminator
    Chaine zeros("a\0b\0", 4);
    zeros.RemoveChar('\0');
    EXPECT_EQ(zeros.Length(), 2);
    EXPECT_STREQ(zeros, "ab");
    Chaine digits("tel: 01-23 45");
    const Chaine before(digits);
    digits.KeepOnly("0123456789");
    EXPECT_STREQ(digits, "012345");
    EXPECT_STREQ(before, "tel: 01-23 45");
    Chaine set("a-b c");
    set.RemoveSet("- ");
    EXPECT_STREQ(set, "abc");
    Chaine alnum("\xE9t\xE9-2024!");
    alnum.KeepAlnum();
    EXPECT_STREQ(alnum, "t2024");
    Chaine reversed("abc\0de", 6);
    reversed.Reverse();
    EXPECT_EQ(std::string(reversed.c_str(), 6), std::string("cba\0de", 6));
}

TEST(ChaineChange, QuoteAndUnquote) {
    Chaine text("say \"hi\"");
    text.Quote();
    EXPECT_STREQ(text, "\"say \"\"hi\"\"\"");
    text.Unquote();
    EXPECT_STREQ(text, "say \"hi\"");
    Chaine pair("\"\"");
    pair.Unquote('"');
    EXPECT_TRUE(pair.IsEmpty());
    Chaine single("'a'b''c'");
    single.Unquote('\'');
    EXPECT_STREQ(single, "ab'c");
    Chaine empty;
    empty.Quote('\'');
    EXPECT_STREQ(empty, "''");
}

TEST(ChaineSplit, QuotedSimpleLinesAndFirst) {
    PTableau<Chaine> out;
    EXPECT_EQ(Chaine("a;\"b;c\";d").Split(out, ';'), 3);
    EXPECT_EQ(Fields(out), (Strings{"a", "\"b;c\"", "d"}));
    Chaine("x;\"y;\"\"z\";;").Split(out, ';', '"', false, true);
    EXPECT_EQ(Fields(out), (Strings{"x", "y;\"z", "", ""}));
    const Chaine whole("no separator");
    whole.Split(out, ';');
    ASSERT_EQ(out.Size(), 1);
    EXPECT_EQ(out[0].Buffer(), whole.Buffer());  // shared
    Chaine().Split(out, ';');
    EXPECT_EQ(Fields(out), (Strings{""}));

    EXPECT_EQ(Chaine().SplitSimple(out, ','), 0);
    Chaine("aXbxc").SplitSimple(out, 'x', true);
    EXPECT_EQ(Fields(out), (Strings{"a", "b", "c"}));
    Chaine("a,\"b,c\",").SplitSimple(out, ',');
    EXPECT_EQ(Fields(out), (Strings{"a", "\"b", "c\"", ""}));

    Chaine("one\r\n\rtwo\r\r\nthree\n").SplitLines(out);
    EXPECT_EQ(Fields(out), (Strings{"one", "two", "three", ""}));
    Chaine("single").SplitLines(out);
    EXPECT_EQ(Fields(out), (Strings{"single"}));

    Chaine left("unchanged");
    Chaine right("unchanged");
    EXPECT_TRUE(Chaine("key=value=x").SplitFirst('=', left, right));
    EXPECT_STREQ(left, "key");
    EXPECT_STREQ(right, "value=x");
    right = "kept";
    EXPECT_FALSE(Chaine("plain").SplitFirst('=', left, right));
    EXPECT_STREQ(left, "plain");
    EXPECT_STREQ(right, "kept");
}

// SplitSimple writes into the elements the array already has: what others
// hold of them must stay as it was, and so must the value split when it is
// one of those elements.
TEST(ChaineSplit, SimpleSplitsIntoElementsOthersStillHold) {
    PTableau<Chaine> out;
    Chaine("alpha,beta,gamma,delta").SplitSimple(out, ',');
    const PTableau<Chaine> copy(out);  // shares the body
    const Chaine held(out[1]);         // shares an element's buffer
    Chaine("1,,3").SplitSimple(out, ',');
    EXPECT_EQ(Fields(out), (Strings{"1", "", "3"}));
    EXPECT_TRUE(out[1].IsEmpty());
    EXPECT_EQ(Fields(copy), (Strings{"alpha", "beta", "gamma", "delta"}));
    EXPECT_STREQ(held, "beta");
    Chaine("a,b,c,d,e,f").SplitSimple(out, ',');
    EXPECT_EQ(Fields(out), (Strings{"a", "b", "c", "d", "e", "f"}));

    out[2] = "x;yy;zzz";
    const Chaine third = out[2];
    out[2].SplitSimple(out, ';');
    EXPECT_EQ(Fields(out), (Strings{"x", "yy", "zzz"}));
    EXPECT_STREQ(third, "x;yy;zzz");
}

TEST(ChaineSplit, JoinWithAndWithoutSeparator) {
    PTableau<Chaine> parts;
    parts.Add(Chaine("a"));
    parts.Add(Chaine());
    parts.Add(Chaine("bc"));
    Chaine joined("old");
    joined.Join(',', parts);
    EXPECT_STREQ(joined, "a,,bc");
    joined.Join('\0', parts);
    EXPECT_EQ(joined.Length(), 5);
    EXPECT_EQ(std::string(joined.c_str(), 6), std::string("a\0\0bc\0", 6));
    joined.Join(',', PTableau<Chaine>());
    EXPECT_TRUE(joined.IsEmpty());
}

TEST(ChaineNumbers, IntegersAndHexBytes) {
    EXPECT_EQ(Chaine(" 1 234 ").ToInt(), 1234);
    EXPECT_EQ(Chaine("-12abc").ToInt(), -12);
    EXPECT_TRUE(Chaine(" +12 ").IsInteger(3));
    EXPECT_FALSE(Chaine("1234").IsInteger(3));
    EXPECT_FALSE(Chaine("12a").IsInteger(3));
    EXPECT_FALSE(Chaine("").IsInteger(3));
    EXPECT_TRUE(Chaine("-2147483648").IsInteger(11));
    EXPECT_FALSE(Chaine("12345678901").IsInt());
    EXPECT_STREQ(Chaine().FromInt(-2147483647 - 1), "-2147483648");

    const std::uint8_t bytes[] = {0xAB, 0x01, 0xF0};
    Chaine hex;
    EXPECT_STREQ(hex.FromHex(bytes, 3), "AB01F0");
    EXPECT_TRUE(Chaine("x").FromHex(bytes, 0).IsEmpty());

    std::uint8_t out[4] = {9, 9, 9, 9};
    EXPECT_EQ(Chaine("ab").ToBytes(out, 1), 1);
    EXPECT_EQ(out[0], 0xAB);
    EXPECT_EQ(out[1], 9);
    // A larger destination is cleared in full first; an odd last digit is dropped.
    EXPECT_EQ(Chaine("0fE").ToBytes(out, 4), 1);
    EXPECT_EQ(out[0], 0x0F);
    EXPECT_EQ(out[1], 0);
    EXPECT_EQ(out[3], 0);
    // A character that isn't a digit counts as -1: "G1" is -16 + 1.
    EXPECT_EQ(Chaine("G1").ToBytes(out, 1), 1);
    EXPECT_EQ(out[0], 0xF1);
    EXPECT_EQ(Chaine("abcdef").ToBytes(nullptr, 2), 2);
}

}  // namespace
