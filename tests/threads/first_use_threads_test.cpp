// What the library fills on first use (month names, the well-known places,
// the country) is first asked for by eight threads at once. Only a fresh
// process has never asked, so each run is a process of its own: the test
// starts itself again for each (gtest's thread-safe death-test style).
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "nvk/calendar/cbdate.h"
#include "nvk/context/loc.h"
#include "nvk/core/chaine.h"
#include "os/api/environment.h"
#include "support/start_gate.h"

namespace {

constexpr int kThreads = 8;

// Asks on eight threads released together, then again on this one once the
// values are made: true when every thread's answer is that later one.
template <class Ask>
bool RaceFirstUse(Ask ask) {
    nvk::test::StartGate start(kThreads);
    std::array<std::string, kThreads> answers;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            start.ArriveAndWait();
            answers[t] = ask(t);
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    bool same = true;
    for (int t = 0; t < kThreads; ++t) {
        same = same && !answers[t].empty() && answers[t] == ask(t);
    }
    return same;
}

class FirstUse : public ::testing::Test {
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(FirstUse, EightThreadsPrintTheirFirstDates) {
    for (int run = 0; run < 50; ++run) {
        EXPECT_EXIT(
            {
                nvk::os::SetEnvironmentVariableA("LANG", "fr_FR");
                CBDate::PrintOption = CBDate::PrintDayMonthYear;
                const bool same = RaceFirstUse([](int t) {
                    // One month for each thread: 5 January, 5 February, ...
                    CString text;
                    text.Format("05/%02d/2014", t + 1);
                    return std::string(CBDate(text).AsString().GetString());
                });
                std::exit(same ? 0 : 1);
            },
            ::testing::ExitedWithCode(0), "")
            << "run " << run;
    }
}

TEST_F(FirstUse, EightThreadsAskForTheWellKnownPlaces) {
    for (int run = 0; run < 20; ++run) {
        EXPECT_EXIT(
            {
                nvk::os::SetEnvironmentVariableA("cdCountry", "CH");
                // The environment changes under the threads' reads of it.
                std::atomic<bool> done{false};
                std::thread changer([&done] {
                    for (int i = 0; !done.load(); ++i) {
                        nvk::os::SetEnvironmentVariableA("NVK_THREADS_CHANGING",
                                                         std::to_string(i).c_str());
                    }
                });
                const bool same = RaceFirstUse([](int) {
                    Chaine exe, folder, temp;
                    return std::string(exe.GetExePath().c_str()) + "|" +
                           folder.GetExeFolder().c_str() + "|" + temp.GetTempFolder().c_str() +
                           "|" + ELoc::Get().GetCountry().c_str();
                });
                done = true;
                changer.join();
                std::exit(same ? 0 : 1);
            },
            ::testing::ExitedWithCode(0), "")
            << "run " << run;
    }
}

}  // namespace
