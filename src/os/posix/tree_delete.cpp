#include "os/posix/tree_delete.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include "os/api/path_map.h"
#include "os/api/tree_delete.h"
#include "os/posix/fs_support.h"
#include "os/posix/handle.h"
#include "os/posix/names.h"

namespace nvk::os {

namespace posix {

namespace {

struct Entry {
    std::string name;
    bool folder;
};

// The entries of the open folder but "." and "..", read whole before any is
// deleted: a folder changed while it is read may skip or repeat names.
bool ReadEntries(int folder, std::vector<Entry>& entries) {
    alignas(dirent64) char buffer[32768];
    for (;;) {
        const ssize_t size = getdents64(folder, buffer, sizeof buffer);
        if (size < 0) {
            return false;
        }
        if (size == 0) {
            return true;
        }
        for (ssize_t at = 0; at < size;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer + at);
            at += entry->d_reclen;
            const char* name = entry->d_name;
            if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) {
                continue;
            }
            bool isFolder = entry->d_type == DT_DIR;
            struct stat info;
            if (entry->d_type == DT_UNKNOWN) {  // file systems that don't tell
                if (fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) != 0) {
                    return false;
                }
                isFolder = S_ISDIR(info.st_mode);
            }
            entries.push_back({name, isFolder});
        }
    }
}

// A folder whose owner may not write is read-only to the layer; emptying it
// clears that first, as deleting a read-only file does.
bool MakeWritable(int folder) {
    struct stat info;
    if (fstat(folder, &info) != 0) {
        return false;
    }
    return (info.st_mode & S_IWUSR) != 0 || fchmod(folder, (info.st_mode & 07777) | S_IWUSR) == 0;
}

bool Remove(int folder, const Entry& entry) {
    if (!entry.folder) {
        return unlinkat(folder, entry.name.c_str(), 0) == 0;
    }
    // O_NOFOLLOW: a folder replaced by a link since it was read is not entered.
    const int child =
        openat(folder, entry.name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (child < 0) {
        return (errno == ELOOP || errno == ENOTDIR) && unlinkat(folder, entry.name.c_str(), 0) == 0;
    }
    const bool emptied = EmptyOpenFolder(child);
    const int error = errno;
    close(child);
    errno = error;
    return emptied && unlinkat(folder, entry.name.c_str(), AT_REMOVEDIR) == 0;
}

}  // namespace

bool EmptyOpenFolder(int folder) {
    std::vector<Entry> entries;
    if (!MakeWritable(folder) || !ReadEntries(folder, entries)) {
        return false;
    }
    for (const Entry& entry : entries) {
        if (!Remove(folder, entry)) {
            return false;
        }
    }
    return true;
}

}  // namespace posix

BOOL EmptyFolderA(LPCSTR pathName) {
    std::string path = ToNativePath(pathName);
    if (path.empty()) {
        posix::SetUnmappedError(pathName);
        return FALSE;
    }
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    int folder = open(path.c_str(), kFlags);
    if (folder < 0 && posix::RetryWithoutCase(errno, path)) {
        folder = open(path.c_str(), kFlags);
    }
    if (folder < 0) {
        if (errno == ENOTDIR || errno == ELOOP) {
            struct stat info;
            posix::SetErrorCode(lstat(path.c_str(), &info) == 0 ? ERROR_DIRECTORY
                                                                : ERROR_PATH_NOT_FOUND);
        } else {
            posix::SetPathError(errno, path);
        }
        return FALSE;
    }
    const bool emptied = posix::EmptyOpenFolder(folder);
    const int error = errno;
    close(folder);
    if (!emptied) {
        posix::SetErrorFromErrno(error);
        return FALSE;
    }
    return TRUE;
}

}  // namespace nvk::os
