#include "os/api/network.h"

#include <cctype>
#include <string>

#include "os/posix/drive_map.h"
#include "os/posix/fs_support.h"
#include "os/posix/native_names.h"
#include "os/posix/system_drive_map.h"

namespace nvk::os {

DWORD WNetGetConnectionA(LPCSTR localName, LPSTR remoteName, LPDWORD length) {
    if (localName == nullptr || length == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    std::string local(localName);
    if (local.size() != 2 || local[1] != ':' ||
        std::isalpha(static_cast<unsigned char>(local[0])) == 0) {
        return ERROR_BAD_DEVICE;
    }
    posix::DriveMap map = posix::SystemDriveMap(true);
    int letter = std::toupper(static_cast<unsigned char>(local[0])) - 'A';
    std::string directory = map.drives[letter];
    if (directory.empty()) {
        return ERROR_BAD_DEVICE;
    }
    // The share that holds the drive's folder, found as a path's drive form is
    // found, with the drives themselves out of the way.
    map.drives = {};
    std::string remote = posix::AnsiName(posix::MapToWindows(map, directory, "/"));
    if (remote.empty()) {
        return ERROR_NOT_CONNECTED;
    }
    DWORD result = posix::CopyOut(remote, remoteName, *length);
    if (result != remote.size()) {
        *length = result;
        return ERROR_MORE_DATA;
    }
    return ERROR_SUCCESS;
}

}  // namespace nvk::os
