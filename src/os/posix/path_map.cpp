#include "os/api/path_map.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "os/posix/environment.h"
#include "os/posix/system_drive_map.h"

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

// The per-user directory behind C:, in the XDG data folder.
std::string DefaultDriveC() {
    std::string base = posix::EnvironmentValue("XDG_DATA_HOME");
    if (base.empty() || base[0] != '/') {
        std::string home = posix::EnvironmentValue("HOME");
        if (home.empty() || home[0] != '/') {
            const passwd* entry = getpwuid(getuid());
            home = entry != nullptr ? entry->pw_dir : "/tmp";
        }
        base = home + "/.local/share";
    }
    return base + "/nvk/drive_c";
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
    DriveMap map = MakeDriveMap(EnvironmentValue("NVK_DRIVES"), DefaultDriveC());
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
    std::string_view path(windowsPath);
    posix::DriveMap map = posix::SystemDriveMap(posix::IsUncPath(path));
    char letter = 0;
    std::string native = posix::MapToNative(map, path, posix::NativeCurrentDirectory(), &letter);
    if (letter == 'C' && map.drives['C' - 'A'] == driveC) {
        std::error_code ignored;
        std::filesystem::create_directories(driveC, ignored);
    }
    return native;
}

std::string ToWindowsPath(LPCSTR nativePath) {
    if (nativePath == nullptr) {
        return {};
    }
    return posix::MapToWindows(posix::SystemDriveMap(false), nativePath,
                               posix::NativeCurrentDirectory());
}

}  // namespace nvk::os
