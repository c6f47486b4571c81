#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "os/api/environment.h"
#include "os/api/error.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

std::string Expand(const char* text) {
    char buffer[256];
    DWORD size = ExpandEnvironmentStringsA(text, buffer, sizeof buffer);
    EXPECT_EQ(size, std::strlen(buffer) + 1) << text;
    return buffer;
}

TEST(EnvironmentTest, GetReportsLengthsAndMissingNames) {
    test::ScopedEnv variable("NVK_ENV_TEST", "abcd");
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(GetEnvironmentVariableA("NVK_ENV_TEST", buffer, 4), 5u);  // no room for the end
    EXPECT_EQ(buffer[0], '#');
    EXPECT_EQ(GetEnvironmentVariableA("NVK_ENV_TEST", buffer, 5), 4u);
    EXPECT_STREQ(buffer, "abcd");
    EXPECT_EQ(GetEnvironmentVariableA("NVK_ENV_TEST", nullptr, 0), 5u);
    // Names are found whatever their case, as on Windows.
    EXPECT_EQ(GetEnvironmentVariableA("nvk_env_test", buffer, sizeof buffer), 4u);

    EXPECT_EQ(GetEnvironmentVariableA("NVK_ENV_MISSING", buffer, sizeof buffer), 0u);
    EXPECT_EQ(GetLastError(), ERROR_ENVVAR_NOT_FOUND);
}

TEST(EnvironmentTest, SetChangesAndRemoves) {
    test::ScopedEnv restore("NVK_ENV_TEST", nullptr);
    char buffer[16];
    ASSERT_TRUE(SetEnvironmentVariableA("NVK_ENV_TEST", "one"));
    ASSERT_TRUE(SetEnvironmentVariableA("Nvk_Env_Test", "two"));  // the same variable
    EXPECT_EQ(GetEnvironmentVariableA("NVK_ENV_TEST", buffer, sizeof buffer), 3u);
    EXPECT_STREQ(buffer, "two");
    ASSERT_TRUE(SetEnvironmentVariableA("NVK_ENV_TEST", ""));
    // Present and empty: the call sets no error, so the caller clears it first.
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(GetEnvironmentVariableA("NVK_ENV_TEST", buffer, sizeof buffer), 0u);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    ASSERT_TRUE(SetEnvironmentVariableA("NVK_ENV_TEST", nullptr));
    EXPECT_EQ(GetEnvironmentVariableA("NVK_ENV_TEST", buffer, sizeof buffer), 0u);
    EXPECT_EQ(GetLastError(), ERROR_ENVVAR_NOT_FOUND);
}

TEST(EnvironmentTest, ExpandKeepsUnknownNamesAsWritten) {
    test::ScopedEnv skin("NVK_SKIN", "Blue");
    test::ScopedEnv restore("NVK_NOPE", nullptr);
    EXPECT_EQ(Expand("%NVK_SKIN%\\skins\\%nvk_skin%.skn"), "Blue\\skins\\Blue.skn");
    EXPECT_EQ(Expand("%NVK_NOPE%\\x"), "%NVK_NOPE%\\x");
    EXPECT_EQ(Expand("a%NVK_NOPE%NVK_SKIN%"), "a%NVK_NOPE%NVK_SKIN%");
    EXPECT_EQ(Expand("%NVK_SKIN%%NVK_SKIN%"), "BlueBlue");
    EXPECT_EQ(Expand("100% sure, 50%"), "100% sure, 50%");
    EXPECT_EQ(Expand("%%"), "%%");
    EXPECT_EQ(Expand("tail %NVK_SKIN"), "tail %NVK_SKIN");
    EXPECT_EQ(Expand(""), "");

    char small[4] = "xyz";
    EXPECT_EQ(ExpandEnvironmentStringsA("%NVK_SKIN%!", small, sizeof small), 6u);
    EXPECT_EQ(ExpandEnvironmentStringsA("%NVK_SKIN%!", nullptr, 0), 6u);
}

}  // namespace
}  // namespace nvk::os
