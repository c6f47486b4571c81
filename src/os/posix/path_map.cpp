#include "os/api/path_map.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <optional>
#include <sstream>

#include "os/posix/environment.h"
#include "os/posix/native_names.h"
#include "os/posix/system_drive_map.h"
#include "os/posix/user_folders.h"

namespace nvk::os {

namespace posix {

std::string NativeCurrentDirectory() {
    std::string buffer(256, '\0');
    while (getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE) {
            return "/";
        }
        buffer.resize(buffer.size() * 2);
    }
    buffer.resize(buffer.find('\0'));
    return buffer;
}

}  // namespace posix

namespace {

// The per-user directory behind C:, in the XDG data folder of the user's own
// home; never in a shared folder. Empty (C: unmapped) without a home.
std::string DefaultDriveC() {
    const std::string data = posix::EnvironmentValue("XDG_DATA_HOME");
    if (!data.empty() && data[0] == '/') {
        return data + "/nvk/drive_c";
    }
    std::string home = posix::HomeFolder();
    return home.empty() ? std::string() : home + "/.local/share/nvk/drive_c";
}

std::string MountTable() {
    std::ifstream in("/proc/self/mounts");
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

}  // namespace

namespace posix {

DriveMap SystemDriveMap(bool withNetworkMounts) {
    // Every path of every call goes through the map: it is made again only
    // when the environment it comes from has changed.
    static std::mutex lock;
    static std::optional<std::string> madeFrom;
    static DriveMap made;
    const std::string drives = EnvironmentValue("NVK_DRIVES");
    const std::string driveC = DefaultDriveC();
    const std::string from = drives + '\0' + driveC;
    DriveMap map;
    {
        std::lock_guard guard(lock);
        if (madeFrom != from) {
            made = MakeDriveMap(drives, driveC);
            madeFrom = from;
        }
        map = made;
    }
    if (withNetworkMounts) {
        AddNetworkMounts(map, MountTable());
    }
    return map;
}

}  // namespace posix

std::string ToNativePath(LPCSTR windowsPath) {
    if (windowsPath == nullptr) {
        return {};
    }
    std::string driveC = DefaultDriveC();
    // Names on disk are UTF-8; the drive map's folders are already native.
    std::string_view path(windowsPath);
    std::string utf8;
    if (!posix::IsAscii(path)) {
        utf8 = posix::NativeName(path);
        path = utf8;
    }
    posix::DriveMap map = posix::SystemDriveMap(posix::IsUncPath(path));
    char letter = 0;
    // A path from a drive's root or a share needs no current folder.
    const bool full = path.empty() || path[0] == '/' || posix::IsUncPath(path) ||
                      (path.size() > 2 && path[1] == ':' && (path[2] == '\\' || path[2] == '/'));
    std::string native = posix::MapToNative(
        map, path, full ? std::string() : posix::NativeCurrentDirectory(), &letter);
    // The default C: is made on first use, and refused when it is not the
    // user's alone to change.
    if (letter == 'C' && !driveC.empty() && map.drives['C' - 'A'] == driveC &&
        !posix::PrivateFolder(driveC, posix::Others::MayRead)) {
        return {};
    }
    return native;
}

std::string ToWindowsPath(LPCSTR nativePath) {
    if (nativePath == nullptr) {
        return {};
    }
    std::string windows =
        posix::MapToWindows(posix::SystemDriveMap(false), nativePath,
                            nativePath[0] == '/' ? std::string() : posix::NativeCurrentDirectory());
    return posix::IsAscii(windows) ? windows : posix::AnsiName(windows);
}

}  // namespace nvk::os
