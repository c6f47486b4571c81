// The frame seen from outside a process: a module unloaded on one thread
// leaves the process lock free for the others, and a process under an
// address-space limit starts. A child that hangs is ended by the time-out.
#include <gtest/gtest.h>

#include <string>

#include "os/api/process.h"
#include "os/api/sync.h"
#include "support/child_process.h"

namespace {

using namespace nvk::os;

constexpr DWORD kPatience = 30000;

// The exit status of `commandLine`, or 0xDEAD when it did not start or end in
// time.
DWORD ExitStatus(std::string commandLine) {
    return nvk::test::RunProcess(std::move(commandLine), kPatience);
}

std::string Child(const char* mode) {
    return std::string("\"" NVK_FRAME_CHILD "\" ") + mode;
}

TEST(FrameProcess, AModuleUnloadedOnOneThreadLeavesTheProcessLockToTheOthers) {
    EXPECT_EQ(ExitStatus(Child("unload-worker")), 0u);
    EXPECT_EQ(ExitStatus(Child("unload-main")), 0u);
}

TEST(FrameProcess, StartsUnderASmallAddressSpace) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers reserve their own shadow memory";
#else
    EXPECT_EQ(ExitStatus("/bin/sh -c \"ulimit -v 1000000 && exec " NVK_FRAME_CHILD " start\""), 0u);
#endif
}

}  // namespace
