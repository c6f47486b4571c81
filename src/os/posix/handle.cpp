#include "os/posix/handle.h"

#include <cerrno>
#include <cstdint>
#include <mutex>
#include <unordered_map>

#include "os/api/error.h"
#include "os/api/sync.h"

namespace nvk::os {

namespace {

thread_local DWORD t_lastError = ERROR_SUCCESS;

// A handle is a number of its own, never the object's address, and numbers
// are never given twice in a process: a handle kept after its close (by a
// shallow copy of an object that held it) then fails with
// ERROR_INVALID_HANDLE instead of reaching whatever object was made next at
// the same address. Numbers are multiples of 4, as Windows gives them.
struct HandleTable {
    std::mutex lock;
    std::uintptr_t last = 0;
    std::unordered_map<std::uintptr_t, posix::KernelObject*> live;
};

std::uintptr_t NumberOf(HANDLE handle) {
    return reinterpret_cast<std::uintptr_t>(handle);
}

// Never destroyed: handles may be closed by static destructors of any module.
HandleTable& Table() {
    static auto* table = new HandleTable;
    return *table;
}

}  // namespace

DWORD GetLastError() {
    return t_lastError;
}
void SetLastError(DWORD code) {
    t_lastError = code;
}

BOOL CloseHandle(HANDLE handle) {
    posix::OnCall("CloseHandle");
    posix::KernelObject* object = nullptr;
    {
        HandleTable& table = Table();
        std::lock_guard guard(table.lock);
        auto found = table.live.find(NumberOf(handle));
        if (found == table.live.end()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
        object = found->second;
        table.live.erase(found);
    }
    if (!object->Close()) {
        std::lock_guard guard(Table().lock);
        Table().live.emplace(NumberOf(handle), object);
        return FALSE;
    }
    delete object;
    return TRUE;
}

namespace posix {

void SetErrorCode(DWORD code) {
    t_lastError = code;
}

HANDLE RegisterHandle(KernelObject* object) {
    HandleTable& table = Table();
    std::lock_guard guard(table.lock);
    table.last += 4;
    table.live.emplace(table.last, object);
    return reinterpret_cast<HANDLE>(table.last);
}

KernelObject* LookupHandle(HANDLE handle) {
    HandleTable& table = Table();
    std::lock_guard guard(table.lock);
    auto found = table.live.find(NumberOf(handle));
    return found != table.live.end() ? found->second : nullptr;
}

int DescriptorOf(HANDLE handle) {
    const KernelObject* object = LookupHandle(handle);
    const int fd = object != nullptr ? object->Descriptor() : -1;
    if (fd < 0) {
        SetErrorCode(ERROR_INVALID_HANDLE);
    }
    return fd;
}

DWORD ErrorFromErrno(int error) {
    switch (error) {
        case 0:
            return ERROR_SUCCESS;
        case ENOENT:
            return ERROR_FILE_NOT_FOUND;
        case ENOTDIR:
            return ERROR_PATH_NOT_FOUND;
        case EACCES:
        case EPERM:
        case EISDIR:
        case EROFS:
            return ERROR_ACCESS_DENIED;
        case EEXIST:
            return ERROR_FILE_EXISTS;
        case EBADF:
            return ERROR_INVALID_HANDLE;
        case ENOMEM:
            return ERROR_NOT_ENOUGH_MEMORY;
        case EMFILE:
        case ENFILE:
            return ERROR_TOO_MANY_OPEN_FILES;
        case ENOSPC:
            return ERROR_DISK_FULL;
        case EINVAL:
            return ERROR_INVALID_PARAMETER;
        case ENAMETOOLONG:
            return ERROR_FILENAME_EXCED_RANGE;
        case ENOTEMPTY:
            return ERROR_DIR_NOT_EMPTY;
        case EAGAIN:
            return ERROR_LOCK_VIOLATION;
        case EXDEV:
            return ERROR_NOT_SUPPORTED;
        default:
            return ERROR_INVALID_FUNCTION;
    }
}

void SetErrorFromErrno(int error) {
    t_lastError = ErrorFromErrno(error);
}

}  // namespace posix
}  // namespace nvk::os
