// Reads an untrusted executable's version as the version functions do: PE
// or ELF headers, resource directories and VS_VERSIONINFO trees that are cut
// short or lie about their lengths must give an answer ("Alpha", 0 or the
// text found), never a fault.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "nvk/services/app_version.h"
#include "os/api/file.h"
#include "os/api/sync.h"
#include "os/api/temp_file.h"
#include "os/api/version.h"

namespace {

using namespace nvk::os;

std::string FileName() {
    char folder[MAX_PATH] = {};
    GetTempPathA(sizeof folder, folder);
    return std::string(folder) + "nvk_fuzz_version_" + std::to_string(GetCurrentProcessId()) +
           ".exe";
}

void Query(const std::string& file, DWORD size) {
    std::vector<BYTE> block(size);
    if (size == 0 || !GetFileVersionInfoA(file.c_str(), 0, size, block.data())) {
        return;
    }
    for (const char* path :
         {"\\", "\\VarFileInfo\\Translation", "\\StringFileInfo\\040904e4\\FileVersion",
          "\\StringFileInfo\\040904E4\\ProductVersion", "\\StringFileInfo", "\\\\x\\"}) {
        LPVOID value = nullptr;
        UINT length = 0;
        if (VerQueryValueA(block.data(), path, &value, &length) &&
            (value < static_cast<void*>(block.data()) ||
             value > static_cast<void*>(block.data() + block.size()))) {
            std::abort();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 1u << 20) {
        return 0;
    }
    static const std::string file = FileName();
    HANDLE handle = CreateFileA(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    if (handle == INVALID_HANDLE_VALUE ||
        !WriteFile(handle, data, static_cast<DWORD>(size), &written, nullptr)) {
        std::abort();
    }
    CloseHandle(handle);

    const DWORD needed = GetFileVersionInfoSizeA(file.c_str(), nullptr);
    Query(file, needed);
    Query(file, needed / 2);
    Query(file, 64);
    for (unsigned long flags : {0ul, 1ul, 7ul, 8ul}) {
        if (GetAppVersion(file.c_str(), flags).IsEmpty()) {
            std::abort();
        }
    }
    if (needed == 0 && GetAppVersionValue(file.c_str(), 0) != 0) {
        std::abort();
    }
    GetNVKAppPatchValue(file.c_str());
    DeleteFileA(file.c_str());
    return 0;
}
