// A Windows program hands the library the handles, numbers and wide text it
// holds from <windows.h> as they are: the calls below compile without a cast
// only while the library's types are the system's own.
#ifdef _WIN32

#include <gtest/gtest.h>

#include <string>

#include "nvk/afx/window.h"
#include "nvk/files/file_operations.h"
#include "nvk/platform/comctl_version.h"
#include "os/api/nls.h"
#include "os/api/registry.h"
#include "os/api/window.h"

// After the library's headers, whose names its macros would rename.
#include <windows.h>

namespace {

constexpr const char* kKey = "Software\\nvkutil types test";

TEST(WindowsTypes, RegistryKeysAndNumbersOfTheProgram) {
    HKEY key = nullptr;
    DWORD disposition = 0;
    ASSERT_EQ(nvk::os::RegCreateKeyExA(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS,
                                       nullptr, &key, &disposition),
              ERROR_SUCCESS);
    HKEY child = nullptr;
    ASSERT_EQ(
        ::RegCreateKeyExA(key, "child", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &child, nullptr),
        ERROR_SUCCESS);
    const DWORD written = 0xC0FFEE;
    ASSERT_EQ(::RegSetValueExA(child, "n", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&written),
                               sizeof written),
              ERROR_SUCCESS);

    DWORD type = REG_NONE;
    DWORD read = 0;
    DWORD size = sizeof read;
    EXPECT_EQ(nvk::os::RegQueryValueExA(child, "n", nullptr, &type, reinterpret_cast<BYTE*>(&read),
                                        &size),
              ERROR_SUCCESS);
    EXPECT_EQ(type, DWORD{REG_DWORD});
    EXPECT_EQ(read, written);
    EXPECT_EQ(nvk::os::RegCloseKey(child), ERROR_SUCCESS);
    EXPECT_EQ(nvk::os::RegCloseKey(key), ERROR_SUCCESS);

    EXPECT_EQ(RegRecurseDeleteKey(HKEY_CURRENT_USER, kKey), ERROR_SUCCESS);
    EXPECT_EQ(::RegOpenKeyExA(HKEY_CURRENT_USER, kKey, 0, KEY_READ, &key), ERROR_FILE_NOT_FOUND);

    DWORD major = 0;
    DWORD minor = 0;
    ASSERT_EQ(GetComCtlVersion(&major, &minor), S_OK);
    EXPECT_GE(major, 4u);
}

TEST(WindowsTypes, WideTextOfTheProgram) {
    WCHAR wide[8] = {};
    ASSERT_EQ(nvk::os::MultiByteToWideChar(CP_UTF8, 0, "\xC3\xA9t\xC3\xA9", -1, wide, 8), 4);
    EXPECT_EQ(std::wstring(wide), L"\u00E9t\u00E9");
    EXPECT_EQ(std::wstring(wide), NVK_WIDE("\u00E9t\u00E9"));

    char narrow[8] = {};
    const WCHAR* euro = L"\u20AC";
    EXPECT_EQ(
        nvk::os::WideCharToMultiByte(CP_UTF8, 0, euro, -1, narrow, sizeof narrow, nullptr, nullptr),
        4);
    EXPECT_STREQ(narrow, "\xE2\x82\xAC");
}

TEST(WindowsTypes, WindowOfTheProgram) {
    // Message-only: a window that needs no display.
    HWND window = ::CreateWindowExA(0, "STATIC", "before", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                    nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(nvk::os::IsWindow(window));
    EXPECT_TRUE(nvk::os::SetWindowTextA(window, "after"));
    char text[16] = {};
    EXPECT_EQ(::GetWindowTextA(window, text, sizeof text), 5);
    EXPECT_STREQ(text, "after");

    // The framework routes the program's window, and gives it back.
    CWnd routed;
    ASSERT_TRUE(routed.SubclassWindow(window));
    EXPECT_EQ(routed.GetSafeHwnd(), window);
    EXPECT_EQ(CWnd::FromHandlePermanent(window), &routed);
    EXPECT_TRUE(::SetWindowTextA(window, "routed"));
    EXPECT_EQ(nvk::os::GetWindowTextA(window, text, sizeof text), 6);
    EXPECT_EQ(routed.UnsubclassWindow(), window);
    EXPECT_TRUE(::DestroyWindow(window));
}

}  // namespace

#endif
