// Interlocked counts, critical sections, named mutexes and sections, waits,
// process and thread identity, and the clock.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// Interlocked counts are processor instructions, not system calls: inline, so
// that sharing a string costs one locked instruction.
inline LONG InterlockedIncrement(volatile LONG* value) {
    return __atomic_add_fetch(const_cast<LONG*>(value), 1, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedDecrement(volatile LONG* value) {
    return __atomic_sub_fetch(const_cast<LONG*>(value), 1, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedExchange(volatile LONG* target, LONG value) {
    return __atomic_exchange_n(const_cast<LONG*>(target), value, __ATOMIC_SEQ_CST);
}
inline LONG InterlockedCompareExchange(volatile LONG* target, LONG exchange, LONG comparand) {
    __atomic_compare_exchange_n(const_cast<LONG*>(target), &comparand, exchange, false,
                                __ATOMIC_SEQ_CST, __ATOMIC_SEQ_CST);
    return comparand;
}
inline LONG InterlockedExchangeAdd(volatile LONG* target, LONG value) {
    return __atomic_fetch_add(const_cast<LONG*>(target), value, __ATOMIC_SEQ_CST);
}

// Critical sections are recursive for their owning thread.
void InitializeCriticalSection(LPCRITICAL_SECTION section);
BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION section, DWORD spinCount);
void EnterCriticalSection(LPCRITICAL_SECTION section);
BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section);
void LeaveCriticalSection(LPCRITICAL_SECTION section);
void DeleteCriticalSection(LPCRITICAL_SECTION section);

// Named mutexes and mappings are the user's, shared by all of the user's
// processes: every module and process that names the same object gets a
// handle of the one object, whose name ends with its last handle. A second
// create of an existing name succeeds with ERROR_ALREADY_EXISTS. "Local\" is
// the default namespace; mutexes and mappings share one table of names.
// A mutex whose owner thread or process ends is abandoned: the next wait
// owns it and returns WAIT_ABANDONED.
HANDLE CreateMutexA(LPSECURITY_ATTRIBUTES attributes, BOOL initialOwner, LPCSTR name);
HANDLE OpenMutexA(DWORD access, BOOL inherit, LPCSTR name);
BOOL ReleaseMutex(HANDLE mutex);
DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);

// Sections of memory (file = INVALID_HANDLE_VALUE), whose size is rounded up
// to whole pages and committed as pages are touched, or of a file, which
// grows to the size asked. Views start at multiples of 64 KiB and need the
// handle's FILE_MAP_READ or FILE_MAP_WRITE; UnmapViewOfFile takes any address
// inside a view.
HANDLE CreateFileMappingA(HANDLE file, LPSECURITY_ATTRIBUTES attributes, DWORD protect,
                          DWORD maximumSizeHigh, DWORD maximumSizeLow, LPCSTR name);
HANDLE OpenFileMappingA(DWORD access, BOOL inherit, LPCSTR name);
LPVOID MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow, SIZE_T bytes);
BOOL UnmapViewOfFile(LPCVOID view);

// Closes a handle of any kind the OS layer hands out.
BOOL CloseHandle(HANDLE handle);

DWORD GetCurrentProcessId();
DWORD GetCurrentThreadId();
void Sleep(DWORD milliseconds);
DWORD GetTickCount();
ULONGLONG GetTickCount64();

}  // namespace nvk::os
