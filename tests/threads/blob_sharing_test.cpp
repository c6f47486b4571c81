// Blob counts are plain integers behind the process-wide blob lock: values
// that share one block are copied, separated and dropped on several threads.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "nvk/core/blob.h"

namespace {

TEST(BlobThreads, SharedBlockCopiedSeparatedAndDroppedEverywhere) {
    CSBlob shared;
    shared.SetSize(100);
    std::memset(shared.GetWritableData(), 's', 100);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&shared, t] {
            std::vector<CSBlob> copies;
            for (int i = 0; i < 2000; ++i) {
                copies.push_back(shared);
                CSBlob changed = copies.back();
                static_cast<char*>(changed.GetWritableData())[0] = static_cast<char>('a' + t);
                EXPECT_EQ(static_cast<const char*>(changed.GetData())[1], 's');
                if (copies.size() > 50) {
                    copies.erase(copies.begin(), copies.begin() + 25);
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(shared.Block()->RefCount, 1u);
    EXPECT_EQ(static_cast<const char*>(shared.GetData())[0], 's');
}

}  // namespace
