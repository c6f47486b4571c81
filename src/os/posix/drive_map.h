// The drive and share map of the POSIX backend, and the translation of paths
// across it. Pure string logic: the caller supplies the map and the current
// directory, so every rule can be checked without touching the system.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace nvk::os::posix {

struct DriveMap {
    // The native directory of each drive letter A..Z; empty when unmapped.
    std::array<std::string, 26> drives;
    // A network share: \\server\a\b is the server and the components a, b.
    struct Share {
        std::string server;
        std::vector<std::string> components;
        std::string directory;
    };
    std::vector<Share> shares;
};

// The defaults (Z: is the root, C: the given per-user directory) overridden by
// the entries of `entries`: "C=/srv/c;D=/mnt/d;\\server\share=/mnt/s". An entry
// with an empty directory removes the drive.
DriveMap MakeDriveMap(std::string_view entries, std::string_view driveC);

// Adds the CIFS ("//server/share") and NFS ("server:/export") mounts of a
// mount table in the format of /proc/self/mounts. Explicit entries win.
void AddNetworkMounts(DriveMap& map, std::string_view mountTable);

// A component of a Windows path as Windows takes it: without the dots and
// blanks that end it ("test. " is "test"); "." and ".." keep their meaning,
// and a component of dots alone is empty.
std::string_view TrimComponent(std::string_view component);

// Whether a path names a network share (two leading separators).
bool IsUncPath(std::string_view windowsPath);

// The native path of a Windows path; relative ones are taken from
// `currentDirectory` (native, absolute). Empty if the path's drive or share is
// not mapped. `driveLetter` receives the letter used, or 0 for a share.
std::string MapToNative(const DriveMap& map, std::string_view windowsPath,
                        std::string_view currentDirectory, char* driveLetter = nullptr);

// The drive form of a native path: the drive with the longest directory that
// holds it, else a share that holds it; empty if none does.
std::string MapToWindows(const DriveMap& map, std::string_view nativePath,
                         std::string_view currentDirectory);

}  // namespace nvk::os::posix
