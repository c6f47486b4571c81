// The module's language caches are shared by every ELocale of an id, on any
// thread: eight threads, each with a language of its own, start together and
// must only ever be handed their own cache.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

#include "nvk/context/locale.h"
#include "support/start_gate.h"

namespace {

TEST(LocaleThreads, EveryThreadGetsTheCacheOfItsOwnLanguage) {
    // French, German, Swiss German, English (US and UK), Italian, Spanish,
    // Dutch.
    const std::array<std::uint32_t, 8> languages = {1036, 1031, 2055, 1033, 2057, 1040, 3082, 1043};
    // What each language's names are, from caches of the test's own, outside
    // the module's map.
    std::array<std::vector<std::string>, 8> expected;
    for (std::size_t t = 0; t < languages.size(); ++t) {
        LanguageCache own(languages[t]);
        const PTableau<Chaine>& names = own.GetMonthNames(false);
        for (int i = 0; i < names.Size(); ++i) {
            expected[t].emplace_back(names[i].c_str());
        }
        ASSERT_EQ(expected[t].size(), 12u);
    }
    ASSERT_NE(expected[0][2], expected[1][2]);  // "mars" and "März" tell apart

    nvk::test::StartGate start(static_cast<int>(languages.size()));
    std::array<int, 8> wrong{};
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < languages.size(); ++t) {
        threads.emplace_back([&, t] {
            start.ArriveAndWait();  // the first requests of all eight at once
            for (int i = 0; i < 2000; ++i) {
                ELocale locale(languages[t]);
                const PTableau<Chaine>& names = locale.Cache().GetMonthNames(false);
                if (locale.Cache().Lcid != languages[t] ||
                    expected[t][i % 12] != names[i % 12].c_str()) {
                    ++wrong[t];
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (std::size_t t = 0; t < languages.size(); ++t) {
        EXPECT_EQ(wrong[t], 0) << "language " << languages[t];
    }
}

}  // namespace
