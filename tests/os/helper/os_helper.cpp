// The second process of the OS layer's tests. Its exit status is 0 for
// success, or the error code of the step that failed.
//
//   os_helper open PATH ACCESS SHARE DISPOSITION [lock OFFSET LENGTH]
//             [read OFFSET LENGTH] [hold READY RELEASE]
//       opens a file (numbers in any C base), then optionally locks a region,
//       reads a region, and holds everything until RELEASE exists, having
//       made READY once it holds.
//   os_helper exit CODE                  ends with CODE
//   os_helper sleep MILLISECONDS         sleeps, then ends with 0
//   os_helper args OUTPUT ARG...         writes its arguments to OUTPUT, one a line
//   os_helper env OUTPUT NAME VALUE      0 if NAME is VALUE, 1 otherwise;
//                                        makes OUTPUT (relative to its folder)
//   os_helper regset KEY PREFIX COUNT    sets the values PREFIX0.. of
//                                        HKEY_CURRENT_USER\KEY, one call each
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/registry.h"

using namespace nvk::os;

namespace {

DWORD Number(const char* text) {
    return static_cast<DWORD>(std::strtoul(text, nullptr, 0));
}

int Open(int argc, char** argv) {
    if (argc < 6) {
        return 255;
    }
    HANDLE file = CreateFileA(argv[2], Number(argv[3]), Number(argv[4]), nullptr, Number(argv[5]),
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return static_cast<int>(GetLastError());
    }
    for (int i = 6; i + 2 < argc; i += 3) {
        std::string step = argv[i];
        DWORD first = Number(argv[i + 1]);
        DWORD second = Number(argv[i + 2]);
        if (step == "lock" && !LockFile(file, first, 0, second, 0)) {
            return static_cast<int>(GetLastError());
        }
        if (step == "read") {
            std::vector<char> buffer(second);
            DWORD got = 0;
            SetFilePointer(file, static_cast<LONG>(first), nullptr, FILE_BEGIN);
            if (!ReadFile(file, buffer.data(), second, &got, nullptr)) {
                return static_cast<int>(GetLastError());
            }
        }
        if (step == "hold") {
            std::ofstream(argv[i + 1]).put('1');
            auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(20);
            while (!std::filesystem::exists(argv[i + 2]) &&
                   std::chrono::steady_clock::now() < giveUp) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::string command = argc > 1 ? argv[1] : "";
    if (command == "open") {
        return Open(argc, argv);
    }
    if (command == "exit" && argc > 2) {
        return static_cast<int>(Number(argv[2]));
    }
    if (command == "sleep" && argc > 2) {
        std::this_thread::sleep_for(std::chrono::milliseconds(Number(argv[2])));
        return 0;
    }
    if (command == "args" && argc > 2) {
        std::ofstream out(argv[2], std::ios::binary);
        for (int i = 3; i < argc; ++i) {
            out << argv[i] << '\n';
        }
        return 0;
    }
    if (command == "env" && argc > 4) {
        std::ofstream(argv[2]).put('1');
        const char* value = std::getenv(argv[3]);
        return value != nullptr && std::strcmp(value, argv[4]) == 0 ? 0 : 1;
    }
    if (command == "regset" && argc > 4) {
        HKEY key = nullptr;
        LSTATUS status = RegCreateKeyExA(HKEY_CURRENT_USER, argv[2], 0, nullptr, 0, KEY_ALL_ACCESS,
                                         nullptr, &key, nullptr);
        for (DWORD i = 0; status == ERROR_SUCCESS && i < Number(argv[4]); ++i) {
            std::string name = argv[3] + std::to_string(i);
            status = RegSetValueExA(key, name.c_str(), 0, REG_DWORD,
                                    reinterpret_cast<const BYTE*>(&i), sizeof i);
        }
        RegCloseKey(key);
        return static_cast<int>(status);
    }
    return 255;
}
