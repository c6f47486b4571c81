// The registry over .reg files: keys, values and their enumeration, files
// written by hand in the registry editor's format, and writers in several
// processes at once.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "os/api/registry.h"
#include "os/common/registry_text.h"
#include "os/posix/code_page.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

class RegistryTest : public ::testing::Test {
protected:
    RegistryTest() : registry_("NVK_REGISTRY_DIR", folder_.str().c_str()) {}

    static LSTATUS SetText(HKEY key, const char* name, const std::string& text,
                           DWORD type = REG_SZ) {
        return RegSetValueExA(key, name, 0, type, reinterpret_cast<const BYTE*>(text.c_str()),
                              static_cast<DWORD>(text.size() + 1));
    }
    // The value as text, or its error as "#n".
    static std::string Get(HKEY key, const char* name, DWORD* type = nullptr) {
        char data[256];
        DWORD size = sizeof data;
        LSTATUS status =
            RegQueryValueExA(key, name, nullptr, type, reinterpret_cast<LPBYTE>(data), &size);
        return status == ERROR_SUCCESS ? std::string(data, size) : "#" + std::to_string(status);
    }
    std::string FileText(const char* root) {
        std::ifstream in(folder_ / (std::string(root) + ".reg"), std::ios::binary);
        std::ostringstream bytes;
        bytes << in.rdbuf();
        return bytes.str();
    }

    test::TempFolder folder_;
    test::ScopedEnv registry_;
};

TEST_F(RegistryTest, KeysAndValuesGoRoundTrip) {
    HKEY key = nullptr;
    DWORD disposition = 0;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\NVK\\Test", 0, nullptr, 0,
                              KEY_ALL_ACCESS, nullptr, &key, &disposition),
              ERROR_SUCCESS);
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
    DWORD number = 42;
    const BYTE binary[] = {0, 1, 0xFF};
    EXPECT_EQ(SetText(key, "Path",
                      "C:\\Donn\xE9"
                      "es\\\"x\""),
              ERROR_SUCCESS);
    EXPECT_EQ(SetText(key, "", "default"), ERROR_SUCCESS);
    EXPECT_EQ(SetText(key, "Expand", "%windir%\\x", REG_EXPAND_SZ), ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExA(key, "Count", 0, REG_DWORD, reinterpret_cast<BYTE*>(&number), 4),
              ERROR_SUCCESS);
    EXPECT_EQ(RegSetValueExA(key, "Bytes", 0, REG_BINARY, binary, 3), ERROR_SUCCESS);
    for (const char* sub : {"b", "A", "c\\d"}) {
        HKEY child = nullptr;
        RegCreateKeyExA(key, sub, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &child, nullptr);
        RegCloseKey(child);
    }
    RegCloseKey(key);

    // Another handle, opened by a name in another case, reads it all back.
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "SOFTWARE\\nvk\\test", 0, KEY_READ, &key),
              ERROR_SUCCESS);
    DWORD type = 0;
    EXPECT_EQ(Get(key, "path", &type), std::string("C:\\Donn\xE9"
                                                   "es\\\"x\"\0",
                                                   15));
    EXPECT_EQ(type, REG_SZ);
    EXPECT_EQ(Get(key, nullptr), std::string("default\0", 8));
    EXPECT_EQ(Get(key, "Expand", &type), std::string("%windir%\\x\0", 11));
    EXPECT_EQ(type, REG_EXPAND_SZ);
    EXPECT_EQ(Get(key, "Bytes", &type), std::string("\0\1\xFF", 3));
    EXPECT_EQ(Get(key, "Missing"), "#2");
    DWORD size = 2;
    BYTE small[2];
    EXPECT_EQ(RegQueryValueExA(key, "Count", nullptr, nullptr, small, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(RegQueryValueExA(key, "Count", nullptr, nullptr, nullptr, &size), ERROR_SUCCESS);
    EXPECT_EQ(size, 4u);
    EXPECT_EQ(SetText(key, "x", "refused"), ERROR_ACCESS_DENIED);

    std::vector<std::string> names;
    char name[64];
    DWORD length = sizeof name;
    for (DWORD i = 0;
         RegEnumValueA(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++i, length = sizeof name) {
        names.emplace_back(name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"Path", "", "Expand", "Count", "Bytes"}));
    names.clear();
    LSTATUS status = ERROR_SUCCESS;
    for (DWORD i = 0; (status = RegEnumKeyExA(key, i, name, &(length = sizeof name), nullptr,
                                              nullptr, nullptr, nullptr)) == ERROR_SUCCESS;
         ++i) {
        names.emplace_back(name);
    }
    EXPECT_EQ(status, ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(names, (std::vector<std::string>{"A", "b", "c"}));
    length = 1;
    EXPECT_EQ(RegEnumKeyExA(key, 0, name, &length, nullptr, nullptr, nullptr, nullptr),
              ERROR_MORE_DATA);
    RegCloseKey(key);

    // The file is the editor's own form, in UTF-16 with the text types too.
    std::string text = posix::AnsiFromFileBytes(FileText("HKEY_CURRENT_USER"));
    EXPECT_TRUE(FileText("HKEY_CURRENT_USER").starts_with("\xFF\xFE"));
    EXPECT_NE(text.find("Windows Registry Editor Version 5.00\r\n\r\n"), std::string::npos);
    EXPECT_NE(text.find("[HKEY_CURRENT_USER\\Software\\NVK\\Test]\r\n"
                        "\"Path\"=\"C:\\\\Donn\xE9"
                        "es\\\\\\\"x\\\"\"\r\n"
                        "@=\"default\"\r\n"
                        "\"Expand\"=hex(2):25,00,77,00,69,00,6e,00,64,00,69,00,72,00,25,00,5c,00,"
                        "78,00,00,\\\r\n  00\r\n"
                        "\"Count\"=dword:0000002a\r\n"
                        "\"Bytes\"=hex:00,01,ff\r\n"),
              std::string::npos)
        << text;

    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\NVK\\Test\\C"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\NVK\\Test\\C\\D"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\NVK\\Test\\C\\D"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\NVK\\Test\\C\\D", 0, KEY_READ, &key),
              ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\NVK\\Test", 0, KEY_ALL_ACCESS, &key),
              ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueA(key, "PATH"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueA(key, "Path"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegCloseKey(key), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(key), ERROR_INVALID_HANDLE);
}

TEST_F(RegistryTest, FilesWrittenByHandAreReadAndImported) {
    // As the registry editor exports it: UTF-16 with a mark, long data over
    // several lines, text types in UTF-16.
    std::string machine =
        "Windows Registry Editor Version 5.00\r\n"
        "\r\n"
        "; the accounting settings\r\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\NVK\\Common\\Settings]\r\n"
        "\"NVKOptions\"=dword:00000103\r\n"
        "\"FoldersBase\"=\"C:\\\\Donn\xE9"
        "es\"\r\n"
        "\"Multi\"=hex(7):61,00,00,00,62,00,00,\\\r\n"
        "  00,00,00\r\n"
        "@=\"\xE9t\xE9\"\r\n";
    std::ofstream(folder_ / "HKEY_LOCAL_MACHINE.reg", std::ios::binary)
        << posix::Utf16FileBytes(machine);
    HKEY key = nullptr;
    ASSERT_EQ(
        RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Software\\NVK\\Common\\Settings", 0, KEY_READ, &key),
        ERROR_SUCCESS);
    DWORD type = 0;
    EXPECT_EQ(Get(key, "NVKOptions", &type), std::string("\x03\x01\0\0", 4));
    EXPECT_EQ(type, REG_DWORD);
    EXPECT_EQ(Get(key, "FoldersBase"), std::string("C:\\Donn\xE9"
                                                   "es\0",
                                                   11));
    EXPECT_EQ(Get(key, "Multi", &type), std::string("a\0b\0\0", 5));
    EXPECT_EQ(type, REG_MULTI_SZ);
    EXPECT_EQ(Get(key, ""), std::string("\xE9t\xE9\0", 4));
    RegCloseKey(key);

    // An import in UTF-8 that adds, replaces and deletes.
    std::string import =
        "\xEF\xBB\xBFWindows Registry Editor Version 5.00\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\NVK\\Common\\Settings]\n"
        "\"NVKOptions\"=-\n"
        "\"FoldersBase\"=\"D:\\\\\xC3\xA9t\xC3\xA9\"\n"
        "[HKCU\\Software\\New]\n"
        "\"Path\"=\"x\"\n"
        "[-HKEY_CURRENT_USER\\Software\\Old]\n";
    HKEY old = nullptr;
    RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Old", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                    &old, nullptr);
    RegCloseKey(old);
    ASSERT_EQ(RegImportText(import), ERROR_SUCCESS);
    ASSERT_EQ(
        RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Software\\NVK\\Common\\Settings", 0, KEY_READ, &key),
        ERROR_SUCCESS);
    EXPECT_EQ(Get(key, "NVKOptions"), "#2");
    EXPECT_EQ(Get(key, "FoldersBase"), std::string("D:\\\xE9t\xE9\0", 7));
    RegCloseKey(key);
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Old", 0, KEY_READ, &key),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegImportText("[HKEY_CURRENT_USER\\x]\n"), ERROR_BAD_FORMAT);
    EXPECT_EQ(RegImportText("REGEDIT4\n[HKEY_NOWHERE\\x]\n\"a\"=\"b\"\n"), ERROR_SUCCESS);

    std::string text;
    ASSERT_EQ(RegExportText(HKEY_CURRENT_USER, "software\\new", text), ERROR_SUCCESS);
    EXPECT_EQ(text,
              "Windows Registry Editor Version 5.00\r\n\r\n"
              "[HKEY_CURRENT_USER\\Software\\New]\r\n\"Path\"=\"x\"\r\n\r\n");
}

TEST_F(RegistryTest, CallsAnswerAsTheSystemDocuments) {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\A\\B", 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &key, nullptr),
              ERROR_SUCCESS);
    // A null subkey deletes nothing; an empty one is the handle's own key.
    EXPECT_EQ(RegDeleteKeyA(key, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetText(key, "v", "x"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyA(key, ""), ERROR_SUCCESS);
    EXPECT_EQ(Get(key, "v"), "#1018");

    // A handle designates its key: the key made again under its name is
    // another one.
    HKEY again = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\A\\B", 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &again, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(SetText(key, "v", "x"), ERROR_KEY_DELETED);
    EXPECT_EQ(Get(again, "v"), "#2");
    HKEY child = nullptr;
    EXPECT_EQ(RegCreateKeyExA(key, "C", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &child, nullptr),
              ERROR_KEY_DELETED);
    EXPECT_EQ(RegOpenKeyExA(key, "", 0, KEY_READ, &child), ERROR_KEY_DELETED);
    RegCloseKey(key);

    // Text stored with its terminating zero; a query adds one where there
    // is room after a text that has none.
    for (DWORD type : {REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ}) {
        EXPECT_EQ(RegSetValueExA(again, "t", 0, type, reinterpret_cast<const BYTE*>("abc"), 3),
                  ERROR_SUCCESS);
        EXPECT_EQ(Get(again, "t"), std::string("abc\0", 4));
    }
    EXPECT_EQ(RegSetValueExA(again, "e", 0, REG_SZ, reinterpret_cast<const BYTE*>(""), 0),
              ERROR_SUCCESS);
    char buffer[16] = "xxxxxxxxxx";
    DWORD type = 0;
    DWORD size = 4;
    EXPECT_EQ(RegQueryValueExA(again, "e", nullptr, &type, reinterpret_cast<LPBYTE>(buffer), &size),
              ERROR_SUCCESS);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(buffer[0], '\0');

    // A missing value sets the size to 0; type and size may be one variable.
    size = 99;
    EXPECT_EQ(RegQueryValueExA(again, "missing", nullptr, nullptr, nullptr, &size),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(size, 0u);
    DWORD both = sizeof buffer;
    EXPECT_EQ(RegQueryValueExA(again, "t", nullptr, &both, reinterpret_cast<LPBYTE>(buffer), &both),
              ERROR_SUCCESS);
    EXPECT_EQ(both, 4u);

    // Enumeration that does not fit: the type and the data's size come back,
    // the name and its length stay as they were.
    EXPECT_EQ(SetText(again, "Test", "foobar"), ERROR_SUCCESS);
    auto enumerate = [&](DWORD nameSize, DWORD dataSize) {
        std::string name = "xxxxxxxxxx";
        std::string data = "xxxxxxxxxx";
        type = 1234;
        LSTATUS status = RegEnumValueA(again, 2, name.data(), &nameSize, nullptr, &type,
                                       reinterpret_cast<LPBYTE>(data.data()), &dataSize);
        return std::to_string(status) + " " + name.c_str() + " " + std::to_string(nameSize) + " " +
               data.c_str() + " " + std::to_string(dataSize) + " " + std::to_string(type);
    };
    EXPECT_EQ(enumerate(20, 2), "234 xxxxxxxxxx 20 xxxxxxxxxx 7 1");
    EXPECT_EQ(enumerate(4, 20), "234 xxxxxxxxxx 4 xxxxxxxxxx 7 1");
    EXPECT_EQ(enumerate(5, 20), "0 Test 4 foobar 7 1");

    // Names: limits, a leading backslash, the root itself.
    std::string longest(255, 'k');
    EXPECT_EQ(RegCreateKeyExA(again, longest.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              &child, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(child);
    for (const std::string& bad : {longest + "k", std::string("a\nb")}) {
        EXPECT_EQ(RegCreateKeyExA(again, bad.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                  &child, nullptr),
                  ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(SetText(again, std::string(16383, 'v').c_str(), "x"), ERROR_SUCCESS);
    EXPECT_EQ(SetText(again, std::string(16384, 'v').c_str(), "x"), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "\\Software\\A", 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &child, nullptr),
              ERROR_BAD_PATHNAME);
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "\\Software", 0, KEY_READ, &child),
              ERROR_BAD_PATHNAME);
    for (const char* none : {static_cast<const char*>(nullptr), ""}) {
        child = nullptr;
        EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, none, 0, KEY_READ, &child), ERROR_SUCCESS);
        EXPECT_EQ(child, HKEY_CURRENT_USER);
    }
    auto* const untouched = reinterpret_cast<HKEY>(0x1234);
    child = untouched;
    EXPECT_EQ(RegOpenKeyExA(reinterpret_cast<HKEY>(0x7777), "x", 0, KEY_READ, &child),
              ERROR_INVALID_HANDLE);
    EXPECT_EQ(child, untouched);
    RegCloseKey(again);

    // Making a subkey asks nothing of the parent handle's access.
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\A", 0, KEY_READ, &key), ERROR_SUCCESS);
    EXPECT_EQ(RegCreateKeyExA(key, "New", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &child, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(child);
    RegCloseKey(key);
}

TEST_F(RegistryTest, WritersInSeveralProcessesLoseNothing) {
    std::vector<PROCESS_INFORMATION> helpers;
    for (const char* prefix : {"p", "q", "r"}) {
        helpers.push_back(
            test::StartHelper(std::string("regset Software\\Race ") + prefix + " 25"));
    }
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Race", 0, nullptr, 0, KEY_ALL_ACCESS,
                              nullptr, &key, nullptr),
              ERROR_SUCCESS);
    for (DWORD i = 0; i < 25; ++i) {
        std::string name = "s" + std::to_string(i);
        ASSERT_EQ(
            RegSetValueExA(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&i), 4),
            ERROR_SUCCESS);
    }
    for (PROCESS_INFORMATION& helper : helpers) {
        EXPECT_EQ(test::FinishProcess(helper), 0u);
    }
    for (const char* prefix : {"p", "q", "r", "s"}) {
        for (int i = 0; i < 25; ++i) {
            std::string name = prefix + std::to_string(i);
            EXPECT_EQ(Get(key, name.c_str()).size(), 4u) << name;
        }
    }
    RegCloseKey(key);
}

TEST(RegistryFileTest, TextFormRoundTripsAndSkipsWhatItCantRead) {
    using namespace common;
    RegistryKey tree;
    RegistryKey& key = tree.Subkey("Soft").Subkey("K");
    key.values.push_back({"a\"b\\c", REG_SZ, std::string("line\r\nbreak\0", 12)});
    key.values.push_back({"long", REG_BINARY, std::string(100, '\x5A')});
    key.values.push_back({"short dword", REG_DWORD, "ab"});
    key.values.push_back({"none", REG_NONE, ""});
    std::string text = FormatRegistryText("HKEY_USERS", {}, tree);
    auto sections = ParseRegistryText(text);
    ASSERT_TRUE(sections.has_value());
    RegistryKey back;
    ApplySections(*sections, "hkey_users", back);
    EXPECT_EQ(FormatRegistryText("HKEY_USERS", {}, back), text);
    RegistryKey* parsed = back.FindSubkey("soft")->FindSubkey("k");
    ASSERT_NE(parsed, nullptr);
    ASSERT_EQ(parsed->values.size(), 4u);
    EXPECT_EQ(parsed->values[0].data, key.values[0].data);
    EXPECT_EQ(parsed->values[1].data, key.values[1].data);
    EXPECT_EQ(parsed->values[2].type, REG_DWORD);

    EXPECT_FALSE(ParseRegistryText("[HKEY_USERS\\x]\r\n").has_value());
    auto bad = ParseRegistryText(
        "REGEDIT4\n\"orphan\"=\"x\"\n[HKEY_USERS\\x]\n\"a\"=dword:123456789\n\"b\"=hex:1,zz\n"
        "\"c\"=hex(2):41,00\n\"d\"\n[HKEY_USERS\\y\n");
    ASSERT_TRUE(bad.has_value());
    ASSERT_EQ(bad->size(), 1u);
    ASSERT_EQ((*bad)[0].entries.size(), 1u);
    EXPECT_EQ((*bad)[0].entries[0].value.data, std::string("A\0", 2));  // ANSI in the old form
}

}  // namespace
}  // namespace nvk::os
