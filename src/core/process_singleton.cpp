#include "nvk/core/process_singleton.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "nvk/afx/exceptions.h"
#include "os/api/sync.h"

namespace {

using namespace nvk::os;

// This module's handle of the process mutex, opened at first need and closed
// by the earliest of the module's exit functions, so that it goes last.
unsigned g_LockGuard = 0;
HANDLE g_ProcessMutex = nullptr;

void FormatName(char* name, std::size_t size, const char* kind) {
    std::snprintf(name, size, "NVK_EProcessSingleton_%s_%d_%x", kind, EProcessSingleton::kVersion,
                  static_cast<unsigned>(GetCurrentProcessId()));
}

void CloseProcessLock() {
    // Taken so that no thread of this module is inside it, then given back
    // before the handle goes: a mutex closed while held stays owned by this
    // thread, and every other module of the process would wait for it for
    // ever at its next allocation. From here on this module locks nothing.
    WaitForSingleObject(g_ProcessMutex, INFINITE);
    HANDLE mutex = g_ProcessMutex;
    g_ProcessMutex = nullptr;
    ReleaseMutex(mutex);
    CloseHandle(mutex);
}

void OpenProcessLock() {
    char name[64];
    FormatName(name, sizeof name, "Mutex");
    HANDLE mutex = CreateMutexA(nullptr, FALSE, name);
    if (mutex == nullptr) {
        AfxThrowNotSupportedException();
    }
    g_ProcessMutex = mutex;
    // The earliest of the module's exit functions, so it runs last. Exit
    // functions are registered as static destructors: those belong to the
    // module and run when it is unloaded, as DllMain's detach would.
    static const struct Closer {
        ~Closer() { CloseProcessLock(); }
    } closer;
}

HANDLE OpenSection() {
    char name[64];
    FormatName(name, sizeof name, "Mapping");
    return CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE | SEC_COMMIT, 0,
                              sizeof(SingletonSection), name);
}

// A view of the section for the length of one operation.
class SectionView {
public:
    explicit SectionView(HANDLE mapping)
        : m_Section(static_cast<SingletonSection*>(
              MapViewOfFile(mapping, FILE_MAP_WRITE, 0, 0, sizeof(SingletonSection)))) {}
    ~SectionView() { UnmapViewOfFile(m_Section); }
    SectionView(const SectionView&) = delete;
    SectionView& operator=(const SectionView&) = delete;
    SingletonSection* operator->() const { return m_Section; }

private:
    SingletonSection* m_Section;
};

char* CopyKey(const char* key) {
    const std::size_t size = std::strlen(key) + 1;
    auto* copy = static_cast<char*>(std::malloc(size));
    if (copy != nullptr) {
        std::memcpy(copy, key, size);
    }
    return copy;
}

}  // namespace

namespace nvk {

// Trivially destructible here, so it stays usable through the module's
// tear-down and needs no release when the module is unloaded.
static_assert(std::is_trivially_destructible_v<std::recursive_mutex>);

std::recursive_mutex& ModuleStartLock() {
    static std::recursive_mutex lock;
    return lock;
}

}  // namespace nvk

HANDLE EProcessSingleton::Lock() {
    if ((g_LockGuard & 1u) == 0) {
        std::lock_guard start(nvk::ModuleStartLock());
        if ((g_LockGuard & 1u) == 0) {
            OpenProcessLock();  // throws with the guard still clear
            g_LockGuard |= 1u;
        }
    }
    if (g_ProcessMutex == nullptr) {
        return nullptr;
    }
    WaitForSingleObject(g_ProcessMutex, INFINITE);
    return g_ProcessMutex;
}

void EProcessSingleton::Unlock(HANDLE token) {
    if (token != nullptr) {
        ReleaseMutex(token);
    }
}

EProcessSingleton::EProcessSingleton(const char* key) : m_Mapping(nullptr), m_Record(nullptr) {
    ProcessLock lock;
    m_Mapping = OpenSection();
    SectionView section(m_Mapping);
    section->TotalRefs++;

    std::uint32_t freeSlot = section->SlotCount;
    for (std::uint32_t i = 0; i < section->SlotCount; ++i) {
        SingletonRecord* record = section->Slots[i];
        if (record == nullptr) {
            freeSlot = std::min(freeSlot, i);
        } else if (std::strcmp(record->Name, key) == 0) {
            record->RefCount++;
            m_Record = record;
            return;
        }
    }

    if (freeSlot == section->SlotCount) {
        // The table grows by exactly one slot.
        auto** slots = new SingletonRecord*[section->SlotCount + 1];
        std::copy(section->Slots, section->Slots + section->SlotCount, slots);
        delete[] section->Slots;
        section->Slots = slots;
        section->SlotCount++;
    }
    auto* record = new (std::nothrow) SingletonRecord{CopyKey(key), 1, nullptr};
    section->Slots[freeSlot] = record;
    m_Record = record;
}

EProcessSingleton::~EProcessSingleton() {
    ProcessLock lock;
    {
        SectionView section(m_Mapping);
        section->TotalRefs--;
        if (m_Record != nullptr && --m_Record->RefCount == 0) {
            std::free(m_Record->Name);
            delete m_Record;
            if (section->TotalRefs != 0) {
                std::replace(section->Slots, section->Slots + section->SlotCount, m_Record,
                             static_cast<SingletonRecord*>(nullptr));
            }
        }
        if (section->TotalRefs == 0) {
            delete[] section->Slots;
            section->Slots = nullptr;
            section->SlotCount = 0;
        }
    }
    CloseHandle(m_Mapping);
}
