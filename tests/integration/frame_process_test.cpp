// The frame seen from outside a process: a module unloaded on one thread
// leaves the process lock free for the others, and a process under an
// address-space limit starts. A child that hangs is ended by the time-out.
#include <gtest/gtest.h>

#include <string>

#include "os/api/process.h"
#include "os/api/sync.h"

namespace {

using namespace nvk::os;

constexpr DWORD kPatience = 30000;

// The exit status of `commandLine`, or -1 when it did not start or end in time.
long ExitStatus(std::string commandLine) {
    PROCESS_INFORMATION process = {};
    if (!CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        nullptr, &process)) {
        return -1;
    }
    long status = -1;
    if (WaitForSingleObject(process.hProcess, kPatience) == WAIT_OBJECT_0) {
        DWORD code = 0;
        GetExitCodeProcess(process.hProcess, &code);
        status = static_cast<long>(code);
    } else {
        TerminateProcess(process.hProcess, 99);
        WaitForSingleObject(process.hProcess, INFINITE);
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return status;
}

std::string Child(const char* mode) {
    return std::string("\"" NVK_FRAME_CHILD "\" ") + mode;
}

TEST(FrameProcess, AModuleUnloadedOnOneThreadLeavesTheProcessLockToTheOthers) {
    EXPECT_EQ(ExitStatus(Child("unload-worker")), 0);
    EXPECT_EQ(ExitStatus(Child("unload-main")), 0);
}

TEST(FrameProcess, StartsUnderASmallAddressSpace) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers reserve their own shadow memory";
#else
    EXPECT_EQ(ExitStatus("/bin/sh -c \"ulimit -v 1000000 && exec " NVK_FRAME_CHILD " start\""), 0);
#endif
}

}  // namespace
