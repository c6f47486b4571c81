#include <gtest/gtest.h>

#include <string>

#include "os/api/error.h"
#include "os/api/kernel_text.h"
#include "os/api/keyboard.h"
#include "os/api/system_info.h"

namespace nvk::os {
namespace {

TEST(KernelText, MulDivRoundsHalfAwayFromZeroAndRefusesWhatDoesNotFit) {
    EXPECT_EQ(MulDiv(5, 1, 2), 3);
    EXPECT_EQ(MulDiv(-5, 1, 2), -3);
    EXPECT_EQ(MulDiv(5, -1, 2), -3);
    EXPECT_EQ(MulDiv(5, 1, -2), -3);
    EXPECT_EQ(MulDiv(-5, -1, -2), -3);
    EXPECT_EQ(MulDiv(7, 3, 4), 5);  // 5.25
    EXPECT_EQ(MulDiv(250, 1200, 500), 600);
    EXPECT_EQ(MulDiv(1 << 30, 1 << 30, 1 << 30), 1 << 30);  // 64-bit product
    EXPECT_EQ(MulDiv(1, 2, 0), -1);
    EXPECT_EQ(MulDiv(1 << 30, 4, 1), -1);
}

TEST(KernelText, CopiesAndFormatsWithinTheirRoom) {
    char buffer[8] = "xxxxxxx";
    EXPECT_EQ(lstrcpynA(buffer, "abcdef", 4), buffer);
    EXPECT_STREQ(buffer, "abc");
    lstrcpynA(buffer, "ab", 8);
    EXPECT_STREQ(buffer, "ab");
    lstrcpynA(buffer, "zz", 0);  // no room: untouched
    EXPECT_STREQ(buffer, "ab");

    char text[2048];
    EXPECT_EQ(wsprintfA(text, "%s-%d-%lu", "a", -3, 7ul), 6);
    EXPECT_STREQ(text, "a--3-7");
    const std::string big(3000, 'q');
    wsprintfA(text, "%s", big.c_str());
    EXPECT_EQ(std::string(text), big.substr(0, 1023));
}

// What is cut to the 1024 bytes' room is counted as stored, without its end.
TEST(KernelText, FormattingCountsWhatItStored) {
    char text[2048];
    EXPECT_EQ(wsprintfA(text, "%s", std::string(3000, 'q').c_str()), 1023);
}

OSVERSIONINFOEXA Version() {
    OSVERSIONINFOEXA extended{};
    extended.dwOSVersionInfoSize = sizeof extended;
    EXPECT_TRUE(GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&extended)));
    return extended;
}

TEST(SystemInfo, AnswersAsAnNtWorkstationForEitherRecord) {
    const OSVERSIONINFOEXA extended = Version();
    EXPECT_EQ(extended.dwPlatformId, VER_PLATFORM_WIN32_NT);
    EXPECT_GE(extended.dwMajorVersion, 6u);
    EXPECT_EQ(extended.wProductType, 1);

    OSVERSIONINFOA plain{};
    plain.dwOSVersionInfoSize = sizeof plain - 1;
    EXPECT_FALSE(GetVersionExA(&plain));
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
}

TEST(SystemInfo, ThisSystemIsOfVersionTen) {
    EXPECT_EQ(Version().dwMajorVersion, 10u);
}

TEST(Keyboard, NoKeyIsDownUnlessTheApplicationsHookSaysSo) {
    EXPECT_EQ(GetKeyState(VK_CONTROL), 0);
    const KeyStateHook previous = SetKeyStateHook(
        [](int key) -> SHORT { return key == VK_CONTROL ? SHORT(0x8000) : SHORT{0}; });
    EXPECT_LT(GetKeyState(VK_CONTROL), 0);
    EXPECT_EQ(GetKeyState(VK_SHIFT), 0);
    SetKeyStateHook(previous);
    EXPECT_EQ(GetKeyState(VK_CONTROL), 0);
}

}  // namespace
}  // namespace nvk::os
