#include "os/posix/handle.h"

#include <cerrno>
#include <mutex>
#include <unordered_set>

#include "os/api/error.h"
#include "os/api/sync.h"

namespace nvk::os {

namespace {

thread_local DWORD t_lastError = ERROR_SUCCESS;

struct HandleTable {
    std::mutex lock;
    std::unordered_set<posix::KernelObject*> live;
};

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
    auto* object = static_cast<posix::KernelObject*>(handle);
    {
        HandleTable& table = Table();
        std::lock_guard guard(table.lock);
        if (table.live.erase(object) == 0) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
    }
    if (!object->Close()) {
        std::lock_guard guard(Table().lock);
        Table().live.insert(object);
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
    table.live.insert(object);
    return object;
}

KernelObject* LookupHandle(HANDLE handle) {
    auto* object = static_cast<KernelObject*>(handle);
    HandleTable& table = Table();
    std::lock_guard guard(table.lock);
    return table.live.contains(object) ? object : nullptr;
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
