// nvk profile: INI files through the platform's profile functions, one call
// one open, as the applications read their side files.
#include <iostream>
#include <string>
#include <vector>

#include "cli.h"
#include "os/api/directory.h"
#include "os/api/error.h"
#include "os/api/profile.h"

namespace nvk::tool {
namespace {

namespace os = nvk::os;

int Get(const Args& args);
int Set(const Args& args);

const Command kCommands[] = {
    {"get", "FILE [SECTION [KEY]]",
     "prints the sections of FILE, the keys of SECTION, or the value of KEY, one a line", Get,
     "A value comes without the quotes around it. Exit 1 when the file, the section or the key "
     "is missing."},
    {"set", "FILE SECTION KEY [VALUE]",
     "writes a value, making the file and the section when needed; without VALUE deletes the "
     "key",
     Set},
};

// The functions look for a name without a folder in the Windows folder;
// people mean the current one.
std::string FullPath(const std::string& file) {
    char buffer[os::MAX_PATH];
    const os::DWORD length = os::GetFullPathNameA(file.c_str(), sizeof buffer, buffer, nullptr);
    return length > 0 && length < sizeof buffer ? std::string(buffer, length) : file;
}

// Reads with `read` into a buffer that grows until the answer fits: the
// functions tell a cut answer only by its length.
template <typename Read>
std::string ReadAll(Read read, os::DWORD cut) {
    for (os::DWORD size = 256;; size *= 4) {
        std::vector<char> buffer(size);
        const os::DWORD length = read(buffer.data(), size);
        if (length + cut < size || size > (1u << 28)) {
            return std::string(buffer.data(), length);
        }
    }
}

int Get(const Args& args) {
    if (!Expect(args, 1, 3, kCommands[0])) {
        return kFailure;
    }
    const std::string path = FullPath(args[0]);
    const char* file = path.c_str();
    const char* section = args.size() > 1 ? args[1].c_str() : nullptr;
    if (args.size() == 3) {
        // Two defaults that no file can both give tell a missing key.
        auto value = [&](const char* fallback) {
            return ReadAll(
                [&](char* buffer, os::DWORD size) {
                    return os::GetPrivateProfileStringA(section, args[2].c_str(), fallback, buffer,
                                                        size, file);
                },
                1);
        };
        const std::string text = value("\x01");
        if (text == "\x01" && value("\x02") == "\x02") {
            std::cerr << "nvk: no key " << args[2] << " in section " << args[1] << " of " << args[0]
                      << '\n';
            return kNegative;
        }
        std::cout << text << '\n';
        return kOk;
    }
    const std::string list = ReadAll(
        [&](char* buffer, os::DWORD size) {
            return os::GetPrivateProfileStringA(section, nullptr, "", buffer, size, file);
        },
        2);
    if (os::GetLastError() == os::ERROR_FILE_NOT_FOUND) {
        std::cerr << "nvk: no file " << args[0] << '\n';
        return kNegative;
    }
    if (list.empty() && section != nullptr) {
        std::cerr << "nvk: no keys in section " << args[1] << " of " << args[0] << '\n';
        return kNegative;
    }
    for (std::size_t at = 0; at < list.size(); at = list.find('\0', at) + 1) {
        std::cout << list.c_str() + at << '\n';
    }
    return kOk;
}

int Set(const Args& args) {
    if (!Expect(args, 3, 4, kCommands[1])) {
        return kFailure;
    }
    const char* value = args.size() == 4 ? args[3].c_str() : nullptr;
    if (!os::WritePrivateProfileStringA(args[1].c_str(), args[2].c_str(), value,
                                        FullPath(args[0]).c_str())) {
        return Fail("could not write " + args[0] + ": error " + std::to_string(os::GetLastError()));
    }
    return kOk;
}

const RegisterArea kArea({"profile", "INI files through the platform's profile functions",
                          kCommands, nullptr, 41});

}  // namespace
}  // namespace nvk::tool
