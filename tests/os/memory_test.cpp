#include <gtest/gtest.h>

#include <cstring>

#include "os/api/error.h"
#include "os/api/memory.h"

namespace {

using namespace nvk::os;

TEST(VirtualMemory, CommittedPagesAreZeroedAndWritable) {
    auto* bytes = static_cast<unsigned char*>(
        VirtualAlloc(nullptr, 10000, MEM_COMMIT | MEM_RESERVE | MEM_TOP_DOWN, PAGE_READWRITE));
    ASSERT_NE(bytes, nullptr);
    for (int i = 0; i < 10000; ++i) {
        ASSERT_EQ(bytes[i], 0);
    }
    std::memset(bytes, 0xAB, 10000);
    EXPECT_TRUE(VirtualFree(bytes, 0, MEM_RELEASE));
}

TEST(VirtualMemory, ReserveThenCommitInside) {
    auto* base = static_cast<char*>(VirtualAlloc(nullptr, 1 << 20, MEM_RESERVE, PAGE_READWRITE));
    ASSERT_NE(base, nullptr);
    char* page = static_cast<char*>(VirtualAlloc(base + 8192, 4096, MEM_COMMIT, PAGE_READWRITE));
    ASSERT_EQ(page, base + 8192);
    page[0] = 'x';
    page[4095] = 'y';
    EXPECT_TRUE(VirtualFree(page, 4096, MEM_DECOMMIT));
    // Committing again gives fresh zeros.
    ASSERT_NE(VirtualAlloc(page, 4096, MEM_COMMIT, PAGE_READWRITE), nullptr);
    EXPECT_EQ(page[0], 0);
    EXPECT_TRUE(VirtualFree(base, 0, MEM_RELEASE));
}

TEST(VirtualMemory, RefusesWhatItDoesNotKnow) {
    int local = 0;
    EXPECT_EQ(VirtualAlloc(&local, 4096, MEM_COMMIT, PAGE_READWRITE), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_ADDRESS);
    EXPECT_EQ(VirtualAlloc(nullptr, 0, MEM_COMMIT, PAGE_READWRITE), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);

    void* block = VirtualAlloc(nullptr, 4096, MEM_COMMIT, PAGE_READWRITE);
    EXPECT_FALSE(VirtualFree(block, 4096, MEM_RELEASE));  // release takes size 0
    EXPECT_FALSE(VirtualFree(static_cast<char*>(block) + 16, 0, MEM_RELEASE));
    EXPECT_TRUE(VirtualFree(block, 0, MEM_RELEASE));
    EXPECT_FALSE(VirtualFree(block, 0, MEM_RELEASE));
}

}  // namespace
