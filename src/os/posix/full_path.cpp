#include "os/posix/full_path.h"

#include <cctype>
#include <vector>

#include "os/api/path_map.h"
#include "os/posix/drive_map.h"
#include "os/posix/native_names.h"
#include "os/posix/system_drive_map.h"

namespace nvk::os::posix {

namespace {

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

bool HasDrive(std::string_view path) {
    return path.size() >= 2 && path[1] == ':' && std::isalpha(static_cast<unsigned char>(path[0]));
}

// The next component of `rest` and what follows its separator.
std::string_view TakeComponent(std::string_view& rest) {
    std::size_t end = 0;
    while (end < rest.size() && !IsSeparator(rest[end])) {
        ++end;
    }
    std::string_view component = rest.substr(0, end);
    rest.remove_prefix(end < rest.size() ? end + 1 : end);
    return component;
}

// "C:" or "\\srv\share" of a full path.
std::string RootOf(std::string_view full, std::string_view* rest = nullptr) {
    if (IsUncPath(full)) {
        std::string_view tail = full.substr(2);
        std::string root = "\\\\" + std::string(TakeComponent(tail));
        std::string_view share = TakeComponent(tail);
        if (!share.empty()) {
            root += "\\" + std::string(share);
        }
        if (rest != nullptr) {
            *rest = tail;
        }
        return root;
    }
    if (rest != nullptr) {
        *rest = full.substr(std::min<std::size_t>(full.size(), 3));
    }
    return std::string(full.substr(0, 2));
}

}  // namespace

std::string FullWindowsPath(std::string_view path, std::string_view current) {
    if (path.empty()) {
        return {};
    }
    std::string root;
    std::string_view rest;
    if (IsUncPath(path)) {
        root = RootOf(path, &rest);
    } else if (HasDrive(path) && path.size() > 2 && IsSeparator(path[2])) {
        root = path.substr(0, 2);
        rest = path.substr(3);
    } else if (current.empty()) {
        return {};
    } else if (HasDrive(path)) {
        bool sameDrive =
            HasDrive(current) && std::toupper(static_cast<unsigned char>(path[0])) ==
                                     std::toupper(static_cast<unsigned char>(current[0]));
        if (sameDrive) {
            return FullWindowsPath(std::string(current) + "\\" + std::string(path.substr(2)),
                                   current);
        }
        root = path.substr(0, 2);
        rest = path.substr(2);
    } else if (IsSeparator(path[0])) {
        root = RootOf(current);
        rest = path.substr(1);
    } else {
        return FullWindowsPath(std::string(current) + "\\" + std::string(path), current);
    }
    std::vector<std::string_view> parts;
    bool trailing = !rest.empty() && IsSeparator(rest.back());
    while (!rest.empty()) {
        std::string_view part = TrimComponent(TakeComponent(rest));
        if (part == "..") {
            if (!parts.empty()) {
                parts.pop_back();
            }
        } else if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
    }
    std::string full = root + "\\";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        full += parts[i];
        if (i + 1 < parts.size() || trailing) {
            full += '\\';
        }
    }
    return full;
}

std::string SystemFullPath(std::string_view path) {
    if (!path.empty() && path[0] == '/' && !IsUncPath(path)) {
        return ToWindowsPath(NativeName(path).c_str());
    }
    // A path from a drive's root or a share needs no current folder.
    if (std::string full = FullWindowsPath(path, {}); !full.empty()) {
        return full;
    }
    std::string current = ToWindowsPath(NativeCurrentDirectory().c_str());
    return FullWindowsPath(path, current);
}

bool IsFullRoot(std::string_view full) {
    std::string_view rest;
    RootOf(full, &rest);
    return rest.find_first_not_of("\\/") == std::string_view::npos;
}

}  // namespace nvk::os::posix
