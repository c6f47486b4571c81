// Runs a program's benchmarks and prints, for each case, how many times as
// fast our subject is as each peer, all measured in the same run.
//
// Benchmarks are named "<case> | <subject>", e.g. "copy 64 bytes | Chaine" and
// "copy 64 bytes | std::string"; RunWithRatios(argc, argv, "Chaine") then
// prints "copy 64 bytes: Chaine is 6.10x std::string".
#pragma once

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace nvk::bench {

class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) {
                continue;
            }
            const std::string name = run.benchmark_name();
            const auto bar = name.find(" | ");
            if (bar == std::string::npos) {
                continue;
            }
            std::string subject = name.substr(bar + 3);
            // Thread and argument suffixes belong to the case.
            std::string suffix;
            if (const auto slash = subject.find('/'); slash != std::string::npos) {
                suffix = subject.substr(slash);
                subject.resize(slash);
            }
            const std::string key = name.substr(0, bar) + suffix;
            if (!m_Times.contains(key)) {
                m_Order.push_back(key);
            }
            m_Times[key].emplace_back(subject, run.GetAdjustedRealTime());
        }
    }

    void PrintRatios(const std::string& ours) const {
        std::printf("\nratios (how many times as fast %s is, same run):\n", ours.c_str());
        for (const std::string& key : m_Order) {
            const auto& times = m_Times.at(key);
            double ourTime = 0;
            for (const auto& [subject, time] : times) {
                if (subject == ours) {
                    ourTime = time;
                }
            }
            if (ourTime <= 0) {
                continue;
            }
            for (const auto& [subject, time] : times) {
                if (subject != ours) {
                    std::printf("  %-40s %s is %.2fx %s\n", key.c_str(), ours.c_str(),
                                time / ourTime, subject.c_str());
                }
            }
        }
    }

private:
    std::vector<std::string> m_Order;
    std::map<std::string, std::vector<std::pair<std::string, double>>> m_Times;
};

inline int RunWithRatios(int argc, char** argv, const std::string& ours) {
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatios(ours);
    benchmark::Shutdown();
    return 0;
}

}  // namespace nvk::bench
