#include "progress.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>

#include "os/api/console.h"

namespace nvk::tool {

namespace os = nvk::os;

namespace {

bool OnTerminal(os::DWORD stream) {
    os::DWORD mode = 0;
    return os::GetConsoleMode(os::GetStdHandle(stream), &mode) != 0;
}

// "label [    <=>      ] 2.4 s": the marker goes to and fro.
std::string Bar(std::string_view label, int tick, double seconds) {
    constexpr int kWidth = 24;
    const int span = kWidth - 3;
    const int at = tick % (2 * span) < span ? tick % span : span - tick % span;
    std::string bar(kWidth, ' ');
    bar.replace(static_cast<std::size_t>(at), 3, "<=>");
    char time[32];
    std::snprintf(time, sizeof time, "%.1f s", seconds);
    return std::string(label) + " [" + bar + "] " + time;
}

}  // namespace

void RunWithProgress(std::string_view label, const std::function<void()>& work) {
    if (!OnTerminal(os::STD_OUTPUT_HANDLE)) {
        work();
        return;
    }
    std::mutex lock;
    std::condition_variable changed;
    bool done = false;
    std::thread worker([&] {
        work();
        std::lock_guard<std::mutex> guard(lock);
        done = true;
        changed.notify_one();
    });
    const auto start = std::chrono::steady_clock::now();
    std::size_t drawn = 0;
    std::unique_lock<std::mutex> guard(lock);
    for (int tick = 0;
         !changed.wait_for(guard, std::chrono::milliseconds(100), [&] { return done; }); ++tick) {
        const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
        const std::string bar = Bar(label, tick, spent.count());
        drawn = bar.size();
        std::cout << '\r' << bar << std::flush;
    }
    guard.unlock();
    worker.join();
    if (drawn > 0) {
        std::cout << '\r' << std::string(drawn, ' ') << '\r' << std::flush;
    }
}

bool ErrorOnTerminal() {
    return OnTerminal(os::STD_ERROR_HANDLE);
}

void DrawPercentBar(const char* label, long percent) {
    constexpr long kWidth = 30;
    const long shown = std::clamp(percent, 0L, 100L);
    std::string bar(static_cast<std::size_t>(shown * kWidth / 100), '#');
    bar.resize(kWidth, ' ');
    const std::string text = std::string(label == nullptr ? "" : label).substr(0, 40);
    char line[128];
    std::snprintf(line, sizeof line, "\r[%s] %3ld%% %-40s", bar.c_str(), shown, text.c_str());
    std::cerr << line << std::flush;
}

void EndPercentBar() {
    std::cerr << '\n';
}

}  // namespace nvk::tool
