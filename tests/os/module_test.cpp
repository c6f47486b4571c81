#include <gtest/gtest.h>

#include <string>

#include "os/api/error.h"
#include "os/api/module.h"
#include "os/posix/module_names.h"

namespace nvk::os {
namespace {

using Text = const char* (*)();
using Counter = int (*)();

std::string LoadedFrom(HMODULE module) {
    auto text = reinterpret_cast<Text>(GetProcAddress(module, "TestModuleFile"));
    return text != nullptr ? text() : "";
}

int Count(HMODULE module) {
    return reinterpret_cast<Counter>(GetProcAddress(module, "TestModuleCounter"))();
}

void LocalFunction() {}

TEST(ModuleNamesTest, OtherExtensionsAndTrailingDotsStandAsWritten) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(posix::ModuleFileNames("Editor.skn"), (Names{"Editor.skn"}));
    EXPECT_EQ(posix::ModuleFileNames("plain."), (Names{"plain"}));
}

TEST(ModuleTest, LoadFollowsTheNameRule) {
    // Both forms lie in the test's folder: the .dll wins.
    HMODULE twin = LoadLibraryA("nvkostwin.dll");
    ASSERT_NE(twin, nullptr);
    EXPECT_EQ(LoadedFrom(twin), "nvkostwin.dll");
    HMODULE single = LoadLibraryA("NVKOSSINGLE.DLL");
    ASSERT_NE(single, nullptr);
    EXPECT_EQ(LoadedFrom(single), "libnvkossingle.so");
    EXPECT_EQ(LoadLibraryA("nvkossingle"), single);  // ".dll" implied, one module
    FreeLibrary(single);

    // A name with a folder, in drive form, is taken as given.
    char path[MAX_PATH];
    DWORD length = GetModuleFileNameA(twin, path, sizeof path);
    ASSERT_GT(length, 0u);
    EXPECT_EQ(std::string(path, 3), "Z:\\");
    EXPECT_EQ(std::string(path).substr(length - 14), "\\nvkostwin.dll");
    EXPECT_EQ(LoadLibraryA(path), twin);
    FreeLibrary(twin);

    EXPECT_EQ(LoadLibraryA("nvkos_missing.dll"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    FreeLibrary(single);
    FreeLibrary(twin);
}

TEST(ModuleTest, APinnedModuleOutlivesItsLastFreeWithItsState) {
    HMODULE module = LoadLibraryA("nvkossingle.dll");
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(Count(module), 1);
    ASSERT_TRUE(PinModule(reinterpret_cast<LPCVOID>(GetProcAddress(module, "TestModuleCounter"))));
    ASSERT_TRUE(FreeLibrary(module));
    EXPECT_EQ(LoadLibraryA("nvkossingle.dll"), module);
    EXPECT_EQ(Count(module), 2);
    EXPECT_FALSE(PinModule(nullptr));
}

TEST(ModuleTest, FreeLibraryCountsReferences) {
    HMODULE first = LoadLibraryA("nvkossingle.dll");
    HMODULE second = LoadLibraryA("nvkossingle.dll");
    ASSERT_EQ(first, second);
    EXPECT_EQ(Count(first), 1);
    ASSERT_TRUE(FreeLibrary(first));
    EXPECT_EQ(GetModuleHandleA("nvkossingle.dll"), first);  // still loaded, state kept
    EXPECT_EQ(Count(first), 2);
    ASSERT_TRUE(FreeLibrary(first));
    EXPECT_EQ(GetModuleHandleA("nvkossingle.dll"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    EXPECT_FALSE(FreeLibrary(first));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(ModuleTest, LookupsByHandleAddressAndName) {
    HMODULE module = LoadLibraryA("nvkostwin.dll");
    ASSERT_NE(module, nullptr);
    FARPROC entry = GetProcAddress(module, "TestModuleFile");
    EXPECT_EQ(ModuleFromAddress(reinterpret_cast<LPCVOID>(entry)), module);
    EXPECT_EQ(ModuleFromAddress(reinterpret_cast<LPCVOID>(&LocalFunction)), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);  // the executable
    EXPECT_EQ(GetProcAddress(module, "NoSuchEntry"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    // A __stdcall decoration finds the plain name, and only in its own form.
    EXPECT_EQ(GetProcAddress(module, "_TestModuleFile@0"), entry);
    EXPECT_EQ(GetProcAddress(module, "_TestModuleFile@"), nullptr);
    EXPECT_EQ(GetProcAddress(module, "TestModuleFile@4"), nullptr);
    EXPECT_EQ(GetProcAddress(module, reinterpret_cast<LPCSTR>(1)), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    int stray = 0;
    EXPECT_EQ(GetProcAddress(reinterpret_cast<HMODULE>(&stray), "TestModuleFile"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(GetModuleHandleA(nullptr), nullptr);
    FreeLibrary(module);
}

TEST(ModuleTest, ExecutableFileNameAndShortBuffers) {
    char path[MAX_PATH];
    DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
    ASSERT_GT(length, 8u);
    EXPECT_EQ(std::string(path).substr(length - 8), "\\test_os");
    char small[5] = "####";
    EXPECT_EQ(GetModuleFileNameA(nullptr, small, sizeof small), 5u);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(std::string(small), std::string(path, 4));
}

}  // namespace
}  // namespace nvk::os
