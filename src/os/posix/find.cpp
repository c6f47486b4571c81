#include "os/api/find.h"
#include "os/api/find_names.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "os/api/path_map.h"
#include "os/api/sync.h"
#include "os/posix/drive_map.h"
#include "os/posix/fs_support.h"
#include "os/posix/full_path.h"
#include "os/posix/handle.h"
#include "os/posix/names.h"
#include "os/posix/native_names.h"
#include "os/posix/wildcard.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

class Search final : public posix::KernelObject {
public:
    // The entries are handed out in `order`, the places of `entries`: sorting
    // the places spares moving the records, which are large.
    Search(std::vector<WIN32_FIND_DATAA> entries, std::vector<std::uint32_t> order)
        : entries_(std::move(entries)), order_(std::move(order)) {}
    bool Next(WIN32_FIND_DATAA& data) {
        if (next_ == order_.size()) {
            return false;
        }
        data = entries_[order_[next_++]];
        return true;
    }

private:
    std::vector<WIN32_FIND_DATAA> entries_;
    std::vector<std::uint32_t> order_;
    std::size_t next_ = 0;
};

// The entry `name` of the native folder `folder`, open as `folderFd` when
// that is not -1, under its ANSI name `ansiName`; false if it is gone or its
// name doesn't fit. A link is reported as itself, a reparse point, with the
// type of what it points to, as Windows reports a link to a folder. The open
// folder spares the system a lookup of the whole path for each entry, which
// is most of a large search.
bool Describe(int folderFd, const std::string& folder, const std::string& name,
              std::string_view ansiName, WIN32_FIND_DATAA& data) {
    if (ansiName.size() >= sizeof data.cFileName) {
        return false;
    }
    const std::string full = folderFd >= 0   ? std::string()
                             : folder == "/" ? "/" + name
                                             : folder + "/" + name;
    const char* path = folderFd >= 0 ? name.c_str() : full.c_str();
    const int at = folderFd >= 0 ? folderFd : AT_FDCWD;
    struct statx info;
    unsigned mask = STATX_BASIC_STATS | STATX_BTIME;
    if (statx(at, path, AT_SYMLINK_NOFOLLOW, mask, &info) != 0) {
        return false;
    }
    const bool link = S_ISLNK(info.stx_mode);
    struct statx target;
    const mode_t mode =
        link && statx(at, path, 0, STATX_TYPE, &target) == 0 ? target.stx_mode : info.stx_mode;
    data = {};
    data.dwFileAttributes = posix::AttributesOf(mode, name, link);
    data.ftCreationTime =
        posix::ToFileTime((info.stx_mask & STATX_BTIME) != 0 ? info.stx_btime : info.stx_ctime);
    data.ftLastAccessTime = posix::ToFileTime(info.stx_atime);
    data.ftLastWriteTime = posix::ToFileTime(info.stx_mtime);
    if (S_ISREG(info.stx_mode)) {
        data.nFileSizeHigh = static_cast<DWORD>(info.stx_size >> 32);
        data.nFileSizeLow = static_cast<DWORD>(info.stx_size);
    }
    std::memcpy(data.cFileName, ansiName.data(), ansiName.size());
    data.cFileName[ansiName.size()] = '\0';
    return true;
}

// The entry as the folder's listing tells it, when its type (from the
// listing, DT_*) is a file or a folder and its name can be searched for
// again to describe it (no wildcards, no trailing dot or blank, which
// searches drop); false otherwise.
bool NameOnly(unsigned char type, std::string_view ansiName, WIN32_FIND_DATAA& data) {
    const bool dots = ansiName == "." || ansiName == "..";
    if ((type != DT_REG && type != DT_DIR) || ansiName.size() >= sizeof data.cFileName ||
        ansiName.find_first_of("*?") != std::string_view::npos ||
        (!dots && (ansiName.ends_with('.') || ansiName.ends_with(' ')))) {
        return false;
    }
    data = {};
    data.dwFileAttributes =
        posix::AttributesOf(type == DT_DIR ? S_IFDIR | S_IWUSR : S_IFREG | S_IWUSR, ansiName);
    std::memcpy(data.cFileName, ansiName.data(), ansiName.size());
    data.cFileName[ansiName.size()] = '\0';
    return true;
}

int Upper(char c) {
    const auto u = static_cast<unsigned char>(c);
    return u >= 'a' && u <= 'z' ? u - ('a' - 'A') : u;
}

int CompareNames(const char* a, const char* b) {
    for (;; ++a, ++b) {
        int x = Upper(*a);
        int y = Upper(*b);
        if (x != y || x == 0) {
            return x - y;
        }
    }
}

// Name order without regard to case, "." and ".." first.
bool Before(const WIN32_FIND_DATAA& a, const WIN32_FIND_DATAA& b) {
    auto rank = [](const char* name) {
        return name[0] != '.' ? 2 : name[1] == '\0' ? 0 : name[1] == '.' && name[2] == '\0' ? 1 : 2;
    };
    int ra = rank(a.cFileName);
    int rb = rank(b.cFileName);
    if (ra != rb) {
        return ra < rb;
    }
    int c = CompareNames(a.cFileName, b.cFileName);
    return c != 0 ? c < 0 : std::strcmp(a.cFileName, b.cFileName) < 0;
}

// FindFirstFileA, or FindFirstNameA when not `describe`.
HANDLE Find(LPCSTR fileName, LPWIN32_FIND_DATAA findData, bool describe) {
    if (fileName == nullptr || findData == nullptr || fileName[0] == '\0') {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    std::string pattern(fileName);
    std::size_t cut = pattern.find_last_of("\\/");
    if (cut == std::string::npos && pattern.size() >= 2 && pattern[1] == ':') {
        cut = 1;  // "C:*.txt": the current folder of drive C
    }
    std::string windowsFolder = cut == std::string::npos ? "." : pattern.substr(0, cut + 1);
    std::string name = cut == std::string::npos ? pattern : pattern.substr(cut + 1);
    std::string folder = ToNativePath(windowsFolder.c_str());
    if (folder.empty()) {
        posix::SetUnmappedError(fileName);
        return INVALID_HANDLE_VALUE;
    }
    // The folder is found without regard to case when its exact name is
    // missing; so is a name without wildcards, which loses its trailing dots
    // and blanks as every path's components do (a pattern keeps them: "*."
    // means the names without an extension).
    if (name.empty()) {
        struct stat info;
        if (stat(folder.c_str(), &info) != 0) {
            posix::RetryWithoutCase(errno, folder);
        }
        posix::SetPathError(ENOENT, folder + "/");
        return INVALID_HANDLE_VALUE;
    }
    std::vector<WIN32_FIND_DATAA> entries;
    WIN32_FIND_DATAA data;
    if (!posix::HasWildcards(name)) {
        name = posix::NativeName(posix::TrimComponent(name));
        std::string path = folder + "/" + name;
        bool found = Describe(-1, folder, name, posix::AnsiName(name), data);
        if (!found && posix::ResolveCase(path)) {
            name = path.substr(path.find_last_of('/') + 1);
            found = Describe(-1, folder, name, posix::AnsiName(name), data);
        }
        if (!found) {
            posix::SetPathError(ENOENT, path);
            return INVALID_HANDLE_VALUE;
        }
        entries.push_back(data);
    } else {
        DIR* directory = opendir(folder.c_str());
        if (directory == nullptr && posix::RetryWithoutCase(errno, folder)) {
            directory = opendir(folder.c_str());
        }
        if (directory == nullptr) {
            SetErrorCode(errno == ENOENT || errno == ENOTDIR ? ERROR_PATH_NOT_FOUND
                                                             : posix::ErrorFromErrno(errno));
            return INVALID_HANDLE_VALUE;
        }
        // A drive's root has no "." and ".."; a share's root has them.
        std::string full = posix::SystemFullPath(windowsFolder);
        bool root = posix::IsFullRoot(full) && !posix::IsUncPath(full);
        const bool all = name == "*" || name == "*.*";
        std::string ansi;
        while (const dirent* entry = readdir(directory)) {
            std::string entryName = entry->d_name;
            bool dots = entryName == "." || entryName == "..";
            const bool ascii = posix::IsAscii(entryName);
            if (!ascii) {
                ansi = posix::AnsiName(entryName);
            }
            const std::string_view ansiName = ascii ? std::string_view(entryName) : ansi;
            if ((!dots || !root) && (all || posix::MatchWildcard(name, ansiName)) &&
                ((!describe && NameOnly(entry->d_type, ansiName, data)) ||
                 Describe(dirfd(directory), folder, entryName, ansiName, data))) {
                entries.push_back(data);
            }
        }
        closedir(directory);
        if (entries.empty()) {
            SetErrorCode(ERROR_FILE_NOT_FOUND);
            return INVALID_HANDLE_VALUE;
        }
    }
    std::vector<std::uint32_t> order(entries.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(),
              [&](std::uint32_t a, std::uint32_t b) { return Before(entries[a], entries[b]); });
    auto* search = new Search(std::move(entries), std::move(order));
    search->Next(*findData);
    return posix::RegisterHandle(search);
}

}  // namespace

HANDLE FindFirstFileA(LPCSTR fileName, LPWIN32_FIND_DATAA findData) {
    return Find(fileName, findData, true);
}

HANDLE FindFirstNameA(LPCSTR fileName, LPWIN32_FIND_DATAA findData) {
    return Find(fileName, findData, false);
}

BOOL FindNextFileA(HANDLE findFile, LPWIN32_FIND_DATAA findData) {
    Search* search = posix::HandleAs<Search>(findFile);
    if (search == nullptr) {
        return FALSE;
    }
    if (!search->Next(*findData)) {
        SetErrorCode(ERROR_NO_MORE_FILES);
        return FALSE;
    }
    return TRUE;
}

BOOL FindClose(HANDLE findFile) {
    if (posix::HandleAs<Search>(findFile) == nullptr) {
        return FALSE;
    }
    return CloseHandle(findFile);
}

}  // namespace nvk::os
