#include "os/posix/trash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <string>

#include "os/posix/environment.h"
#include "os/posix/handle.h"
#include "os/posix/user_folders.h"

namespace nvk::os::posix {

namespace {

bool MakeFolder(const std::string& path) {
    if (mkdir(path.c_str(), 0700) == 0) {
        return true;
    }
    struct stat info;
    return errno == EEXIST && lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// Every missing folder of `path`, each private to the user.
bool MakeFolders(const std::string& path) {
    for (std::size_t at = path.find('/', 1); at != std::string::npos; at = path.find('/', at + 1)) {
        if (!MakeFolder(path.substr(0, at))) {
            return false;
        }
    }
    return MakeFolder(path);
}

std::string Parent(const std::string& path) {
    std::size_t cut = path.find_last_of('/');
    return cut == 0 || cut == std::string::npos ? "/" : path.substr(0, cut);
}

// The top of the file system that holds `path`'s folder.
std::string TopOf(const std::string& path) {
    std::string top = Parent(path);
    struct stat here;
    if (stat(top.c_str(), &here) != 0) {
        return "/";
    }
    while (top != "/") {
        struct stat above;
        std::string parent = Parent(top);
        if (stat(parent.c_str(), &above) != 0 || above.st_dev != here.st_dev) {
            break;
        }
        top = parent;
    }
    return top;
}

// The trash of a file system that is not the user's home: "$top/.Trash/$uid"
// when the administrator made a shared ".Trash" (a sticky folder, not a
// link), else "$top/.Trash-$uid".
std::string TopTrash(const std::string& top) {
    const std::string base = top == "/" ? "" : top;
    const std::string uid = std::to_string(getuid());
    const std::string shared = base + "/.Trash";
    struct stat info;
    if (lstat(shared.c_str(), &info) == 0 && S_ISDIR(info.st_mode) &&
        (info.st_mode & S_ISVTX) != 0 && MakeFolder(shared + "/" + uid)) {
        return shared + "/" + uid;
    }
    const std::string own = base + "/.Trash-" + uid;
    if (!MakeFolder(own) || lstat(own.c_str(), &info) != 0 || info.st_uid != getuid()) {
        return {};
    }
    return own;
}

// A path as the trash info writes it: bytes outside the unreserved set of
// URIs as "%XX", slashes kept.
std::string Escape(const std::string& path) {
    static const char kUnreserved[] = "-_.!~*'()/";
    std::string out;
    for (unsigned char c : path) {
        bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                     (c != 0 && std::string_view(kUnreserved).find(static_cast<char>(c)) !=
                                    std::string_view::npos);
        if (plain) {
            out += static_cast<char>(c);
        } else {
            char hex[4];
            std::snprintf(hex, sizeof hex, "%%%02X", c);
            out += hex;
        }
    }
    return out;
}

std::string Now() {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
    return text;
}

bool WriteAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        ssize_t put = write(fd, text.data() + done, text.size() - done);
        if (put <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(put);
    }
    return true;
}

}  // namespace

std::string HomeTrash() {
    std::string data = EnvironmentValue("XDG_DATA_HOME");
    if (data.empty() || data[0] != '/') {
        std::string home = HomeFolder();
        if (home.empty()) {
            return {};
        }
        data = home + "/.local/share";
    }
    return data + "/Trash";
}

DWORD MoveToTrash(const std::string& path) {
    struct stat file;
    if (lstat(path.c_str(), &file) != 0) {
        return ErrorFromErrno(errno);
    }
    std::string trash = HomeTrash();
    std::string recorded = path;
    struct stat home;
    if (trash.empty() || !MakeFolders(trash) || stat(trash.c_str(), &home) != 0 ||
        home.st_dev != file.st_dev) {
        // Another file system: its own trash, which records the path from
        // its top so that the volume may be mounted elsewhere.
        const std::string top = TopOf(path);
        trash = TopTrash(top);
        if (trash.empty()) {
            return ERROR_ACCESS_DENIED;
        }
        recorded = top == "/" ? path.substr(1) : path.substr(top.size() + 1);
    }
    if (!MakeFolder(trash + "/files") || !MakeFolder(trash + "/info")) {
        return ErrorFromErrno(errno);
    }
    const std::string name = path.substr(path.find_last_of('/') + 1);
    // The info file is made first, exclusively, which reserves the name.
    for (int n = 1; n < 10000; ++n) {
        const std::string entry = n == 1 ? name : name + "." + std::to_string(n);
        const std::string info = trash + "/info/" + entry + ".trashinfo";
        const std::string target = trash + "/files/" + entry;
        int fd = open(info.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST) {
                continue;
            }
            return ErrorFromErrno(errno);
        }
        struct stat taken;
        if (lstat(target.c_str(), &taken) == 0) {
            close(fd);
            unlink(info.c_str());
            continue;
        }
        bool written = WriteAll(
            fd, "[Trash Info]\nPath=" + Escape(recorded) + "\nDeletionDate=" + Now() + "\n");
        written = close(fd) == 0 && written;
        if (!written || rename(path.c_str(), target.c_str()) != 0) {
            const int error = written ? errno : EIO;
            unlink(info.c_str());
            return ErrorFromErrno(error);
        }
        return 0;
    }
    return ERROR_ACCESS_DENIED;
}

}  // namespace nvk::os::posix
