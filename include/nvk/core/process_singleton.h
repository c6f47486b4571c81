// One object per process across every module copy of the framework, found by
// key. The table of keys lives in a named section whose name carries a version
// number and the process id, so that all copies built with the same version
// find it and no other process sees it; a named mutex of the same scheme
// serialises every access to it.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>

#include "nvk/os/types.h"

// One record per key and process.
struct SingletonRecord {
    char* Name;             // private copy of the key
    std::int32_t RefCount;  // handles that hold this key
    void* Object;           // the shared object; null until its first holder made it
};

// The bytes of the named section: a counted array of record slots.
struct SingletonSection {
    std::uint32_t TotalRefs;  // live handles in the process, over all keys
    std::uint32_t SlotCount;
    SingletonRecord** Slots;  // null while SlotCount is 0; a null slot is free
};
static_assert(offsetof(SingletonSection, TotalRefs) == 0);
static_assert(offsetof(SingletonSection, SlotCount) == 4);
static_assert(offsetof(SingletonSection, Slots) == 8);

class EProcessSingleton {
public:
    // The version number in the names of the section and the mutex.
    static constexpr int kVersion = 1006;

    // Registers a handle of `key`; never makes the object.
    explicit EProcessSingleton(const char* key);
    // Unregisters the handle; never destroys the object.
    ~EProcessSingleton();
    EProcessSingleton(const EProcessSingleton&) = delete;
    EProcessSingleton& operator=(const EProcessSingleton&) = delete;

    // Takes the process mutex, recursive for its thread, with no time-out. The
    // result is the token for Unlock; null once the module has closed it.
    static nvk::os::HANDLE Lock();
    static void Unlock(nvk::os::HANDLE token);

    SingletonRecord* Record() const { return m_Record; }

private:
    nvk::os::HANDLE m_Mapping;
    SingletonRecord* m_Record;
};

// Holds the process mutex for a scope.
class ProcessLock {
public:
    ProcessLock() : m_Token(EProcessSingleton::Lock()) {}
    ~ProcessLock() { EProcessSingleton::Unlock(m_Token); }
    ProcessLock(const ProcessLock&) = delete;
    ProcessLock& operator=(const ProcessLock&) = delete;

private:
    nvk::os::HANDLE m_Token;
};

namespace nvk {

// Serialises the first Get of each of this module's singletons.
std::recursive_mutex& ModuleStartLock();

// The typed accessor of one singleton. `Kind` gives the key and the two steps
// of its table row:
//   struct Kind { using Object = ...; static constexpr const char* Key = "...";
//                 static Object* Make(); static void Destroy(Object*); };
// The statics are per module (the frame has hidden visibility), as each module
// keeps its own handle. Once the object is made, a holder's handle keeps it
// alive, so the accessor returns the pointer it read without taking the
// process mutex again.
template <class Kind>
class ProcessSingleton {
public:
    using Object = typename Kind::Object;

    static Object* Get() {
        if (Object* object = Made()) {
            return object;
        }
        return Construct();
    }
    // The object once this module has made or found it, null before: for a
    // fast path that leaves the first call to its slow path.
    static Object* Made() { return s_Object.load(std::memory_order_acquire); }

private:
    // Apart, so that Get's test stays a few instructions.
    [[gnu::noinline]] static Object* Construct() {
        std::lock_guard start(ModuleStartLock());
        if (s_Object.load(std::memory_order_relaxed) == nullptr) {
            // A failed construction leaves the pointer null, so the next call
            // registers anew; the handle stays registered, as it was.
            auto* handle = new (s_Handle) EProcessSingleton(Kind::Key);
            Object* object;
            {
                ProcessLock lock;
                SingletonRecord* record = handle->Record();
                if (record->Object == nullptr) {
                    record->Object = Kind::Make();
                }
                object = static_cast<Object*>(record->Object);
            }
            // The typed release, among the module's exit functions.
            static const Releaser releaser;
            s_Object.store(object, std::memory_order_release);
        }
        return s_Object.load(std::memory_order_relaxed);
    }

    struct Releaser {
        ~Releaser() { Release(); }
    };

    // The last holder in the process destroys the object, with its own code.
    static void Release() {
        auto* handle = std::launder(reinterpret_cast<EProcessSingleton*>(s_Handle));
        struct Unregister {
            EProcessSingleton* handle;
            ~Unregister() { handle->~EProcessSingleton(); }
        } unregister{handle};
        {
            ProcessLock lock;
            SingletonRecord* record = handle->Record();
            if (record != nullptr && record->RefCount == 1 && record->Object != nullptr) {
                auto* object = static_cast<Object*>(record->Object);
                record->Object = nullptr;
                Kind::Destroy(object);
            }
        }
    }

    alignas(EProcessSingleton) static inline unsigned char s_Handle[sizeof(EProcessSingleton)];
    // Set once the handle is registered and its release is due: the guard of
    // Get as well as its answer.
    static inline std::atomic<Object*> s_Object{nullptr};
};

}  // namespace nvk
