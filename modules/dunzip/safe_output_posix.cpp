// The walk on POSIX: each folder is opened relative to the one above it with
// O_NOFOLLOW, and files are made and renamed relative to their folder's
// descriptor, so a link met on the way is never gone through.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "safe_output.h"

namespace nvk::unzip {

const bool kNamesAreText = false;
const char kNativeSeparators[] = "/";

bool FitsDisk(const std::string&) {
    return true;
}

struct Destination::NativeFolder {
    int Fd;
};

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

int Fd(std::intptr_t handle) {
    return static_cast<int>(handle);
}

// Makes every missing folder of a native path.
bool MakePath(const std::string& path) {
    for (std::size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        std::string part = path.substr(0, slash);
        if (!part.empty() && mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) {
            return false;
        }
        if (slash == std::string::npos) {
            return true;
        }
    }
}

}  // namespace

void Destination::CloseFolder::operator()(NativeFolder* folder) const {
    close(folder->Fd);
    delete folder;
}

Destination::Destination(const std::string& nativeFolder)
    : m_Folder(nativeFolder.empty() ? std::string(".") : nativeFolder) {
    // The destination itself is the caller's: a link there is followed.
    int fd = open(m_Folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0 && errno == ENOENT && MakePath(m_Folder)) {
        fd = open(m_Folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
    if (fd >= 0) {
        m_Root.reset(new NativeFolder{fd});
    }
}

Destination::FolderPtr Destination::OpenFolder(const std::vector<std::string>& components,
                                               std::size_t count, bool make, Status* status) {
    int fd = dup(m_Root->Fd);
    for (std::size_t i = 0; i < count && fd >= 0; ++i) {
        const char* name = components[i].c_str();
        int next = openat(fd, name, kFolderFlags);
        if (next < 0 && errno == ENOENT && make) {
            if (mkdirat(fd, name, 0777) != 0 && errno != EEXIST) {
                close(fd);
                *status = Status::Failed;
                return nullptr;
            }
            next = openat(fd, name, kFolderFlags);
        }
        close(fd);
        if (next < 0) {
            // A link, or a file where a folder should be: never gone through.
            *status = (errno == ELOOP || errno == ENOTDIR) ? Status::Refused : Status::Failed;
            return nullptr;
        }
        fd = next;
    }
    *status = fd >= 0 ? Status::Ok : Status::Failed;
    return fd >= 0 ? FolderPtr(new NativeFolder{fd}) : nullptr;
}

int Destination::Kind(const NativeFolder& folder, const std::string& name, std::time_t* modified) {
    struct stat info {};
    if (fstatat(folder.Fd, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
        return -1;
    }
    *modified = info.st_mtime;
    return S_ISREG(info.st_mode) ? 0 : 1;
}

std::intptr_t Destination::CreateNew(const NativeFolder& folder, const std::string& name,
                                     bool* exists) {
    int fd =
        openat(folder.Fd, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    *exists = fd < 0 && errno == EEXIST;
    return fd;
}

Destination::File::~File() {
    if (m_Handle != -1) {
        close(Fd(m_Handle));
        unlinkat(m_Folder->Fd, m_Temporary.c_str(), 0);
    }
}

bool Destination::File::Write(const char* data, std::size_t size) {
    while (size > 0) {
        ssize_t written = write(Fd(m_Handle), data, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool Destination::File::Commit(std::time_t modified, unsigned mode) {
    struct timespec times[2] = {{0, UTIME_OMIT}, {modified, 0}};
    futimens(Fd(m_Handle), times);
    fchmod(Fd(m_Handle), mode & 0777);
    bool done = close(Fd(m_Handle)) == 0;
    m_Handle = -1;
    // The rename replaces a file or a link at the name, never what a link
    // points to.
    const int folder = m_Folder->Fd;
    if (!done || renameat(folder, m_Temporary.c_str(), folder, m_Name.c_str()) != 0) {
        unlinkat(folder, m_Temporary.c_str(), 0);
        return false;
    }
    return true;
}

}  // namespace nvk::unzip
