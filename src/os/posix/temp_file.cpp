#include "os/api/temp_file.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/path_map.h"
#include "os/api/sync.h"
#include "os/posix/environment.h"
#include "os/posix/fs_support.h"
#include "os/posix/full_path.h"
#include "os/posix/handle.h"
#include "os/posix/user_folders.h"

namespace nvk::os {

namespace {

// TMP or TEMP when the user set one, as Windows reads them (and never from a
// program that runs with more privileges than its caller), else a folder
// private to the user, as Windows gives each user a temporary folder of its
// own: $XDG_RUNTIME_DIR, or one under the user's cache folder. The shared /tmp
// is never used: another user could plant files or links there in advance.
// The private folder is checked before each use; empty, with the error set,
// when there is none to trust.
std::string TempFolder() {
    for (const char* name : {"TMP", "TEMP"}) {
        std::string value = posix::EnvironmentValue(name);
        // A POSIX path set in the shell is the system's own, in UTF-8.
        if (!value.empty()) {
            return value[0] == '/' ? ToWindowsPath(value.c_str()) : posix::SystemFullPath(value);
        }
    }
    std::string native = posix::EnvironmentValue("XDG_RUNTIME_DIR");
    if (native.empty() || native[0] != '/') {
        const std::string home = posix::HomeFolder();
        const std::string cache = posix::EnvironmentValue("XDG_CACHE_HOME");
        native = home.empty()
                     ? std::string()
                     : (!cache.empty() && cache[0] == '/' ? cache : home + "/.cache") + "/nvk/temp";
    }
    if (!posix::PrivateFolder(native, posix::Others::NoAccess)) {
        return {};
    }
    return ToWindowsPath(native.c_str());
}

}  // namespace

DWORD GetTempPathA(DWORD size, LPSTR buffer) {
    std::string folder = TempFolder();
    if (folder.empty()) {
        return 0;
    }
    if (folder.back() != '\\') {
        folder += '\\';
    }
    return posix::CopyOut(folder, buffer, size);
}

UINT GetTempFileNameA(LPCSTR path, LPCSTR prefix, UINT unique, LPSTR tempFileName) {
    if (path == nullptr || tempFileName == nullptr) {
        posix::SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    DWORD attributes = GetFileAttributesA(path);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        posix::SetErrorCode(ERROR_DIRECTORY);
        return 0;
    }
    std::string base(path);
    if (!base.empty() && base.back() != '\\' && base.back() != '/') {
        base += '\\';
    }
    base.append(prefix != nullptr ? prefix : "", 0, 3);
    auto nameOf = [&](UINT number) {
        char digits[16];
        std::snprintf(digits, sizeof digits, "%X.tmp", number);
        return base + digits;
    };
    if (nameOf(0xFFFF).size() >= MAX_PATH) {
        posix::SetErrorCode(ERROR_FILENAME_EXCED_RANGE);
        return 0;
    }
    auto put = [&](UINT number) {
        std::string name = nameOf(number);
        posix::CopyOut(name, tempFileName, MAX_PATH);
        return number;
    };
    if (unique != 0) {
        return put(unique & 0xFFFF);
    }
    // Numbers run on from a start that differs between processes and calls;
    // the create refuses a name another process has taken meanwhile.
    UINT start = (GetTickCount() ^ (GetCurrentProcessId() << 4)) & 0xFFFF;
    for (UINT i = 0; i < 0xFFFF; ++i) {
        UINT number = (start + i) % 0xFFFF + 1;
        std::string name = nameOf(number);
        HANDLE file = CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_TEMPORARY, nullptr);
        if (file != INVALID_HANDLE_VALUE) {
            CloseHandle(file);
            return put(number);
        }
        DWORD error = GetLastError();
        if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) {
            return 0;
        }
    }
    posix::SetErrorCode(ERROR_FILE_EXISTS);
    return 0;
}

}  // namespace nvk::os
