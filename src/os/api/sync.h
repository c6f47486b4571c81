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

// Named objects live for the process: every module that names the same object
// gets a handle of the one object, which ends with its last handle. A second
// create of an existing name succeeds with ERROR_ALREADY_EXISTS.
HANDLE CreateMutexA(LPSECURITY_ATTRIBUTES attributes, BOOL initialOwner, LPCSTR name);
HANDLE OpenMutexA(DWORD access, BOOL inherit, LPCSTR name);
BOOL ReleaseMutex(HANDLE mutex);
DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds);

// Sections backed by the page file only (file = INVALID_HANDLE_VALUE).
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
