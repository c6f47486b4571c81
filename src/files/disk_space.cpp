// Free disk space, and moves that replace on every system.
#include "nvk/files/file_operations.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/file_copy.h"
#include "os/api/system_info.h"
#include "os/api/volume.h"

namespace os = nvk::os;

namespace {

os::OSVERSIONINFOA Version() {
    os::OSVERSIONINFOA version{};
    version.dwOSVersionInfoSize = sizeof version;
    os::GetVersionExA(&version);
    return version;
}

}  // namespace

int SafeGetDiskFreeSpaceEx(const char* path, os::ULARGE_INTEGER* freeToCaller,
                           os::ULARGE_INTEGER* total, os::ULARGE_INTEGER* totalFree) {
    os::ULARGE_INTEGER locals[3];
    freeToCaller = freeToCaller != nullptr ? freeToCaller : &locals[0];
    total = total != nullptr ? total : &locals[1];
    totalFree = totalFree != nullptr ? totalFree : &locals[2];
    freeToCaller->QuadPart = total->QuadPart = totalFree->QuadPart = 0;
    // The first systems of the older family lack the call. Every system the
    // OS layer runs on has it, so it is called directly rather than looked up
    // in the kernel's library.
    const os::OSVERSIONINFOA version = Version();
    if (version.dwPlatformId == 1 && (version.dwBuildNumber & 0xFFFF) < 1000) {
        return 0;
    }
    return os::GetDiskFreeSpaceExA(path, freeToCaller, total, totalFree);
}

int GetDiskSpace(const char* path, os::ULARGE_INTEGER* freeToCaller, os::ULARGE_INTEGER* total,
                 os::ULARGE_INTEGER* totalFree) {
    if (SafeGetDiskFreeSpaceEx(path, freeToCaller, total, totalFree)) {
        return 1;
    }
    os::DWORD sectors = 0, bytes = 0, freeClusters = 0, clusters = 0;
    if (!os::GetDiskFreeSpaceA(path, &sectors, &bytes, &freeClusters, &clusters)) {
        return 0;
    }
    const unsigned long long cluster = static_cast<unsigned long long>(sectors) * bytes;
    if (freeToCaller != nullptr) {
        freeToCaller->QuadPart = cluster * freeClusters;
    }
    if (totalFree != nullptr) {
        totalFree->QuadPart = cluster * freeClusters;
    }
    if (total != nullptr) {
        total->QuadPart = cluster * clusters;
    }
    return 1;
}

int GetDiskSpace(const char* path, unsigned long long* freeToCaller, unsigned long long* total,
                 unsigned long long* totalFree) {
    os::ULARGE_INTEGER values[3];
    if (!GetDiskSpace(path, freeToCaller != nullptr ? &values[0] : nullptr,
                      total != nullptr ? &values[1] : nullptr,
                      totalFree != nullptr ? &values[2] : nullptr)) {
        return 0;
    }
    if (freeToCaller != nullptr) {
        *freeToCaller = values[0].QuadPart;
    }
    if (total != nullptr) {
        *total = values[1].QuadPart;
    }
    if (totalFree != nullptr) {
        *totalFree = values[2].QuadPart;
    }
    return 1;
}

int SafeMoveFileEx(const char* from, const char* to, unsigned long flags) {
    if ((Version().dwPlatformId & 2) != 0) {
        return os::MoveFileExA(from, to, static_cast<os::DWORD>(flags));
    }
    if ((flags & os::MOVEFILE_REPLACE_EXISTING) != 0 &&
        os::GetFileAttributesA(to) != os::INVALID_FILE_ATTRIBUTES && !os::DeleteFileA(to)) {
        return 0;
    }
    return os::MoveFileA(from, to);
}
