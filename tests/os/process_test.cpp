#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "os/api/error.h"
#include "os/api/process.h"
#include "os/api/sync.h"
#include "os/posix/command_line.h"
#include "os_test_support.h"

namespace nvk::os {
namespace {

using Arguments = std::vector<std::string>;

TEST(CommandLineTest, SplitsAsWindowsProgramsDo) {
    using posix::SplitCommandLine;
    EXPECT_EQ(SplitCommandLine("  prog  a\tb "), (Arguments{"prog", "a", "b"}));
    EXPECT_EQ(SplitCommandLine("\"C:\\Program Files\\x.exe\" \"a b\" c"),
              (Arguments{"C:\\Program Files\\x.exe", "a b", "c"}));
    // Quotes anywhere in the program's name keep its blanks and go; line
    // feeds separate nothing.
    EXPECT_EQ(SplitCommandLine("C:\\\"Program Files\"\\x a"),
              (Arguments{"C:\\Program Files\\x", "a"}));
    EXPECT_EQ(SplitCommandLine("C:\\dir\\\"p q"), (Arguments{"C:\\dir\\p q"}));
    EXPECT_EQ(SplitCommandLine("p a\nb\r c"), (Arguments{"p", "a\nb\r", "c"}));
    EXPECT_EQ(SplitCommandLine("p a\\\\b \"c\\\\\" d\\\"e f\\\\\\\"g"),
              (Arguments{"p", "a\\\\b", "c\\", "d\"e", "f\\\"g"}));
    EXPECT_EQ(SplitCommandLine("p \"\" x\"y z\"w \"a\"\"b\""),
              (Arguments{"p", "", "xy zw", "a\"b"}));
    EXPECT_EQ(SplitCommandLine("   "), Arguments{});
}

class ProcessTest : public ::testing::Test {
protected:
    test::TempFolder folder_;
};

TEST_F(ProcessTest, ExitCodesAndWaits) {
    EXPECT_EQ(test::RunHelper("exit 7"), 7u);
    EXPECT_EQ(test::RunHelper("exit 0"), 0u);

    PROCESS_INFORMATION sleeper = test::StartHelper("sleep 10000");
    ASSERT_NE(sleeper.hProcess, nullptr);
    DWORD code = 0;
    ASSERT_TRUE(GetExitCodeProcess(sleeper.hProcess, &code));
    EXPECT_EQ(code, STILL_ACTIVE);
    EXPECT_EQ(WaitForSingleObject(sleeper.hProcess, 20), WAIT_TIMEOUT);
    ASSERT_TRUE(TerminateProcess(sleeper.hThread, 9));  // either handle names the process
    EXPECT_EQ(WaitForSingleObject(sleeper.hProcess, 0), WAIT_OBJECT_0);
    ASSERT_TRUE(GetExitCodeProcess(sleeper.hProcess, &code));
    EXPECT_EQ(code, 9u);
    EXPECT_FALSE(TerminateProcess(sleeper.hProcess, 1));
    CloseHandle(sleeper.hThread);
    CloseHandle(sleeper.hProcess);
}

TEST_F(ProcessTest, ArgumentsEnvironmentAndFolder) {
    std::string output = folder_ / "args.txt";
    EXPECT_EQ(test::RunHelper("args " + output + " plain \"two words\" a\\\\\\\"b \"\""), 0u);
    std::ifstream in(output);
    Arguments lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    EXPECT_EQ(lines, (Arguments{"plain", "two words", "a\\\"b", ""}));

    const char block[] = "NVK_CHILD=yes\0OTHER=1\0";
    std::string line = test::HelperCommand("env env.txt NVK_CHILD yes");
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child = {};
    ASSERT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0,
                               const_cast<char*>(block), folder_.str().c_str(), &startup, &child));
    EXPECT_EQ(test::FinishProcess(child), 0u);
    EXPECT_TRUE(std::filesystem::exists(folder_ / "env.txt"));  // written in its folder
    EXPECT_FALSE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                (folder_ / "none").c_str(), &startup, &child));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    // Windows reads the start-up information unconditionally.
    EXPECT_FALSE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                nullptr, &child));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(ProcessTest, ProgramsAreFoundOrReported) {
    // The Windows name of a program finds it without ".exe".
    std::string line = "\"" NVK_OS_HELPER ".exe\" exit 3";
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION child = {};
    ASSERT_TRUE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                               &startup, &child));
    EXPECT_EQ(test::FinishProcess(child), 3u);
    ASSERT_TRUE(CreateProcessA(NVK_OS_HELPER, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                               nullptr, &startup, &child));
    EXPECT_EQ(test::FinishProcess(child), 3u);

    line = "nvk_no_such_program /x";
    EXPECT_FALSE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                &startup, &child));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    std::ofstream(folder_ / "text.exe") << "not a program";
    line = "\"" + folder_ / "text.exe" + "\"";
    EXPECT_FALSE(CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                &startup, &child));  // not executable

    EXPECT_GT(WinExec(test::HelperCommand("exit 0").c_str(), SW_SHOWNORMAL), 31u);
    EXPECT_EQ(WinExec("nvk_no_such_program", SW_SHOWNORMAL), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(WinExec((folder_ / "none/x.exe").c_str(), SW_SHOWNORMAL), ERROR_PATH_NOT_FOUND);
}

}  // namespace
}  // namespace nvk::os
