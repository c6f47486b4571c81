// The second process of the OS layer's tests. Its exit status is 0 for
// success, or the error code of the step that failed.
//
//   os_helper open PATH ACCESS SHARE DISPOSITION [lock OFFSET LENGTH]
//             [read OFFSET LENGTH] [write OFFSET LENGTH] [map SIZE 0]
//             [hold READY RELEASE]
//       opens a file (numbers in any C base), then optionally locks a region,
//       reads a region, writes LENGTH bytes 'x' at OFFSET, maps a view of a
//       section of SIZE bytes (0: the file's), and holds everything until
//       RELEASE exists, having made READY once it holds.
//   os_helper exit CODE                  ends with CODE
//   os_helper sleep MILLISECONDS         sleeps, then ends with 0
//   os_helper args OUTPUT ARG...         writes its arguments to OUTPUT, one a line
//   os_helper env OUTPUT NAME VALUE      0 if NAME is VALUE, 1 otherwise;
//                                        makes OUTPUT (relative to its folder)
//   os_helper regset KEY PREFIX COUNT    sets the values PREFIX0.. of
//                                        HKEY_CURRENT_USER\KEY, one call each
//   os_helper mutex NAME READY RELEASE   creates and takes mutex NAME, makes
//                                        READY, and releases it once RELEASE
//                                        exists; with RELEASE "-" ends owning
//                                        it. Ends with the wait's result.
//   os_helper mutexcreate NAME           ends with CreateMutexA's last error
//   os_helper mapwrite NAME TEXT         opens mapping NAME and writes TEXT
//                                        at its start
//   os_helper mapread NAME TEXT          0 if mapping NAME starts with TEXT
//   os_helper asuser UID NAME            as user UID (when run as root), ends
//                                        with OpenMutexA's error for NAME;
//                                        254 when it can't change user
#include <unistd.h>

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
#include "os/api/sync.h"

using namespace nvk::os;

namespace {

DWORD Number(const char* text) {
    return static_cast<DWORD>(std::strtoul(text, nullptr, 0));
}

void WaitForFile(const char* path) {
    auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!std::filesystem::exists(path) && std::chrono::steady_clock::now() < giveUp) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

int HoldMutex(const char* name, const char* ready, const char* release) {
    HANDLE mutex = CreateMutexA(nullptr, FALSE, name);
    const DWORD result = WaitForSingleObject(mutex, 20000);
    std::ofstream(ready).put('1');
    if (std::strcmp(release, "-") == 0) {
        std::_Exit(static_cast<int>(result));  // owning it, and no clean-up
    }
    WaitForFile(release);
    ReleaseMutex(mutex);
    CloseHandle(mutex);
    return static_cast<int>(result);
}

int Mapping(const char* name, const char* text, bool write) {
    HANDLE mapping = OpenFileMappingA(write ? FILE_MAP_WRITE : FILE_MAP_READ, FALSE, name);
    auto* view =
        static_cast<char*>(MapViewOfFile(mapping, write ? FILE_MAP_WRITE : FILE_MAP_READ, 0, 0, 0));
    if (view == nullptr) {
        return static_cast<int>(GetLastError());
    }
    const std::size_t length = std::strlen(text);
    const bool same = std::memcmp(view, text, length) == 0;
    if (write) {
        std::memcpy(view, text, length);
    }
    UnmapViewOfFile(view);
    CloseHandle(mapping);
    return write || same ? 0 : 1;
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
        if (step == "write") {
            const std::string bytes(second, 'x');
            DWORD put = 0;
            SetFilePointer(file, static_cast<LONG>(first), nullptr, FILE_BEGIN);
            if (!WriteFile(file, bytes.data(), second, &put, nullptr)) {
                return static_cast<int>(GetLastError());
            }
        }
        if (step == "map") {
            HANDLE section = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, first, nullptr);
            if (section == nullptr || MapViewOfFile(section, FILE_MAP_READ, 0, 0, 0) == nullptr) {
                return static_cast<int>(GetLastError());
            }
        }
        if (step == "hold") {
            std::ofstream(argv[i + 1]).put('1');
            WaitForFile(argv[i + 2]);
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
    if (command == "mutex" && argc > 4) {
        return HoldMutex(argv[2], argv[3], argv[4]);
    }
    if (command == "mutexcreate" && argc > 2) {
        CreateMutexA(nullptr, FALSE, argv[2]);
        return static_cast<int>(GetLastError());
    }
    if ((command == "mapwrite" || command == "mapread") && argc > 3) {
        return Mapping(argv[2], argv[3], command == "mapwrite");
    }
#ifndef _WIN32
    // Users are switched by id only on POSIX.
    if (command == "asuser" && argc > 3) {
        if (getuid() != 0 || setgid(Number(argv[2])) != 0 || setuid(Number(argv[2])) != 0) {
            return 254;
        }
        HANDLE mutex = OpenMutexA(SYNCHRONIZE, FALSE, argv[3]);
        return mutex != nullptr ? 0 : static_cast<int>(GetLastError());
    }
#endif
    return 255;
}
