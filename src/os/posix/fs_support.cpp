#include "os/posix/fs_support.h"

#include <cerrno>
#include <cstring>

#include "os/posix/drive_map.h"
#include "os/posix/handle.h"

namespace nvk::os::posix {

void SetPathError(int error, const std::string& path) {
    if (error == ENOENT) {
        std::string folder = path.substr(0, path.find_last_of('/') + 1);
        struct stat info;
        bool folderExists =
            folder.empty() || (stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode));
        SetErrorCode(folderExists ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND);
    } else if (error == ENOTDIR) {
        SetErrorCode(ERROR_PATH_NOT_FOUND);
    } else {
        SetErrorFromErrno(error);
    }
}

void SetUnmappedError(LPCSTR windowsPath) {
    bool unc = windowsPath != nullptr && IsUncPath(windowsPath);
    SetErrorCode(unc ? ERROR_BAD_NETPATH : ERROR_PATH_NOT_FOUND);
}

FILETIME ToFileTime(const statx_timestamp& time) {
    constexpr LONGLONG kEpochDifference = 11644473600LL;
    auto ticks =
        static_cast<ULONGLONG>((time.tv_sec + kEpochDifference) * 10000000LL + time.tv_nsec / 100);
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

DWORD AttributesOf(mode_t mode, std::string_view name, bool link) {
    DWORD attributes = 0;
    if (S_ISDIR(mode)) {
        attributes |= FILE_ATTRIBUTE_DIRECTORY;
    }
    if (S_ISREG(mode)) {
        attributes |= FILE_ATTRIBUTE_ARCHIVE;
    }
    if (link) {
        attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    }
    if ((mode & S_IWUSR) == 0) {
        attributes |= FILE_ATTRIBUTE_READONLY;
    }
    if (name.starts_with('.') && name != "." && name != "..") {
        attributes |= FILE_ATTRIBUTE_HIDDEN;
    }
    return attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL;
}

DWORD CopyOut(std::string_view text, LPSTR buffer, DWORD size) {
    auto length = static_cast<DWORD>(text.size());
    if (buffer == nullptr || size <= length) {
        return length + 1;
    }
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    return length;
}

}  // namespace nvk::os::posix
