#include "os/posix/named_objects.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <map>
#include <mutex>
#include <string>

#include "os/posix/handle.h"

namespace nvk::os::posix {

namespace {

constexpr std::uint32_t kMagic = 0x4E564B4F;  // "NVKO"

std::size_t PageSize() {
    static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

std::string UserPrefix() {
    return "nvk-" + std::to_string(geteuid()) + "-";
}

// The shared-memory name of an object name, or empty with the error set.
// "Local\" is the default namespace; "Global\" is kept apart from it.
std::string SharedName(const char* name) {
    std::string_view rest(name);
    std::string space = "l.";
    if (rest.starts_with("Local\\")) {
        rest.remove_prefix(6);
    } else if (rest.starts_with("Global\\")) {
        rest.remove_prefix(7);
        space = "g.";
    }
    if (rest.find('\\') != std::string_view::npos) {
        SetErrorCode(ERROR_PATH_NOT_FOUND);
        return {};
    }
    std::string shared = "/" + UserPrefix() + space;
    for (const char c : rest) {
        if (c == '/' || c == '%') {  // the only bytes a POSIX name can't carry as they are
            static constexpr char kHex[] = "0123456789ABCDEF";
            shared += '%';
            shared += kHex[static_cast<unsigned char>(c) >> 4];
            shared += kHex[c & 0xF];
        } else {
            shared += c;
        }
    }
    if (shared.size() > NAME_MAX) {
        SetErrorCode(ERROR_FILENAME_EXCED_RANGE);
        return {};
    }
    return shared;
}

// This process's side of the table: one NamedObject per name, and the
// per-user lock that makes making, opening and dropping names atomic across
// processes. The std::mutex orders the threads of this process, since they
// share the lock's flock.
class Table {
public:
    std::recursive_mutex lock;  // a handle may drop the last share while it is held
    std::map<std::string, std::weak_ptr<NamedObject>> objects;

    // Takes the per-user lock; the first time, removes the names that no
    // process holds any more (left by processes that were killed).
    bool LockUser() {
        if (userLock_ < 0) {
            const std::string name = "/" + UserPrefix() + "names";
            userLock_ = shm_open(name.c_str(), O_RDWR | O_CREAT, 0600);
            if (userLock_ < 0) {
                SetErrorFromErrno(errno);
                return false;
            }
            flock(userLock_, LOCK_EX);
            RemoveAbandonedNames();
            return true;
        }
        flock(userLock_, LOCK_EX);
        return true;
    }
    void UnlockUser() { flock(userLock_, LOCK_UN); }

private:
    void RemoveAbandonedNames() {
        DIR* folder = opendir("/dev/shm");
        if (folder == nullptr) {
            return;
        }
        const std::string prefix = UserPrefix();
        while (const dirent* entry = readdir(folder)) {
            const std::string name = entry->d_name;
            if (!name.starts_with(prefix) || name == prefix + "names") {
                continue;
            }
            const std::string shared = "/" + name;
            const int fd = shm_open(shared.c_str(), O_RDONLY, 0);
            if (fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) == 0) {
                shm_unlink(shared.c_str());
            }
            if (fd >= 0) {
                close(fd);
            }
        }
        closedir(folder);
    }

    int userLock_ = -1;
};

// Never destroyed: handles may be closed by static destructors of any module.
Table& TheTable() {
    static auto* table = new Table;
    return *table;
}

// Opens or makes the shared memory under the per-user lock. A name that
// exists but that no process holds was left by a process that died: it is
// made again.
std::shared_ptr<NamedObject> OpenShared(const std::string& shared, ObjectKind kind,
                                        const NewObject& make, bool& existed) {
    const std::size_t headerSize = ObjectHeaderSize();
    int fd = shm_open(shared.c_str(), O_RDWR, 0);
    existed = fd >= 0;
    if (fd >= 0) {
        struct stat info;
        if (fstat(fd, &info) != 0 || info.st_uid != geteuid() || (info.st_mode & 077) != 0 ||
            static_cast<std::size_t>(info.st_size) < headerSize) {
            close(fd);
            SetErrorCode(ERROR_ACCESS_DENIED);
            return nullptr;
        }
        if (flock(fd, LOCK_EX | LOCK_NB) == 0) {
            existed = false;  // no holder: left behind, its contents mean nothing
            if (!make.create) {
                shm_unlink(shared.c_str());
                close(fd);
                SetErrorCode(ERROR_FILE_NOT_FOUND);
                return nullptr;
            }
            ftruncate(fd, 0);
        }
    } else if (errno != ENOENT) {
        SetErrorFromErrno(errno);
        return nullptr;
    } else if (!make.create) {
        SetErrorCode(ERROR_FILE_NOT_FOUND);
        return nullptr;
    } else {
        fd = shm_open(shared.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
        if (fd < 0) {
            SetErrorFromErrno(errno);
            return nullptr;
        }
    }
    auto fail = [&](DWORD code) -> std::shared_ptr<NamedObject> {
        if (!existed) {
            shm_unlink(shared.c_str());
        }
        close(fd);
        SetErrorCode(code);
        return nullptr;
    };
    if (!existed && ftruncate(fd, static_cast<off_t>(headerSize + make.bytes)) != 0) {
        return fail(errno == EFBIG || errno == EINVAL ? ERROR_NOT_ENOUGH_MEMORY
                                                      : ErrorFromErrno(errno));
    }
    void* page = mmap(nullptr, headerSize, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (page == MAP_FAILED) {
        return fail(ERROR_NOT_ENOUGH_MEMORY);
    }
    auto* header = static_cast<ObjectHeader*>(page);
    if (!existed) {
        header->magic = kMagic;
        header->kind = kind;
        header->size = make.bytes;
        if (make.init != nullptr) {
            make.init(*header, make.context);
        }
    } else if (header->magic != kMagic || header->kind != kind) {
        munmap(page, headerSize);
        close(fd);
        SetErrorCode(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    flock(fd, LOCK_SH);  // held while this process has a handle
    return std::make_shared<NamedObject>(shared, fd, header);
}

}  // namespace

std::size_t ObjectHeaderSize() {
    static_assert(sizeof(ObjectHeader) <= 4096);
    return PageSize();
}

NamedObject::~NamedObject() {
    Table& table = TheTable();
    std::lock_guard guard(table.lock);
    if (table.LockUser()) {
        // Another process's shared lock keeps the name; none left drops it.
        if (flock(fd_, LOCK_EX | LOCK_NB) == 0) {
            shm_unlink(name_.c_str());
        }
        table.UnlockUser();
    }
    flock(fd_, LOCK_UN);
    if (!keepMapped_) {
        munmap(header_, ObjectHeaderSize());
    }
    close(fd_);
    for (auto it = table.objects.begin(); it != table.objects.end();) {
        it = it->second.expired() ? table.objects.erase(it) : std::next(it);
    }
}

std::shared_ptr<NamedObject> OpenNamedObject(const char* name, ObjectKind kind,
                                             const NewObject& make, bool& existed) {
    existed = false;
    const std::string shared = SharedName(name);
    if (shared.empty()) {
        return nullptr;
    }
    Table& table = TheTable();
    std::lock_guard guard(table.lock);
    if (auto object = table.objects[shared].lock()) {
        if (object->header().kind != kind) {
            SetErrorCode(ERROR_INVALID_HANDLE);
            return nullptr;
        }
        existed = true;
        return object;
    }
    if (!table.LockUser()) {
        return nullptr;
    }
    auto object = OpenShared(shared, kind, make, existed);
    table.UnlockUser();
    if (object) {
        table.objects[shared] = object;
    }
    return object;
}

}  // namespace nvk::os::posix
