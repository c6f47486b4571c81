// File mappings: sections of memory (shared memory when named, a memfd when
// not) or of a file, and their views. Memory is committed page by page as it
// is touched, never at creation.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>

#include "os/api/error.h"
#include "os/api/sync.h"
#include "os/posix/handle.h"
#include "os/posix/named_objects.h"
#include "os/posix/section_marker.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

constexpr ULONGLONG kAllocationGranularity = 65536;

ULONGLONG PageSize() {
    static const auto size = static_cast<ULONGLONG>(sysconf(_SC_PAGESIZE));
    return size;
}

// What a named mapping's header holds beyond its size: a file mapping names
// its file, for the other processes that open it.
struct MappingInfo {
    std::uint32_t writable;
    std::uint32_t isFile;
    char path[3072];
};
static_assert(sizeof(MappingInfo) <= sizeof(posix::ObjectHeader::body));

MappingInfo& InfoOf(posix::ObjectHeader& header) {
    return *reinterpret_cast<MappingInfo*>(header.body);
}

// An open of a file by its sections, which holds their marker. Their views
// keep it too, so that the file is not cut under them.
struct FileOpen {
    explicit FileOpen(int descriptor) : fd(descriptor) {}
    ~FileOpen() { close(fd); }
    FileOpen(const FileOpen&) = delete;
    FileOpen& operator=(const FileOpen&) = delete;
    const int fd;
};

// The open of a file that its sections share in this process, readable or
// writable: one descriptor a file, not one for every window of it that a
// reader keeps mapped. It is the file's own open (a duplicate would share the
// handle's locks and go with them); when the file can't be opened again, a
// duplicate maps the same, unmarked.
std::shared_ptr<FileOpen> SharedOpen(int fd, bool writable) {
    struct stat info;
    if (fstat(fd, &info) != 0) {
        posix::SetErrorFromErrno(errno);
        return nullptr;
    }
    using Identity = std::tuple<dev_t, ino_t, bool>;
    static auto* lock = new std::mutex;
    static auto* opens = new std::map<Identity, std::weak_ptr<FileOpen>>;
    std::lock_guard guard(*lock);
    std::erase_if(*opens, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<FileOpen>& known = (*opens)[Identity{info.st_dev, info.st_ino, writable}];
    if (auto shared = known.lock()) {
        return shared;
    }
    char link[64];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    int own = ::open(link, (writable ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NOCTTY);
    if (own >= 0) {
        posix::HoldSectionMarker(own);
    } else {
        own = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    }
    if (own < 0) {
        posix::SetErrorFromErrno(errno);
        return nullptr;
    }
    auto shared = std::make_shared<FileOpen>(own);
    known = shared;
    return shared;
}

// One mapping as a handle sees it. The descriptor is the section's own, so
// the section outlives the handle that made it.
struct Section {
    std::shared_ptr<posix::NamedObject> named;  // keeps the name while handles live
    std::shared_ptr<FileOpen> file;             // a file section's descriptor
    int fd = -1;
    bool ownsFd = true;
    ULONGLONG base = 0;  // where the section's bytes start in fd
    ULONGLONG size = 0;
    bool writable = false;

    ~Section() {
        if (ownsFd && fd >= 0) {
            close(fd);
        }
    }
};

class SectionHandle : public posix::KernelObject {
public:
    SectionHandle(std::shared_ptr<Section> section, DWORD access)
        : section_(std::move(section)), access_(access) {}
    const std::shared_ptr<Section>& section() const { return section_; }
    DWORD access() const { return access_; }

private:
    std::shared_ptr<Section> section_;
    DWORD access_;
};

// The section's name goes with its last handle while views remain, as on
// Windows; a view of a file keeps the section's open of it.
struct View {
    SIZE_T length;
    std::shared_ptr<FileOpen> file;
};

struct Views {
    std::mutex lock;
    std::map<std::uintptr_t, View> live;  // by base address
};

Views& AllViews() {
    static auto* views = new Views;
    return *views;
}

// The most a memory section may reserve: what the system could ever commit,
// and for a named one what its shared-memory file system has room for. A
// larger section would fail at first touch of a page with a signal, so it
// fails here with the error Windows gives past its commit limit.
ULONGLONG CommitLimit(bool named) {
    struct sysinfo info = {};
    ULONGLONG limit = ULLONG_MAX;
    if (sysinfo(&info) == 0) {
        limit = (static_cast<ULONGLONG>(info.totalram) + info.totalswap) * info.mem_unit;
    }
    struct statvfs space = {};
    if (named && statvfs("/dev/shm", &space) == 0) {
        limit = std::min<ULONGLONG>(limit, static_cast<ULONGLONG>(space.f_bavail) * space.f_frsize);
    }
    return limit;
}

std::string DescriptorPath(int fd) {
    char link[64];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    char target[PATH_MAX];
    const ssize_t length = readlink(link, target, sizeof target - 1);
    return length > 0 ? std::string(target, static_cast<std::size_t>(length)) : std::string();
}

struct MemoryInit {
    ULONGLONG size;
    bool writable;
    const std::string* path;
};

void InitMapping(posix::ObjectHeader& header, void* context) {
    const auto& init = *static_cast<MemoryInit*>(context);
    header.size = init.size;
    MappingInfo& info = InfoOf(header);
    info.writable = init.writable ? 1 : 0;
    info.isFile = init.path != nullptr ? 1 : 0;
    if (init.path != nullptr) {
        std::snprintf(info.path, sizeof info.path, "%s", init.path->c_str());
    }
}

// The section of a named object found by name.
std::shared_ptr<Section> SectionOf(std::shared_ptr<posix::NamedObject> named) {
    auto section = std::make_shared<Section>();
    MappingInfo& info = InfoOf(named->header());
    section->size = named->header().size;
    section->writable = info.writable != 0;
    if (info.isFile != 0) {
        const int fd = open(info.path, (section->writable ? O_RDWR : O_RDONLY) | O_CLOEXEC);
        if (fd < 0) {
            posix::SetErrorFromErrno(errno);
            return nullptr;
        }
        posix::HoldSectionMarker(fd);
        section->file = std::make_shared<FileOpen>(fd);
        section->fd = fd;
        section->ownsFd = false;
    } else {
        section->fd = named->fd();
        section->ownsFd = false;
        section->base = posix::ObjectHeaderSize();
    }
    section->named = std::move(named);
    return section;
}

// The section of a file handle, `size` bytes of it (0: the whole file),
// growing the file to that size.
std::shared_ptr<Section> FileSection(HANDLE file, bool writable, ULONGLONG size) {
    bool canRead = false;
    bool canWrite = false;
    const int fd = posix::DescriptorOf(file, canRead, canWrite);
    if (fd < 0) {
        return nullptr;
    }
    if (!canRead || (writable && !canWrite)) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    const off_t length = lseek(fd, 0, SEEK_END);
    if (size == 0 && length <= 0) {
        SetErrorCode(ERROR_FILE_INVALID);
        return nullptr;
    }
    if (size > static_cast<ULONGLONG>(length)) {
        if (!writable) {
            SetErrorCode(ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
        }
        if (ftruncate(fd, static_cast<off_t>(size)) != 0) {
            posix::SetErrorFromErrno(errno);
            return nullptr;
        }
    }
    auto section = std::make_shared<Section>();
    section->size = size != 0 ? size : static_cast<ULONGLONG>(length);
    section->writable = writable;
    section->file = SharedOpen(fd, writable);
    if (!section->file) {
        return nullptr;
    }
    section->fd = section->file->fd;
    section->ownsFd = false;
    return section;
}

std::shared_ptr<Section> MemorySection(ULONGLONG size, bool writable) {
    auto section = std::make_shared<Section>();
    section->fd = memfd_create("nvk-section", MFD_CLOEXEC);
    section->size = size;
    section->writable = writable;
    if (section->fd < 0 || ftruncate(section->fd, static_cast<off_t>(size)) != 0) {
        SetErrorCode(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    return section;
}

DWORD HandleAccess(bool writable) {
    return writable ? FILE_MAP_READ | FILE_MAP_WRITE : FILE_MAP_READ;
}

}  // namespace

HANDLE CreateFileMappingA(HANDLE file, LPSECURITY_ATTRIBUTES /*attributes*/, DWORD protect,
                          DWORD maximumSizeHigh, DWORD maximumSizeLow, LPCSTR name) {
    const DWORD pageProtection = protect & 0xFF;
    if (pageProtection != PAGE_READONLY && pageProtection != PAGE_READWRITE) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const bool writable = pageProtection == PAGE_READWRITE;
    const bool memory = file == INVALID_HANDLE_VALUE;
    const bool named = name != nullptr && *name != '\0';
    ULONGLONG size = (static_cast<ULONGLONG>(maximumSizeHigh) << 32) | maximumSizeLow;
    if (memory) {
        if (size == 0) {
            SetErrorCode(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        size = (size + PageSize() - 1) / PageSize() * PageSize();
        if (size > CommitLimit(named)) {
            SetErrorCode(ERROR_COMMITMENT_LIMIT);
            return nullptr;
        }
    }

    std::shared_ptr<Section> section;
    bool existed = false;
    if (!memory) {
        section = FileSection(file, writable, size);
        if (!section) {
            return nullptr;
        }
    }
    if (named) {
        // A file section's name carries its file's path for the processes
        // that open it by name.
        const std::string path = section ? DescriptorPath(section->fd) : std::string();
        if (path.size() >= sizeof MappingInfo::path) {
            SetErrorCode(ERROR_FILENAME_EXCED_RANGE);
            return nullptr;
        }
        MemoryInit init{section ? section->size : size, writable, section ? &path : nullptr};
        posix::NewObject make;
        make.create = true;
        make.bytes = memory ? size : 0;
        make.init = InitMapping;
        make.context = &init;
        auto object = posix::OpenNamedObject(name, posix::ObjectKind::Mapping, make, existed);
        if (!object) {
            return nullptr;
        }
        section = existed || memory ? SectionOf(std::move(object)) : section;
        if (!section) {
            return nullptr;
        }
        if (!existed && !memory) {
            section->named = std::move(object);
        }
    } else if (memory) {
        section = MemorySection(size, writable);
        if (!section) {
            return nullptr;
        }
    }
    HANDLE handle =
        posix::RegisterHandle(new SectionHandle(section, HandleAccess(section->writable)));
    SetErrorCode(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

HANDLE OpenFileMappingA(DWORD access, BOOL /*inherit*/, LPCSTR name) {
    if (name == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    bool existed = false;
    auto object = posix::OpenNamedObject(name, posix::ObjectKind::Mapping, {}, existed);
    if (!object) {
        return nullptr;
    }
    // The rights asked are checked against the object's security only, which
    // gives its user every right; a read-only section refuses writable views.
    access &= FILE_MAP_READ | FILE_MAP_WRITE;
    if (access == 0) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    auto section = SectionOf(std::move(object));
    if (!section) {
        return nullptr;
    }
    return posix::RegisterHandle(new SectionHandle(std::move(section), access));
}

LPVOID MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow,
                     SIZE_T bytes) {
    auto* handle = posix::HandleAs<SectionHandle>(mapping);
    if (handle == nullptr) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    const bool write = (access & FILE_MAP_WRITE) != 0;
    const bool read = (access & (FILE_MAP_READ | FILE_MAP_COPY)) != 0;
    if ((!write && !read) || (write && (handle->access() & FILE_MAP_WRITE) == 0) ||
        (read && !write && (handle->access() & FILE_MAP_READ) == 0)) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    const std::shared_ptr<Section>& section = handle->section();
    if (write && !section->writable) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    const auto offset = (static_cast<ULONGLONG>(offsetHigh) << 32) | offsetLow;
    if (offset % kAllocationGranularity != 0) {
        SetErrorCode(ERROR_MAPPED_ALIGNMENT);
        return nullptr;
    }
    if (offset >= section->size || bytes > section->size - offset) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    const SIZE_T length = bytes != 0 ? bytes : static_cast<SIZE_T>(section->size - offset);
    void* view = mmap(nullptr, length, write ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED,
                      section->fd, static_cast<off_t>(section->base + offset));
    if (view == MAP_FAILED) {
        SetErrorCode(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    Views& views = AllViews();
    std::lock_guard guard(views.lock);
    views.live.emplace(reinterpret_cast<std::uintptr_t>(view), View{length, section->file});
    return view;
}

BOOL UnmapViewOfFile(LPCVOID address) {
    Views& views = AllViews();
    std::lock_guard guard(views.lock);
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    auto it = views.live.upper_bound(at);
    // Any address inside a view designates it.
    if (it == views.live.begin() || at >= std::prev(it)->first + std::prev(it)->second.length) {
        SetErrorCode(ERROR_INVALID_ADDRESS);
        return FALSE;
    }
    --it;
    munmap(reinterpret_cast<void*>(it->first), it->second.length);
    views.live.erase(it);
    return TRUE;
}

}  // namespace nvk::os
