#include "os/api/nls.h"
#include "os/api/locale.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "os/api/error.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

using Text = std::basic_string<WCHAR>;

Text Wide(UINT codePage, const std::string& text, DWORD flags = 0) {
    const int n = MultiByteToWideChar(codePage, flags, text.data(), static_cast<int>(text.size()),
                                      nullptr, 0);
    Text wide(static_cast<std::size_t>(n), WCHAR{});
    if (n > 0) {
        EXPECT_EQ(MultiByteToWideChar(codePage, flags, text.data(), static_cast<int>(text.size()),
                                      wide.data(), n),
                  n);
    }
    return wide;
}

std::string Narrow(UINT codePage, const Text& wide, LPCSTR defaultChar = nullptr,
                   BOOL* used = nullptr) {
    char out[64] = {};
    const int n = WideCharToMultiByte(codePage, 0, wide.data(), static_cast<int>(wide.size()), out,
                                      sizeof out, defaultChar, used);
    return std::string(out, static_cast<std::size_t>(n));
}

TEST(NlsTest, AnsiOemAndUtf8CodePages) {
    // 0x80 is the euro sign in Windows-1252, 0x81 an unassigned byte kept as U+0081.
    EXPECT_EQ(Wide(CP_ACP, "\x80\x81\xE9"), NVK_WIDE("\u20AC\u0081\u00E9"));
    EXPECT_EQ(Wide(850, "\x82\x9C"), NVK_WIDE("\u00E9\u00A3"));
    EXPECT_EQ(Wide(CP_UTF8, "\xC3\xA9t\xC3\xA9"), NVK_WIDE("\u00E9t\u00E9"));
    EXPECT_EQ(Wide(CP_UTF8, "a\xFF"), NVK_WIDE("a\uFFFD"));
    EXPECT_EQ(Narrow(CP_UTF8, NVK_WIDE("\u20AC")), "\xE2\x82\xAC");
    EXPECT_EQ(Narrow(1252, NVK_WIDE("\u20AC\u00E9")), "\x80\xE9");

    BOOL used = FALSE;
    EXPECT_EQ(Narrow(CP_ACP, NVK_WIDE("a\u4E00"), " ", &used), "a ");
    EXPECT_TRUE(used);
    EXPECT_EQ(Narrow(CP_ACP, NVK_WIDE("\u4E00")), "?");

    char ansi[] = "\xE9l\xE8ve \xA3";
    ASSERT_TRUE(CharToOemA(ansi, ansi));  // in place
    EXPECT_STREQ(ansi, "\x82l\x8Ave \x9C");
    ASSERT_TRUE(OemToCharA(ansi, ansi));
    EXPECT_STREQ(ansi, "\xE9l\xE8ve \xA3");
    EXPECT_FALSE(CharToOemA(nullptr, ansi));
}

TEST(NlsTest, SizesTerminatorsAndErrors) {
    WCHAR wide[8];
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, nullptr, 0), 4);  // with the terminator
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -1, wide, 8), 4);
    EXPECT_EQ(wide[3], WCHAR{});
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abcdef", 6, wide, 4), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 0, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(MultiByteToWideChar(4242, 0, "abc", 3, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, "a\xC3", 2, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);

    // A short destination takes whole characters only.
    char out[4] = {'#', '#', '#', '#'};
    EXPECT_EQ(
        WideCharToMultiByte(CP_UTF8, 0, NVK_WIDE("a\u00E9\u00E9"), 3, out, 4, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(std::string(out, 4), "a\xC3\xA9#");
    const Text lone(1, static_cast<WCHAR>(0xD800));
    EXPECT_EQ(Narrow(CP_UTF8, lone), "\xEF\xBF\xBD");
}

TEST(NlsTest, CompareStringByLocaleAndFlags) {
    const LCID french = 1036;
    EXPECT_EQ(CompareStringA(french, 0, "\xE9t\xE9", -1, "ete", -1), CSTR_GREATER_THAN);
    EXPECT_EQ(CompareStringA(french, 0, "\xE9t\xE9", -1, "f", -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringA(french, 0, "abc", -1, "ABC", -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringA(french, NORM_IGNORECASE, "abc", -1, "ABC", -1), CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(french, NORM_IGNORECASE, "\xE9", -1, "E", -1), CSTR_GREATER_THAN);
    EXPECT_EQ(CompareStringA(french, NORM_IGNORECASE | NORM_IGNORENONSPACE, "\xE9", -1, "E", -1),
              CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(french, 0, "abcX", 3, "abc", -1), CSTR_EQUAL);
    EXPECT_EQ(CompareStringA(french, 0, "", -1, "a", -1), CSTR_LESS_THAN);
    // Traditional Spanish sorts "ch" after "c".
    EXPECT_EQ(CompareStringA(1034, 0, "cz", -1, "cha", -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringA(0x1234, 0, "a", -1, "b", -1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(CompareStringA(french, 0, nullptr, -1, "b", -1), 0);
}

TEST(NlsTest, WindowsTablesAndBestFit) {
    EXPECT_EQ(Wide(437, "\xE6"), NVK_WIDE("\u00B5"));  // micro sign, both ways
    EXPECT_EQ(Narrow(437, NVK_WIDE("\u00B5")), "\xE6");
    EXPECT_EQ(Wide(1250, "\xB9"), NVK_WIDE("\u0105"));
    EXPECT_EQ(Wide(1251, "\xC0"), NVK_WIDE("\u0410"));

    BOOL used = TRUE;
    EXPECT_EQ(Narrow(1252, NVK_WIDE("\u0100\u0108\uFF21"), nullptr, &used), "ACA");
    EXPECT_FALSE(used);  // a best fit is no default character
    EXPECT_EQ(Narrow(850, NVK_WIDE("\u0100\u0108")), "AC");
    char out[8] = {};
    EXPECT_EQ(WideCharToMultiByte(1252, WC_NO_BEST_FIT_CHARS, NVK_WIDE("\u0100"), 1, out, 8,
                                  nullptr, &used),
              1);
    EXPECT_EQ(out[0], '?');
    EXPECT_TRUE(used);
    // A character a short destination stopped before was not replaced.
    for (const UINT codePage : {1252u, 932u}) {
        EXPECT_EQ(WideCharToMultiByte(codePage, 0, NVK_WIDE("ab\u0E01"), 3, out, 2, nullptr, &used),
                  0);
        EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
        EXPECT_FALSE(used);
        EXPECT_EQ(WideCharToMultiByte(codePage, 0, NVK_WIDE("ab\u0E01"), 3, out, 3, nullptr, &used),
                  3);
        EXPECT_TRUE(used);
    }
}

TEST(NlsTest, LongTextsConvertAsTheirBytesDo) {
    std::string text;
    unsigned seed = 7;
    for (int i = 0; i < 4000; ++i) {
        seed = seed * 1103515245u + 12345u;
        // Mostly ASCII, as texts are, with runs of every byte.
        const unsigned byte = (seed >> 16) & 0xFF;
        text += static_cast<char>(i % 97 < 60 ? byte & 0x7F : (byte == 0 ? 1 : byte));
    }
    for (const UINT codePage : {1252u, 850u, 437u, 1250u}) {
        const Text wide = Wide(codePage, text);
        ASSERT_EQ(wide.size(), text.size());
        for (std::size_t i = 0; i < text.size(); ++i) {
            ASSERT_EQ(wide[i], Wide(codePage, text.substr(i, 1))[0]) << codePage << " at " << i;
        }
        std::string back(text.size(), '\0');
        EXPECT_EQ(WideCharToMultiByte(codePage, 0, wide.data(), static_cast<int>(wide.size()),
                                      back.data(), static_cast<int>(back.size()), nullptr, nullptr),
                  static_cast<int>(text.size()));
        EXPECT_EQ(back, text);  // every byte comes back
    }
}

TEST(NlsTest, FlagsSizesAndTheLastError) {
    WCHAR wide[8];
    char out[8];
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0x100, "a", 1, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FLAGS);
    const Text lone(1, static_cast<WCHAR>(0xDC00));
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, lone.data(), 1, out, 8, nullptr,
                                  nullptr),
              0);
    EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
    BOOL used = FALSE;
    EXPECT_EQ(WideCharToMultiByte(CP_UTF7, 0, NVK_WIDE("a"), 1, out, 8, nullptr, &used), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF7, 0, NVK_WIDE("a"), 1, out, 8, "?", nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);

    // Any negative size reads up to the terminator.
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", -7, nullptr, 0), 4);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, NVK_WIDE("ab"), -2, nullptr, 0, nullptr, nullptr), 3);

    // Calls that succeed leave the last error as it was.
    SetLastError(1234);
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, 0, "abc", 3, wide, 8), 3);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, NVK_WIDE("abc"), 3, out, 8, nullptr, nullptr), 3);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, NVK_WIDE("abc"), 3, out, 8, nullptr, nullptr), 3);
    EXPECT_EQ(CompareStringA(1036, 0, "a", -1, "b", -1), CSTR_LESS_THAN);
    EXPECT_GT(GetLocaleInfoA(1036, LOCALE_SMONTHNAME1, out, sizeof out), 0);
    EXPECT_EQ(GetLastError(), 1234u);
}

// Flags and arguments that a code page or a call does not take fail, as
// documented, rather than being ignored.
TEST(NlsTest, WhatACodePageDoesNotTakeFails) {
    WCHAR wide[8];
    char out[8];
    EXPECT_EQ(MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED | MB_COMPOSITE, "a", 1, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FLAGS);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, MB_PRECOMPOSED, "a", 1, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FLAGS);
    EXPECT_EQ(
        WideCharToMultiByte(1252, WC_ERR_INVALID_CHARS, NVK_WIDE("a"), 1, out, 8, nullptr, nullptr),
        0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FLAGS);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, NVK_WIDE("a"), 1, out, 4, "?", nullptr), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(CompareStringA(1036, 0x40000000, "a", -1, "b", -1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FLAGS);
}

TEST(NlsTest, CompareStringAsWindowsSorts) {
    const LCID english = 1033;
    const LCID french = 1036;
    // The word sort weighs the hyphen and the apostrophe last.
    EXPECT_EQ(CompareStringA(english, 0, "co-op", -1, "coop", -1), CSTR_GREATER_THAN);
    EXPECT_EQ(CompareStringA(english, 0, "co-op", -1, "coma", -1), CSTR_GREATER_THAN);
    EXPECT_EQ(CompareStringA(english, 0, "co-op", -1, "cop", -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringA(english, 0, "co'op", -1, "co-op", -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringA(english, SORT_STRINGSORT, "co-op", -1, "coma", -1), CSTR_LESS_THAN);
    // Punctuation in Windows' order.
    EXPECT_EQ(CompareStringA(french, 0, "#", -1, ".", -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringA(french, 0, ".", -1, "_", -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringA(french, 0, "a#", -1, "a.", -1), CSTR_LESS_THAN);
    EXPECT_EQ(CompareStringA(french, 0, "\2", -1, "\1", -1), CSTR_GREATER_THAN);
    // The text is read in the locale's own code page: Polish reads 1250.
    EXPECT_EQ(CompareStringA(0x0415, 0, "\xB9", -1, "a", -1), CSTR_GREATER_THAN);
    EXPECT_EQ(CompareStringA(0x0415, 0, "\xB9", -1, "b", -1), CSTR_LESS_THAN);
}

TEST(NlsTest, DefaultLocalesCompareAsTheEnvironments) {
    test::ScopedEnv all("LC_ALL", "es_ES.UTF-8@traditional");
    EXPECT_EQ(CompareStringA(LOCALE_USER_DEFAULT, 0, "cz", -1, "cha", -1), CSTR_GREATER_THAN);
    test::ScopedEnv french("LC_ALL", "fr_CH");
    EXPECT_EQ(CompareStringA(LOCALE_SYSTEM_DEFAULT, 0, "\xE9", -1, "f", -1), CSTR_LESS_THAN);
}

}  // namespace
}  // namespace nvk::os
