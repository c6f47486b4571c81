// Named kernel objects, shared by every process of the user as Windows shares
// them within a session. Each named object is a POSIX shared-memory object
// "/nvk-<uid>-<name>", mode 0600, whose first page is an ObjectHeader. Every
// process that holds a handle of it holds a shared flock on it, so a name
// whose holders have all closed it, or died, is recognised and removed; a
// per-user lock object serialises making, opening and dropping names.
// Mutexes and mappings share the one table of names, as on Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace nvk::os::posix {

enum class ObjectKind : std::uint32_t { Mutex = 1, Mapping = 2 };

// The first page of a named object's shared memory; the kind's own data
// follows in `body`, and a memory mapping's bytes start at the next page.
struct ObjectHeader {
    std::uint32_t magic;
    ObjectKind kind;
    std::uint64_t size;  // a mapping's size in bytes
    alignas(64) unsigned char body[3584];
};

// The bytes before a memory mapping's own bytes in its shared memory.
std::size_t ObjectHeaderSize();

// This process's share of one named object: the descriptor and a mapping of
// the header. The last handle of the process drops it; the name goes with
// the last holder of all processes.
class NamedObject {
public:
    NamedObject(std::string name, int fd, ObjectHeader* header)
        : name_(std::move(name)), fd_(fd), header_(header) {}
    ~NamedObject();
    NamedObject(const NamedObject&) = delete;
    NamedObject& operator=(const NamedObject&) = delete;

    int fd() const { return fd_; }
    ObjectHeader& header() const { return *header_; }
    // A robust mutex still owned by a live thread here is on that thread's
    // list of held mutexes: its page must stay mapped until the thread ends.
    void KeepHeaderMapped() { keepMapped_ = true; }

private:
    std::string name_;  // of the shared memory
    int fd_;
    ObjectHeader* header_;
    bool keepMapped_ = false;
};

// How OpenNamedObject treats a name that does not exist.
struct NewObject {
    bool create = false;      // false: fail with ERROR_FILE_NOT_FOUND
    std::uint64_t bytes = 0;  // the shared memory's size past the header
    void (*init)(ObjectHeader&, void* context) = nullptr;
    void* context = nullptr;
};

// The object of `name` (after the "Local\" namespace is taken off) of kind
// `kind`. `existed` tells whether it was there. On failure null, with the
// error set: ERROR_PATH_NOT_FOUND for a name with a backslash,
// ERROR_INVALID_HANDLE for an object of the other kind, ERROR_FILE_NOT_FOUND,
// ERROR_ACCESS_DENIED for an object that another user made.
std::shared_ptr<NamedObject> OpenNamedObject(const char* name, ObjectKind kind,
                                             const NewObject& make, bool& existed);

}  // namespace nvk::os::posix
