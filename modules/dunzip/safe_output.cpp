#include "safe_output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace nvk::unzip {

namespace {

std::atomic<unsigned> g_counter{0};

void CloseFd(int fd) {
    if (fd >= 0) {
        close(fd);
    }
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

std::vector<std::string> SafeComponents(const std::string& name) {
    std::vector<std::string> parts;
    if (name.empty() || name[0] == '/' || name[0] == '\\') {
        return {};
    }
    std::string part;
    for (std::size_t i = 0; i <= name.size(); ++i) {
        char c = i < name.size() ? name[i] : '/';
        if (c != '/' && c != '\\') {
            part += c;
            continue;
        }
        if (part == "..") {
            return {};
        }
        // A drive ("C:") or any colon would name another place on Windows.
        if (part.find(':') != std::string::npos || part.find('\0') != std::string::npos) {
            return {};
        }
        if (!part.empty() && part != ".") {
            parts.push_back(part);
        }
        part.clear();
    }
    return parts;
}

Destination::Destination(const std::string& nativeFolder) : m_Folder(nativeFolder) {
    if (m_Folder.empty()) {
        m_Folder = ".";
    }
    m_Fd = open(m_Folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_Fd < 0 && errno == ENOENT && MakePath(m_Folder)) {
        m_Fd = open(m_Folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    }
}

Destination::~Destination() {
    CloseFd(m_Fd);
}

int Destination::OpenFolder(const std::vector<std::string>& components, std::size_t count,
                            bool make, Status* status) {
    int fd = dup(m_Fd);
    for (std::size_t i = 0; i < count && fd >= 0; ++i) {
        const char* name = components[i].c_str();
        int next = openat(fd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (next < 0 && errno == ENOENT && make) {
            if (mkdirat(fd, name, 0777) != 0 && errno != EEXIST) {
                close(fd);
                *status = Status::Failed;
                return -1;
            }
            next = openat(fd, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        }
        close(fd);
        if (next < 0) {
            // A link, or a file where a folder should be: never gone through.
            *status = (errno == ELOOP || errno == ENOTDIR) ? Status::Refused : Status::Failed;
            return -1;
        }
        fd = next;
    }
    *status = fd >= 0 ? Status::Ok : Status::Failed;
    return fd;
}

Destination::Status Destination::MakeFolders(const std::vector<std::string>& components,
                                             std::size_t count) {
    Status status = Status::Ok;
    CloseFd(OpenFolder(components, count, true, &status));
    return status;
}

int Destination::Existing(const std::vector<std::string>& components, std::time_t* modified) {
    Status status = Status::Ok;
    int folder = OpenFolder(components, components.size() - 1, false, &status);
    if (folder < 0) {
        return status == Status::Refused ? 1 : -1;
    }
    struct stat info {};
    int result = -1;
    if (fstatat(folder, components.back().c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0) {
        result = S_ISREG(info.st_mode) ? 0 : 1;
        *modified = info.st_mtime;
    }
    close(folder);
    return result;
}

Destination::Status Destination::Create(const std::vector<std::string>& components, File& file) {
    Status status = Status::Ok;
    int folder = OpenFolder(components, components.size() - 1, true, &status);
    if (folder < 0) {
        return status;
    }
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::string temporary =
            ".dunzip-" + std::to_string(getpid()) + "-" + std::to_string(g_counter.fetch_add(1));
        int fd = openat(folder, temporary.c_str(),
                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (fd >= 0) {
            file.m_Folder = folder;
            file.m_Fd = fd;
            file.m_Temporary = temporary;
            file.m_Name = components.back();
            return Status::Ok;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    close(folder);
    return Status::Failed;
}

Destination::File::~File() {
    if (m_Fd >= 0) {
        close(m_Fd);
        unlinkat(m_Folder, m_Temporary.c_str(), 0);
    }
    CloseFd(m_Folder);
}

Destination::File::File(File&& other) noexcept
    : m_Folder(other.m_Folder),
      m_Fd(other.m_Fd),
      m_Temporary(std::move(other.m_Temporary)),
      m_Name(std::move(other.m_Name)) {
    other.m_Folder = -1;
    other.m_Fd = -1;
}

bool Destination::File::Write(const char* data, std::size_t size) {
    while (size > 0) {
        ssize_t written = write(m_Fd, data, size);
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
    futimens(m_Fd, times);
    fchmod(m_Fd, mode & 0777);
    bool done = close(m_Fd) == 0;
    m_Fd = -1;
    // The rename replaces a file or a link at the name, never what a link
    // points to.
    if (!done || renameat(m_Folder, m_Temporary.c_str(), m_Folder, m_Name.c_str()) != 0) {
        unlinkat(m_Folder, m_Temporary.c_str(), 0);
        return false;
    }
    return true;
}

}  // namespace nvk::unzip
