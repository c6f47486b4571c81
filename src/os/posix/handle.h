// Kernel objects of the POSIX backend. A HANDLE is the address of a
// KernelObject that the handle table knows; a handle the table does not know
// is refused with ERROR_INVALID_HANDLE instead of being followed.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os::posix {

void SetErrorCode(DWORD code);
// Sets the Win32 code for an errno value.
void SetErrorFromErrno(int error);
DWORD ErrorFromErrno(int error);

class KernelObject {
public:
    virtual ~KernelObject() = default;
    // The close of the handle; false keeps the object (and the error set).
    virtual bool Close() { return true; }
    // WaitForSingleObject on the handle; objects that can't be waited on fail.
    virtual DWORD Wait(DWORD /*milliseconds*/) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    // A file's descriptor for CreateFileMappingA, with the handle's rights;
    // -1 for objects that are not files.
    virtual int MappingDescriptor(bool& /*canRead*/, bool& /*canWrite*/) { return -1; }
};

// Enters the object in the table and returns its handle.
HANDLE RegisterHandle(KernelObject* object);

// The object of a handle if it is of type T, else null with
// ERROR_INVALID_HANDLE set.
KernelObject* LookupHandle(HANDLE handle);
template <class T>
T* HandleAs(HANDLE handle) {
    T* object = dynamic_cast<T*>(LookupHandle(handle));
    if (object == nullptr && handle != nullptr) {
        SetErrorCode(ERROR_INVALID_HANDLE);
    }
    return object;
}

}  // namespace nvk::os::posix
