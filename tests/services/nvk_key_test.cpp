#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <random>

#include "nvk/services/nvk_key.h"
#include "os/api/registry.h"

namespace {

std::string Text(const CNVKKey& key) {
    return static_cast<Chaine>(key).c_str();
}

std::uint8_t Byte(std::uint64_t value, int i) {
    return static_cast<std::uint8_t>(value >> (8 * i));
}

TEST(CNVKKey, TextIsBytesInMemoryOrderAndReadsBackInEitherCase) {
    EXPECT_EQ(Text(CNVKKey(0x0807060504030201ULL)), "0102030405060708");
    std::mt19937_64 random(7);
    for (int i = 0; i < 200; ++i) {
        const std::uint64_t value = random();
        const std::string text = Text(CNVKKey(value));
        EXPECT_EQ(static_cast<std::uint64_t>(CNVKKey(text.c_str())), value);
        std::string upper = text;
        for (char& c : upper) {
            c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
        EXPECT_EQ(static_cast<std::uint64_t>(CNVKKey(Chaine(upper.c_str()))), value);
        EXPECT_EQ(static_cast<std::uint64_t>(CNVKKey(CString(upper.c_str()))), value);
    }
    EXPECT_STREQ(static_cast<CString>(CNVKKey(0xABULL)).GetString(), "ab00000000000000");
}

TEST(CNVKKey, AnythingButSixteenHexDigitsIsTheZeroKey) {
    for (const char* bad : {"010203040506070", "01020304050607080", "0102030405060G08",
                            "01020304050607 8", "", "g102030405060708"}) {
        CNVKKey key(0x1234ULL);
        key.FromString(bad);
        EXPECT_EQ(static_cast<std::uint64_t>(key), 0u) << bad;
    }
}

TEST(CNVKKey, NewKeysCarryExtensionClockAndNameSum) {
    const auto before = static_cast<std::uint32_t>(std::time(nullptr));
    const std::uint64_t key = CNVKKey::GenerateUniqueKey(".abcd", "AB");
    const std::uint64_t one = CNVKKey::GenerateUniqueKey("x", "");
    const std::uint64_t none = CNVKKey::GenerateUniqueKey(nullptr, nullptr);
    const CNVKKey fresh;
    const auto after = static_cast<std::uint32_t>(std::time(nullptr));

    EXPECT_EQ(Byte(key, 0), 'a');
    EXPECT_EQ(Byte(key, 1), 'b');
    EXPECT_EQ(Byte(key, 2), 'c');
    EXPECT_EQ(Byte(key, 7), 'A' + 'B');
    const auto clock = static_cast<std::uint32_t>(key >> 24);
    EXPECT_GE(clock, before);
    EXPECT_LE(clock, after);

    EXPECT_EQ(Byte(one, 0), 'x');
    EXPECT_EQ(Byte(one, 1), 0);
    EXPECT_EQ(Byte(one, 7), 0);
    EXPECT_EQ(none & 0xFF00000000FFFFFFULL, 0u);
    // The sum wraps at 256.
    EXPECT_EQ(Byte(CNVKKey::GenerateUniqueKey("", "\xff\x02"), 7), 1);

    // A fresh key is the clock alone, and so never the zero key.
    EXPECT_NE(static_cast<std::uint64_t>(fresh), 0u);
    EXPECT_EQ(static_cast<std::uint64_t>(fresh) & 0xFF00000000FFFFFFULL, 0u);
}

class NVKOptions : public testing::Test {
protected:
    NVKOptions() : m_Folder(std::filesystem::temp_directory_path() / "nvk_key_test_XXXXXX") {
        std::string pattern = m_Folder.string();
        m_Folder = mkdtemp(pattern.data());
        setenv("NVK_REGISTRY_DIR", m_Folder.string().c_str(), 1);
    }
    ~NVKOptions() override {
        unsetenv("NVK_REGISTRY_DIR");
        std::filesystem::remove_all(m_Folder);
    }

    static void Put(nvk::os::HKEY root, const char* app, nvk::os::DWORD type,
                    nvk::os::DWORD value) {
        Chaine path;
        path.Format("Software\\NVK\\%s\\Settings", app);
        nvk::os::HKEY key = nullptr;
        ASSERT_EQ(nvk::os::RegCreateKeyExA(root, path, 0, nullptr, 0, nvk::os::KEY_ALL_ACCESS,
                                           nullptr, &key, nullptr),
                  0);
        nvk::os::RegSetValueExA(key, "NVKOptions", 0, type,
                                reinterpret_cast<const nvk::os::BYTE*>(&value), sizeof value);
        nvk::os::RegCloseKey(key);
    }

    std::filesystem::path m_Folder;
};

TEST_F(NVKOptions, FourWordsFromMachineAndUserForTheApplicationAndCommon) {
    EXPECT_EQ(GetNVKOptions("Compta"), 0u);
    Put(nvk::os::HKEY_LOCAL_MACHINE, "Compta", nvk::os::REG_DWORD, 0x12340001);
    Put(nvk::os::HKEY_CURRENT_USER, "Compta", nvk::os::REG_DWORD, 2);
    Put(nvk::os::HKEY_LOCAL_MACHINE, "Common", nvk::os::REG_DWORD, 3);
    Put(nvk::os::HKEY_CURRENT_USER, "Common", nvk::os::REG_BINARY, 0xFFFF0004);
    EXPECT_EQ(GetNVKOptions("Compta"), 0x0001000200030004ULL);
    EXPECT_EQ(GetNVKOptions(""), 0x0000000000030004ULL);
    EXPECT_EQ(GetNVKOptions(nullptr), 0x0000000000030004ULL);
    EXPECT_EQ(GetNVKOptions("Paie"), 0x0000000000030004ULL);
}

}  // namespace
