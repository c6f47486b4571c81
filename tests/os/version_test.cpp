#include "os/api/version.h"

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "os/api/error.h"
#include "os/api/module.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

std::vector<BYTE> Block(const char* file) {
    DWORD handle = 7;
    const DWORD size = GetFileVersionInfoSizeA(file, &handle);
    EXPECT_EQ(handle, 0u);
    std::vector<BYTE> block(size);
    if (size == 0 || !GetFileVersionInfoA(file, 0, size, block.data())) {
        block.clear();
    }
    return block;
}

std::string Text(std::vector<BYTE>& block, const char* path) {
    LPVOID value = nullptr;
    UINT length = 0;
    if (!VerQueryValueA(block.data(), path, &value, &length)) {
        return "(none)";
    }
    const std::string text(static_cast<const char*>(value));
    EXPECT_EQ(length, text.size() + 1) << path;
    return text;
}

const VS_FIXEDFILEINFO* Fixed(std::vector<BYTE>& block) {
    LPVOID value = nullptr;
    UINT length = 0;
    if (!VerQueryValueA(block.data(), "\\", &value, &length) || length != 52) {
        return nullptr;
    }
    return static_cast<const VS_FIXEDFILEINFO*>(value);
}

// The same script, built by the platform's tools into PE files and by ours
// into an ELF module, reads the same.
class VersionFileTest : public ::testing::TestWithParam<const char*> {};

TEST_P(VersionFileTest, ReadsTheTree) {
    if (std::string(GetParam()).empty()) {
        GTEST_SKIP() << "no Windows toolchain on this machine";
    }
    std::vector<BYTE> block = Block(GetParam());
    ASSERT_FALSE(block.empty()) << GetLastError();
    const VS_FIXEDFILEINFO* fixed = Fixed(block);
    ASSERT_NE(fixed, nullptr);
    EXPECT_EQ(fixed->dwSignature, VS_FFI_SIGNATURE);
    EXPECT_EQ(fixed->dwFileVersionMS, 0x00030002u);
    EXPECT_EQ(fixed->dwFileVersionLS, (7u << 16) | 1234u);
    EXPECT_EQ(fixed->dwProductVersionLS, 7u << 16);
    EXPECT_EQ(fixed->dwFileOS, 0x40004u);

    LPVOID value = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueA(block.data(), "\\VarFileInfo\\Translation", &value, &length));
    ASSERT_EQ(length, 8u);
    WORD translation[4];
    std::memcpy(translation, value, sizeof translation);
    EXPECT_EQ(translation[0], 0x040C);
    EXPECT_EQ(translation[1], 1252);
    EXPECT_EQ(translation[2], 0x0409);

    // Texts come in the ANSI code page, each in its own place.
    const std::string french = Text(block, "\\StringFileInfo\\040c04e4\\FileVersion");
    LPVOID first = nullptr;
    VerQueryValueA(block.data(), "\\StringFileInfo\\040C04E4\\FileVersion", &first, &length);
    EXPECT_EQ(french, "3.2 r\xE9vision 7");
    EXPECT_EQ(Text(block, "StringFileInfo\\040C04E4\\PRODUCTVERSION"),
              "3.2 \xC9"
              "dition");
    EXPECT_EQ(Text(block, "\\StringFileInfo\\040904E4\\LegalCopyright"), "\xA9 Test");
    EXPECT_STREQ(static_cast<const char*>(first), "3.2 r\xE9vision 7");
    EXPECT_EQ(Text(block, "\\StringFileInfo\\040C04E4\\Comments"), "");
    EXPECT_EQ(Text(block, "\\StringFileInfo\\040C04E4\\Missing"), "(none)");
    EXPECT_EQ(Text(block, "\\StringFileInfo\\04070000\\FileVersion"), "(none)");

    // A buffer too small for the whole tree holds what fits, and no more.
    for (DWORD size :
         {DWORD{40}, static_cast<DWORD>(block.size() / 2), static_cast<DWORD>(block.size() - 1)}) {
        std::vector<BYTE> part(size);
        ASSERT_TRUE(GetFileVersionInfoA(GetParam(), 0, size, part.data())) << size;
        Text(part, "\\StringFileInfo\\040904E4\\LegalCopyright");
        Text(part, "\\StringFileInfo\\040C04E4\\FileVersion");
    }
    // However short, the buffer is filled and no further.
    std::vector<BYTE> tiny(8, 0xEE);
    EXPECT_TRUE(GetFileVersionInfoA(GetParam(), 0, 5, tiny.data()));
    EXPECT_EQ(tiny[5], 0xEE);
}

#ifndef NVK_VERSION_PE
#define NVK_VERSION_PE ""
#define NVK_VERSION_DLL ""
#endif
INSTANTIATE_TEST_SUITE_P(Files, VersionFileTest,
                         ::testing::Values(NVK_VERSION_PE, NVK_VERSION_DLL, NVK_VERSION_ELF));

TEST(VersionTest, OurCompilerLaysOutTheTreeAsThePlatformsDoes) {
    if (std::string(NVK_VERSION_PE).empty()) {
        GTEST_SKIP() << "no Windows toolchain on this machine";
    }
    std::vector<BYTE> windows = Block(NVK_VERSION_PE);
    std::vector<BYTE> ours = Block(NVK_VERSION_ELF);
    EXPECT_EQ(windows, ours);
}

// The applications are 32-bit: a PE32 file, laid out by hand around the
// tree of the ELF fixture, with the version in a second language after a
// first one, reads the same.
TEST(VersionTest, ThirtyTwoBitExecutable) {
    std::vector<BYTE> tree = Block(NVK_VERSION_ELF);
    ASSERT_FALSE(tree.empty());
    tree.resize(tree[0] | (tree[1] << 8));
    std::vector<BYTE> file(0x200);
    auto put = [&file](std::size_t at, DWORD value, int width) {
        if (file.size() < at + width) {
            file.resize(at + width);
        }
        for (int i = 0; i < width; ++i) {
            file[at + i] = static_cast<BYTE>(value >> (8 * i));
        }
    };
    put(0, 'M' | ('Z' << 8), 2);
    put(0x3C, 0x40, 4);
    put(0x40, 0x00004550, 4);        // "PE\0\0"
    put(0x44, 0x14C, 2);             // i386
    put(0x46, 1, 2);                 // one section
    put(0x54, 224, 2);               // optional header size
    put(0x58, 0x10B, 2);             // PE32
    put(0x58 + 92, 16, 4);           // data directories
    put(0x58 + 96 + 16, 0x1000, 4);  // resources at 0x1000
    const std::size_t section = 0x58 + 224;
    const DWORD size = static_cast<DWORD>(0x58 + tree.size());
    put(0x58 + 96 + 20, size, 4);
    put(section + 8, size, 4);
    put(section + 12, 0x1000, 4);
    put(section + 16, size, 4);
    put(section + 20, 0x200, 4);
    // Three directories of one entry (the version type, name 1, French
    // and then English: the first language counts), a data entry, the tree.
    const std::size_t root = 0x200;
    put(root + 14, 1, 2);
    put(root + 16, 16, 4);
    put(root + 20, 0x80000018, 4);
    put(root + 0x18 + 14, 1, 2);
    put(root + 0x18 + 16, 1, 4);
    put(root + 0x18 + 20, 0x80000030, 4);
    put(root + 0x30 + 14, 2, 2);
    put(root + 0x30 + 16, 0x40C, 4);
    put(root + 0x30 + 20, 0x48, 4);
    put(root + 0x30 + 24, 0x409, 4);
    put(root + 0x30 + 28, 0x99999, 4);
    put(root + 0x48, 0x1058, 4);
    put(root + 0x48 + 4, static_cast<DWORD>(tree.size()), 4);
    file.resize(root + 0x58);
    file.insert(file.end(), tree.begin(), tree.end());

    test::TempFolder folder;
    const std::string path = folder / "app32.exe";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()),
               static_cast<std::streamsize>(file.size()));
    std::vector<BYTE> block = Block(path.c_str());
    ASSERT_FALSE(block.empty()) << GetLastError();
    EXPECT_EQ(Text(block, "\\StringFileInfo\\040C04E4\\FileVersion"), "3.2 r\xE9vision 7");
}

// The tool, the library and the engines, separated by '|'.
TEST(VersionTest, TheBuildsFilesCarryTheProjectVersion) {
    std::istringstream files(NVK_VERSIONED_FILES);
    for (std::string file; std::getline(files, file, '|');) {
        std::vector<BYTE> block = Block(file.c_str());
        ASSERT_FALSE(block.empty()) << file;
        EXPECT_EQ(Text(block, "\\StringFileInfo\\040904E4\\FileVersion"), NVK_PROJECT_VERSION)
            << file;
        EXPECT_EQ(Text(block, "\\StringFileInfo\\040904E4\\ProductName"), "nvkutil");
    }
}

TEST(VersionTest, FilesWithoutAVersion) {
    test::TempFolder folder;
    EXPECT_EQ(GetFileVersionInfoSizeA((folder / "missing.exe").c_str(), nullptr), 0u);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    const std::string text = folder / "text.exe";
    std::ofstream(text) << "MZ but not really a program, and long enough to be read as one."
                        << std::string(200, ' ');
    EXPECT_EQ(GetFileVersionInfoSizeA(text.c_str(), nullptr), 0u);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_DATA_NOT_FOUND);
}

// An image with resources, or none, but no version: this program.
TEST(VersionTest, AnImageWithoutAVersion) {
    char self[MAX_PATH] = {};
    ASSERT_GT(GetModuleFileNameA(nullptr, self, sizeof self), 0u);
    EXPECT_EQ(GetFileVersionInfoSizeA(self, nullptr), 0u);
    EXPECT_EQ(GetLastError(), ERROR_RESOURCE_TYPE_NOT_FOUND);
}

}  // namespace
}  // namespace nvk::os
