// Starting a program from a test and following it to its end, as Windows
// callers must: with a STARTUPINFOA, which CreateProcessA always reads.
#pragma once

#include <string>
#include <utility>

#include "os/api/process.h"
#include "os/api/sync.h"

namespace nvk::test {

// The started process; its hProcess is null when it did not start.
inline os::PROCESS_INFORMATION StartProcess(std::string line) {
    os::STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    os::PROCESS_INFORMATION information = {};
    if (!os::CreateProcessA(nullptr, line.data(), nullptr, nullptr, os::FALSE, 0, nullptr, nullptr,
                            &startup, &information)) {
        information.hProcess = nullptr;
    }
    return information;
}

// The exit code, once the process ends within `patience` milliseconds;
// 0xDEAD when it did not start or did not end in time (it is then ended).
inline os::DWORD FinishProcess(os::PROCESS_INFORMATION& information,
                               os::DWORD patience = os::INFINITE) {
    if (information.hProcess == nullptr) {
        return 0xDEAD;
    }
    os::DWORD code = 0xDEAD;
    if (os::WaitForSingleObject(information.hProcess, patience) == os::WAIT_OBJECT_0) {
        os::GetExitCodeProcess(information.hProcess, &code);
    } else {
        os::TerminateProcess(information.hProcess, 0xDEAD);
        os::WaitForSingleObject(information.hProcess, os::INFINITE);
    }
    os::CloseHandle(information.hThread);
    os::CloseHandle(information.hProcess);
    information.hProcess = nullptr;
    return code;
}

inline os::DWORD RunProcess(std::string line, os::DWORD patience = os::INFINITE) {
    os::PROCESS_INFORMATION information = StartProcess(std::move(line));
    return FinishProcess(information, patience);
}

}  // namespace nvk::test
