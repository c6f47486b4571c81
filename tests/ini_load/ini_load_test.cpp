// Eight processes add to one counter while two more read the file in a loop:
// no update may be lost, and no reader may see a file that is not whole.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "nvk/config/ini_file.h"
#include "os/api/process.h"
#include "os/api/sync.h"

namespace {

namespace fs = std::filesystem;

constexpr int kWriters = 8;
constexpr int kIncrements = 200;
constexpr int kReaders = 2;
constexpr nvk::os::DWORD kPatience = 120000;

nvk::os::PROCESS_INFORMATION Start(const std::string& role, const fs::path& file, int number,
                                   nvk::os::DWORD start) {
    std::string line = "\"" NVK_INI_LOAD_CHILD "\" " + role + " \"" + file.string() + "\" " +
                       std::to_string(number) + " " + std::to_string(start);
    nvk::os::PROCESS_INFORMATION process = {};
    if (!nvk::os::CreateProcessA(nullptr, line.data(), nullptr, nullptr, nvk::os::FALSE, 0, nullptr,
                                 nullptr, nullptr, &process)) {
        process.hProcess = nullptr;
    }
    return process;
}

// The exit status, or -1 for a process that did not start or end in time.
long Finish(nvk::os::PROCESS_INFORMATION& process) {
    if (process.hProcess == nullptr) {
        return -1;
    }
    long status = -1;
    if (nvk::os::WaitForSingleObject(process.hProcess, kPatience) == nvk::os::WAIT_OBJECT_0) {
        nvk::os::DWORD code = 0;
        nvk::os::GetExitCodeProcess(process.hProcess, &code);
        status = static_cast<long>(code);
    } else {
        nvk::os::TerminateProcess(process.hProcess, 99);
        nvk::os::WaitForSingleObject(process.hProcess, nvk::os::INFINITE);
    }
    nvk::os::CloseHandle(process.hThread);
    nvk::os::CloseHandle(process.hProcess);
    return status;
}

TEST(IniLoad, WritersLoseNoUpdateAndReadersSeeWholeFiles) {
    const fs::path folder =
        fs::temp_directory_path() /
        ("nvk_ini_load_" +
         std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    fs::remove_all(folder);
    fs::create_directories(folder);
    const fs::path file = folder / "counter.ini";
    {
        EIniFile ini;
        ASSERT_TRUE(ini.Open(file.string().c_str(), false));
        ini["Load"]["Filler"] = NVK_INI_LOAD_FILLER;
        ini["Load"]["Counter"] = "0";
    }

    // Everyone starts together, once all are running.
    const nvk::os::DWORD start = nvk::os::GetTickCount() + 500;
    std::vector<nvk::os::PROCESS_INFORMATION> readers;
    std::vector<nvk::os::PROCESS_INFORMATION> writers;
    for (int i = 0; i < kReaders; ++i) {
        readers.push_back(Start("reader", file, kWriters * kIncrements, start));
    }
    for (int i = 0; i < kWriters; ++i) {
        writers.push_back(Start("writer", file, kIncrements, start));
    }
    for (auto& writer : writers) {
        EXPECT_EQ(Finish(writer), 0) << "a writer failed (see ini_load_child.cpp)";
    }
    for (auto& reader : readers) {
        EXPECT_EQ(Finish(reader), 0) << "a reader failed (see ini_load_child.cpp)";
    }

    const EIniFile ini(file.string().c_str());
    EXPECT_EQ(ini.GetPrivateProfileIntA("Load", "Counter", -1, ""), kWriters * kIncrements);
    fs::remove_all(folder);
}

}  // namespace
