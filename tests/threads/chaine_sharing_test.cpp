// Chaine values may be copied and released on different threads while they
// share a buffer; the counts are interlocked and the block storage is locked.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "nvk/core/chaine.h"

namespace {

TEST(ChaineThreads, SharedBuffersCopiedChangedAndReleasedEverywhere) {
    const Chaine shared("a text that every thread shares and copies");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&shared, t] {
            std::vector<Chaine> copies;
            for (int i = 0; i < 2000; ++i) {
                copies.push_back(shared);
                Chaine changed = copies.back();
                changed += static_cast<char>('a' + t);  // copies before it changes
                EXPECT_EQ(changed.Length(), shared.Length() + 1);
                if (copies.size() > 50) {
                    copies.erase(copies.begin(), copies.begin() + 25);
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(shared.Buffer()->RefCount, 1);
    EXPECT_STREQ(shared, "a text that every thread shares and copies");
}

TEST(ChaineThreads, ValuesMadeOnOneThreadDieOnAnother) {
    std::vector<Chaine> made(3000);
    std::thread maker([&] {
        for (std::size_t i = 0; i < made.size(); ++i) {
            made[i] =
                Chaine(i % 2 == 0 ? "short"
                                  : "a longer text that needs more than sixty-four bytes of room");
        }
    });
    maker.join();
    std::thread killer([&] { made.clear(); });
    killer.join();
    EXPECT_TRUE(made.empty());
}

}  // namespace
