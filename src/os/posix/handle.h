// Kernel objects of the POSIX backend. A HANDLE is a number that the handle
// table maps to its KernelObject, never given twice in a process; a handle the
// table does not know is refused with ERROR_INVALID_HANDLE.
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
    // The file descriptor behind the handle, or -1.
    virtual int Descriptor() const { return -1; }
    // WaitForSingleObject on the handle; objects that can't be waited on fail.
    virtual DWORD Wait(DWORD /*milliseconds*/) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
};

// Called on entry of the calls that change files, with the call's name; runs
// the hook that SetCallHook installed, if any.
void OnCall(const char* call);

// The file descriptor behind a handle (a file's, for the calls of the backend
// that work on the open file rather than on whatever has its name); -1 with
// ERROR_INVALID_HANDLE set for a handle that has none.
int DescriptorOf(HANDLE handle);
// The same for a file's handle, with what the handle may do: reading, and
// writing through a descriptor that was opened for it (CreateFileMappingA).
int DescriptorOf(HANDLE file, bool& canRead, bool& canWrite);

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
