#include "os/posix/drive_map.h"

#include <algorithm>
#include <cctype>

namespace nvk::os::posix {

namespace {

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

// Splits on Windows separators, or on '/' alone for native paths, whose names
// may hold a backslash.
std::vector<std::string> Split(std::string_view path, bool native) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= path.size(); ++i) {
        bool end = i == path.size() || (native ? path[i] == '/' : IsSeparator(path[i]));
        if (end) {
            if (i > start) {
                parts.emplace_back(path.substr(start, i - start));
            }
            start = i + 1;
        }
    }
    return parts;
}

// Resolves "." and ".."; the first `fixed` parts form the root, which ".."
// never climbs above, as at the root of a drive. The components of a Windows
// path lose their trailing dots and blanks first.
std::vector<std::string> Normalise(const std::vector<std::string>& parts, std::size_t fixed,
                                   bool windows) {
    std::vector<std::string> out;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::string part =
            windows && i >= fixed ? std::string(TrimComponent(parts[i])) : parts[i];
        if (i >= fixed && (part == "." || part.empty())) {
            continue;
        }
        if (i >= fixed && part == "..") {
            if (out.size() > fixed) {
                out.pop_back();
            }
            continue;
        }
        out.push_back(part);
    }
    return out;
}

std::string Join(std::string base, const std::vector<std::string>& parts, std::size_t from,
                 char separator) {
    for (std::size_t i = from; i < parts.size(); ++i) {
        if (base.empty() || base.back() != separator) {
            base += separator;
        }
        base += parts[i];
    }
    return base;
}

std::string NativeDirectory(std::string_view directory) {
    if (directory.empty() || directory.front() != '/') {
        return {};
    }
    return Join("/", Normalise(Split(directory, true), 0, false), 0, '/');
}

int DriveIndex(char letter) {
    return std::toupper(static_cast<unsigned char>(letter)) - 'A';
}

bool IsDriveLetter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0 && c < 0x7F;
}

// Mount tables escape blanks and backslashes as \ooo.
std::string Unescape(std::string_view field) {
    std::string out;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size() &&
            std::all_of(field.begin() + i + 1, field.begin() + i + 4,
                        [](char c) { return c >= '0' && c <= '7'; })) {
            out += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                                     (field[i + 3] - '0'));
            i += 3;
        } else {
            out += field[i];
        }
    }
    return out;
}

}  // namespace

std::string_view TrimComponent(std::string_view component) {
    component = component.substr(0, component.find_last_not_of(' ') + 1);
    if (component == "." || component == "..") {
        return component;
    }
    return component.substr(0, component.find_last_not_of(". ") + 1);
}

bool IsUncPath(std::string_view path) {
    return path.size() >= 2 && IsSeparator(path[0]) && IsSeparator(path[1]);
}

DriveMap MakeDriveMap(std::string_view entries, std::string_view driveC) {
    DriveMap map;
    map.drives[DriveIndex('C')] = NativeDirectory(driveC);
    map.drives[DriveIndex('Z')] = "/";
    while (!entries.empty()) {
        std::size_t end = entries.find(';');
        std::string_view entry = entries.substr(0, end);
        entries = end == std::string_view::npos ? std::string_view{} : entries.substr(end + 1);
        std::size_t equals = entry.find('=');
        if (equals == std::string_view::npos) {
            continue;
        }
        std::string_view key = entry.substr(0, equals);
        std::string directory = NativeDirectory(entry.substr(equals + 1));
        if (entry.size() > equals + 1 && directory.empty()) {
            continue;  // not an absolute directory
        }
        if ((key.size() == 1 || (key.size() == 2 && key[1] == ':')) && IsDriveLetter(key[0])) {
            map.drives[DriveIndex(key[0])] = directory;
        } else if (IsUncPath(key)) {
            std::vector<std::string> parts = Split(key, false);
            if (parts.size() < 2) {
                continue;
            }
            std::erase_if(map.shares, [&](const DriveMap::Share& share) {
                return EqualNoCase(share.server, parts[0]) &&
                       std::equal(share.components.begin(), share.components.end(),
                                  parts.begin() + 1, parts.end(), EqualNoCase);
            });
            if (!directory.empty()) {
                map.shares.push_back({parts[0], {parts.begin() + 1, parts.end()}, directory});
            }
        }
    }
    return map;
}

void AddNetworkMounts(DriveMap& map, std::string_view table) {
    while (!table.empty()) {
        std::size_t end = table.find('\n');
        std::string_view line = table.substr(0, end);
        table = end == std::string_view::npos ? std::string_view{} : table.substr(end + 1);
        std::vector<std::string> fields;
        std::size_t start = 0;
        for (std::size_t i = 0; i <= line.size() && fields.size() < 3; ++i) {
            if (i == line.size() || line[i] == ' ' || line[i] == '\t') {
                if (i > start) {
                    fields.push_back(Unescape(line.substr(start, i - start)));
                }
                start = i + 1;
            }
        }
        if (fields.size() < 3) {
            continue;
        }
        const std::string& device = fields[0];
        const std::string& type = fields[2];
        std::string server;
        std::vector<std::string> components;
        if (type == "cifs" || type == "smb3" || type == "smbfs") {
            if (!IsUncPath(device)) {
                continue;
            }
            std::vector<std::string> parts = Split(device, false);
            if (parts.size() < 2) {
                continue;
            }
            server = parts[0];
            components.assign(parts.begin() + 1, parts.end());
        } else if (type == "nfs" || type == "nfs4") {
            std::size_t colon = device.find(":/");
            if (colon == std::string::npos || colon == 0) {
                continue;
            }
            server = device.substr(0, colon);
            components = Split(std::string_view(device).substr(colon + 1), true);
            if (components.empty()) {
                continue;
            }
        } else {
            continue;
        }
        map.shares.push_back({server, components, NativeDirectory(fields[1])});
    }
}

std::string MapToNative(const DriveMap& map, std::string_view path,
                        std::string_view currentDirectory, char* driveLetter) {
    if (driveLetter != nullptr) {
        *driveLetter = 0;
    }
    if (path.starts_with("\\\\?\\")) {
        path.remove_prefix(4);
        if (path.size() >= 4 && EqualNoCase(path.substr(0, 4), "UNC\\")) {
            return MapToNative(map, "\\\\" + std::string(path.substr(4)), currentDirectory,
                               driveLetter);
        }
    }
    if (path.empty()) {
        return {};
    }
    if (path[0] == '/' && !IsUncPath(path)) {
        if (driveLetter != nullptr) {
            *driveLetter = 'Z';
        }
        return NativeDirectory(path);
    }
    if (IsUncPath(path)) {
        std::vector<std::string> parts = Normalise(Split(path, false), 2, true);
        if (parts.size() < 2) {
            return {};
        }
        const DriveMap::Share* best = nullptr;
        for (const DriveMap::Share& share : map.shares) {
            std::size_t n = share.components.size();
            if (EqualNoCase(share.server, parts[0]) && n + 1 <= parts.size() &&
                std::equal(share.components.begin(), share.components.end(), parts.begin() + 1,
                           EqualNoCase) &&
                (best == nullptr || n > best->components.size())) {
                best = &share;
            }
        }
        return best == nullptr ? std::string{}
                               : Join(best->directory, parts, best->components.size() + 1, '/');
    }
    bool hasDrive = path.size() >= 2 && path[1] == ':' && IsDriveLetter(path[0]);
    if (hasDrive && path.size() > 2 && IsSeparator(path[2])) {
        const std::string& directory = map.drives[DriveIndex(path[0])];
        if (directory.empty()) {
            return {};
        }
        if (driveLetter != nullptr) {
            *driveLetter = static_cast<char>(std::toupper(static_cast<unsigned char>(path[0])));
        }
        return Join(directory, Normalise(Split(path.substr(2), false), 0, true), 0, '/');
    }
    // Relative to the current directory, to the root of its drive, or to a
    // drive that is not the current one (then from that drive's root).
    std::string current = MapToWindows(map, currentDirectory, "/");
    if (current.empty()) {
        return {};
    }
    std::string full;
    if (hasDrive) {
        std::string_view rest = path.substr(2);
        full = EqualNoCase(current.substr(0, 2), path.substr(0, 2))
                   ? current + "\\" + std::string(rest)
                   : std::string(path.substr(0, 2)) + "\\" + std::string(rest);
    } else if (IsSeparator(path[0])) {
        std::string root = current.substr(0, 2);
        if (IsUncPath(current)) {
            std::vector<std::string> parts = Split(current, false);
            root = "\\\\" + parts[0] + "\\" + parts[1];
        }
        full = root + std::string(path);
    } else {
        full = current + "\\" + std::string(path);
    }
    return MapToNative(map, full, currentDirectory, driveLetter);
}

std::string MapToWindows(const DriveMap& map, std::string_view nativePath,
                         std::string_view currentDirectory) {
    if (nativePath.empty()) {
        return {};
    }
    std::string absolute(nativePath);
    if (absolute.front() != '/') {
        absolute = std::string(currentDirectory) + "/" + absolute;
    }
    std::vector<std::string> parts = Normalise(Split(absolute, true), 0, false);
    auto holds = [&](const std::string& directory, std::size_t& depth) {
        std::vector<std::string> base = Split(directory, true);
        depth = base.size();
        return base.size() <= parts.size() && std::equal(base.begin(), base.end(), parts.begin());
    };
    int bestDrive = -1;
    std::size_t bestDepth = 0;
    for (int letter = 0; letter < 26; ++letter) {
        std::size_t depth = 0;
        if (!map.drives[letter].empty() && holds(map.drives[letter], depth) &&
            (bestDrive < 0 || depth > bestDepth)) {
            bestDrive = letter;
            bestDepth = depth;
        }
    }
    if (bestDrive >= 0) {
        std::string root = {static_cast<char>('A' + bestDrive), ':', '\\'};
        return Join(root, parts, bestDepth, '\\');
    }
    const DriveMap::Share* bestShare = nullptr;
    for (const DriveMap::Share& share : map.shares) {
        std::size_t depth = 0;
        if (holds(share.directory, depth) && (bestShare == nullptr || depth > bestDepth)) {
            bestShare = &share;
            bestDepth = depth;
        }
    }
    if (bestShare == nullptr) {
        return {};
    }
    std::string root = "\\\\" + bestShare->server;
    for (const std::string& component : bestShare->components) {
        root += "\\" + component;
    }
    return Join(root, parts, bestDepth, '\\');
}

}  // namespace nvk::os::posix
