// What the OS layer's tests share: a scratch folder, a scoped environment
// variable, and the helper process.
#pragma once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <thread>

#include "os/api/process.h"
#include "os/api/sync.h"
#include "support/child_process.h"

namespace nvk::os::test {

class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "nvk_os_XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TempFolder() { std::filesystem::remove_all(path_); }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    const std::string& str() const { return path_; }

private:
    std::string path_;
};

// Sets (or with null, removes) a variable for the scope of a test.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : name_(name) {
        const char* old = std::getenv(name);
        old_ = old != nullptr ? std::optional<std::string>(old) : std::nullopt;
        Set(value);
    }
    ~ScopedEnv() { Set(old_ ? old_->c_str() : nullptr); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    void Set(const char* value) {
        value != nullptr ? setenv(name_.c_str(), value, 1) : unsetenv(name_.c_str());
    }
    std::string name_;
    std::optional<std::string> old_;
};

// A kernel-object name of this test process's own: names are the user's, and
// other builds' test runs may use the same ones at the same time.
inline const char* ObjectName(const char* base) {
    static std::map<std::string, std::string> names;
    std::string& name = names[base];
    if (name.empty()) {
        name = std::string(base) + "-" + std::to_string(GetCurrentProcessId());
    }
    return name.c_str();
}

inline std::string HelperCommand(const std::string& arguments) {
    return "\"" NVK_OS_HELPER "\" " + arguments;
}

using nvk::test::FinishProcess;

inline PROCESS_INFORMATION StartHelper(const std::string& arguments) {
    return nvk::test::StartProcess(HelperCommand(arguments));
}

// Runs the helper to its end and gives its exit code.
inline DWORD RunHelper(const std::string& arguments) {
    return nvk::test::RunProcess(HelperCommand(arguments));
}

// A helper that holds a file open until released.
class HeldByHelper {
public:
    HeldByHelper(const TempFolder& folder, const std::string& openArguments)
        : ready_(folder / "ready"), release_(folder / "release") {
        std::filesystem::remove(ready_);
        std::filesystem::remove(release_);
        process_ = StartHelper("open " + openArguments + " hold " + ready_ + " " + release_);
        auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!std::filesystem::exists(ready_) && std::chrono::steady_clock::now() < giveUp) {
            DWORD code = 0;
            if (GetExitCodeProcess(process_.hProcess, &code) && code != STILL_ACTIVE) {
                break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
    ~HeldByHelper() { Release(); }
    HeldByHelper(const HeldByHelper&) = delete;
    HeldByHelper& operator=(const HeldByHelper&) = delete;

    bool holding() const { return std::filesystem::exists(ready_); }
    HANDLE process() const { return process_.hProcess; }
    DWORD Release() {
        if (process_.hProcess == nullptr) {
            return code_;
        }
        std::ofstream(release_).put('1');
        code_ = FinishProcess(process_);
        process_.hProcess = nullptr;
        return code_;
    }

private:
    std::string ready_;
    std::string release_;
    PROCESS_INFORMATION process_ = {};
    DWORD code_ = 0;
};

}  // namespace nvk::os::test
