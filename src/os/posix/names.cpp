#include "os/posix/names.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "os/posix/native_names.h"

namespace nvk::os::posix {

char FoldCase(char c) {
    const auto u = static_cast<unsigned char>(c);
    if ((u >= 'A' && u <= 'Z') || (u >= 0xC0 && u <= 0xDE && u != 0xD7)) {
        return static_cast<char>(u + 0x20);
    }
    switch (u) {
        case 0x8A:  // S caron
        case 0x8C:  // OE
        case 0x8E:  // Z caron
            return static_cast<char>(u + 0x10);
        case 0x9F:  // Y diaeresis
            return static_cast<char>(0xFF);
        default:
            return c;
    }
}

bool SameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return FoldCase(x) == FoldCase(y);
           });
}

namespace {

// The entry of `folder` whose ANSI form matches `name` (ANSI) without regard
// to case, the first in byte order so that the answer does not depend on the
// order of the folder; empty when none does. A name with '?' matches nothing:
// it stands for characters the code page lacks, as no name of the A
// functions can.
std::string MatchInFolder(const std::string& folder, std::string_view name) {
    std::string found;
    if (name.find('?') != std::string_view::npos) {
        return found;
    }
    DIR* directory = opendir(folder.empty() ? "/" : folder.c_str());
    if (directory == nullptr) {
        return found;
    }
    while (const dirent* entry = readdir(directory)) {
        std::string_view candidate = entry->d_name;
        if ((IsAscii(candidate) ? SameName(candidate, name)
                                : SameName(AnsiName(candidate), name)) &&
            (found.empty() || candidate < found)) {
            found = candidate;
        }
    }
    closedir(directory);
    return found;
}

}  // namespace

bool ResolveCase(std::string& path) {
    struct stat info;
    if (path.empty() || path[0] != '/' || lstat(path.c_str(), &info) == 0) {
        return false;
    }
    std::string resolved;
    bool changed = false;
    bool missing = false;  // a folder on the way matched nothing
    for (std::size_t start = 1; start <= path.size();) {
        std::size_t end = std::min(path.find('/', start), path.size());
        std::string_view name = std::string_view(path).substr(start, end - start);
        start = end + 1;
        if (name.empty() || name == "." || name == "..") {
            resolved.append("/").append(name);
            continue;
        }
        std::string exact = resolved + "/" + std::string(name);
        if (missing || lstat(exact.c_str(), &info) == 0 || errno != ENOENT) {
            resolved = std::move(exact);
            continue;
        }
        // The name as earlier builds wrote it, its ANSI bytes, comes before
        // another spelling of it: their files must stay reachable.
        const std::string ansi = AnsiName(name);
        std::string match;
        if (ansi != name && lstat((resolved + "/" + ansi).c_str(), &info) == 0) {
            match = ansi;
        } else {
            match = MatchInFolder(resolved, ansi);
        }
        if (match.empty()) {
            missing = true;
            resolved = std::move(exact);
        } else {
            changed = true;
            resolved += "/" + match;
        }
    }
    if (path.back() == '/' && resolved.back() != '/') {
        resolved += '/';
    }
    if (changed) {
        path = std::move(resolved);
    }
    return changed;
}

}  // namespace nvk::os::posix
