// The processes of the INI load test.
//   ini_load_child writer FILE COUNT START   adds 1 to the counter COUNT times
//   ini_load_child reader FILE TARGET START  reads until the counter is TARGET
// Both begin at the tick count START, so that they all start together.
//   ini_load_child lock FILE MS START        locks every byte of the file,
//                                            makes FILE.ready, and ends MS
//                                            milliseconds later
//   ini_load_child stop FILE STEP 0          adds 1 to the counter and drops
//                                            section Extra, and ends at once
//                                            at the STEP-th file-changing
//                                            call of the OS layer (0: never)
// Exit status 0 on success; otherwise the number of the check that failed;
// kStopped for a process stopped on purpose.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "nvk/config/ini_file.h"
#include "os/api/call_hook.h"
#include "os/api/file.h"
#include "os/api/sync.h"

namespace {

constexpr int kLongWait = 60000;
constexpr nvk::os::DWORD kReaderDeadline = 60000;

// Written by the test beside the counter; a torn file loses it.
constexpr const char* kFiller = NVK_INI_LOAD_FILLER;

// The counter, or -1 if the file does not hold a whole one.
long Counter(const EIniFile& ini) {
    const Chaine value = ini["Load"]["Counter"];
    if (value.IsEmpty() || ini["Load"]["Filler"] != kFiller ||
        std::strspn(value.c_str(), "0123456789") != static_cast<std::size_t>(value.Length())) {
        return -1;
    }
    return std::strtol(value.c_str(), nullptr, 10);
}

int Write(const Chaine& file, long count) {
    for (long i = 0; i < count; ++i) {
        EIniFile ini;
        if (!ini.Open(file, false)) {
            return 10;
        }
        const long counter = Counter(ini);
        if (counter < 0) {
            return 11;
        }
        // Hold the file a while, as work between reading and writing would:
        // an exclusion that failed would now lose updates.
        nvk::os::Sleep(1);
        char digits[24];
        std::snprintf(digits, sizeof digits, "%ld", counter + 1);
        ini["Load"]["Counter"] = digits;
        if (!ini.Close()) {
            return 12;
        }
    }
    return 0;
}

constexpr int kStopped = 70;
long g_stopAt = 0;

// Ends the process as a kill would: no destructor, no flush, no Close.
void StopAtStep(const char* /*call*/) {
    if (--g_stopAt == 0) {
        std::_Exit(kStopped);
    }
}

int Stop(const Chaine& file, long step) {
    EIniFile ini;
    if (!ini.Open(file, false)) {
        return 30;
    }
    const long counter = Counter(ini);
    if (counter < 0) {
        return 31;
    }
    char digits[24];
    std::snprintf(digits, sizeof digits, "%ld", counter + 1);
    ini["Load"]["Counter"] = digits;
    ini.RemoveSection("Extra");
    g_stopAt = step;
    nvk::os::SetCallHook(step > 0 ? StopAtStep : nullptr);
    return ini.Close() ? 0 : 32;
}

int Read(const Chaine& file, long target) {
    const nvk::os::DWORD start = nvk::os::GetTickCount();
    long last = 0;
    while (nvk::os::GetTickCount() - start < kReaderDeadline) {
        EIniFile ini;
        if (!ini.Open(file, true)) {
            return 20;
        }
        const long counter = Counter(ini);
        if (counter < 0) {
            return 21;
        }
        if (counter < last) {
            return 23;
        }
        if (counter == target) {
            return 0;
        }
        last = counter;
        // Leave the writers room between reads.
        nvk::os::Sleep(5);
    }
    return 22;
}

// Holds the file as another program's byte-range lock does: its open shares
// everything, so only the lock keeps others from reading.
int Lock(const Chaine& file, long milliseconds) {
    namespace os = nvk::os;
    const os::HANDLE held = os::CreateFileA(
        file, os::GENERIC_READ, os::FILE_SHARE_READ | os::FILE_SHARE_WRITE | os::FILE_SHARE_DELETE,
        nullptr, os::OPEN_EXISTING, 0, nullptr);
    if (held == os::INVALID_HANDLE_VALUE || !os::LockFile(held, 0, 0, 0xFFFFFFFF, 0)) {
        return 40;
    }
    const os::HANDLE ready =
        os::CreateFileA(file + ".ready", os::GENERIC_WRITE, 0, nullptr, os::CREATE_NEW, 0, nullptr);
    if (ready == os::INVALID_HANDLE_VALUE) {
        return 41;
    }
    os::CloseHandle(ready);
    os::Sleep(static_cast<os::DWORD>(milliseconds));
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        return 2;
    }
    const auto start = static_cast<nvk::os::DWORD>(std::strtoul(argv[4], nullptr, 10));
    while (static_cast<nvk::os::LONG>(nvk::os::GetTickCount() - start) < 0) {
        nvk::os::Sleep(1);
    }
    EIniFile::SetTimeOut(kLongWait);
    const Chaine file(argv[2]);
    const long number = std::strtol(argv[3], nullptr, 10);
    if (std::strcmp(argv[1], "writer") == 0) {
        return Write(file, number);
    }
    if (std::strcmp(argv[1], "reader") == 0) {
        return Read(file, number);
    }
    if (std::strcmp(argv[1], "lock") == 0) {
        return Lock(file, number);
    }
    if (std::strcmp(argv[1], "stop") == 0) {
        return Stop(file, number);
    }
    return 2;
}
