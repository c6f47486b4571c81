// VirtualAlloc over mmap. Reserved pages are PROT_NONE; committing makes them
// readable and writable (fresh pages read as zeros), decommitting drops their
// contents. Regions are remembered so that MEM_RELEASE can take the base alone.
#include "os/api/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <map>
#include <mutex>

#include "os/posix/handle.h"

namespace nvk::os {

namespace {

struct Regions {
    std::mutex lock;
    std::map<std::uintptr_t, SIZE_T> sizes;  // base -> size of each reservation
};

Regions& AllRegions() {
    static auto* regions = new Regions;
    return *regions;
}

SIZE_T PageSize() {
    static const SIZE_T size = static_cast<SIZE_T>(sysconf(_SC_PAGESIZE));
    return size;
}

int Protection(DWORD protect) {
    switch (protect) {
        case PAGE_NOACCESS:
            return PROT_NONE;
        case PAGE_READONLY:
            return PROT_READ;
        default:
            return PROT_READ | PROT_WRITE;
    }
}

// The reservation that holds [address, address + size), or sizes.end().
std::map<std::uintptr_t, SIZE_T>::iterator FindRegion(Regions& regions, std::uintptr_t address,
                                                      SIZE_T size) {
    auto it = regions.sizes.upper_bound(address);
    if (it == regions.sizes.begin()) {
        return regions.sizes.end();
    }
    --it;
    if (address + size > it->first + it->second) {
        return regions.sizes.end();
    }
    return it;
}

}  // namespace

LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD allocationType, DWORD protect) {
    const DWORD kind = allocationType & (MEM_COMMIT | MEM_RESERVE);
    if (size == 0 || kind == 0) {
        posix::SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const SIZE_T page = PageSize();
    Regions& regions = AllRegions();
    std::lock_guard guard(regions.lock);

    if (address == nullptr || (kind & MEM_RESERVE) != 0) {
        const SIZE_T length = (size + page - 1) / page * page;
        const int prot = (kind & MEM_COMMIT) != 0 ? Protection(protect) : PROT_NONE;
        void* base =
            mmap(address, length, prot, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (base == MAP_FAILED) {
            posix::SetErrorCode(ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
        }
        if (address != nullptr && base != address) {
            munmap(base, length);
            posix::SetErrorCode(ERROR_INVALID_ADDRESS);
            return nullptr;
        }
        regions.sizes[reinterpret_cast<std::uintptr_t>(base)] = length;
        return base;
    }

    // Commit inside an existing reservation.
    const auto start = reinterpret_cast<std::uintptr_t>(address) / page * page;
    const auto end = (reinterpret_cast<std::uintptr_t>(address) + size + page - 1) / page * page;
    if (FindRegion(regions, start, end - start) == regions.sizes.end()) {
        posix::SetErrorCode(ERROR_INVALID_ADDRESS);
        return nullptr;
    }
    if (mprotect(reinterpret_cast<void*>(start), end - start, Protection(protect)) != 0) {
        posix::SetErrorFromErrno(errno);
        return nullptr;
    }
    return address;
}

BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD freeType) {
    Regions& regions = AllRegions();
    std::lock_guard guard(regions.lock);
    const auto base = reinterpret_cast<std::uintptr_t>(address);

    if (freeType == MEM_RELEASE) {
        auto it = regions.sizes.find(base);
        if (size != 0 || it == regions.sizes.end()) {
            posix::SetErrorCode(size != 0 ? ERROR_INVALID_PARAMETER : ERROR_INVALID_ADDRESS);
            return FALSE;
        }
        munmap(address, it->second);
        regions.sizes.erase(it);
        return TRUE;
    }
    if (freeType == MEM_DECOMMIT) {
        const SIZE_T page = PageSize();
        const auto start = base / page * page;
        auto it = FindRegion(regions, start, size);
        if (it == regions.sizes.end()) {
            posix::SetErrorCode(ERROR_INVALID_ADDRESS);
            return FALSE;
        }
        // Size 0 decommits the whole reservation from its base.
        const auto end =
            size == 0 ? it->first + it->second : (base + size + page - 1) / page * page;
        madvise(reinterpret_cast<void*>(start), end - start, MADV_DONTNEED);
        mprotect(reinterpret_cast<void*>(start), end - start, PROT_NONE);
        return TRUE;
    }
    posix::SetErrorCode(ERROR_INVALID_PARAMETER);
    return FALSE;
}

}  // namespace nvk::os
