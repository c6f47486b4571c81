#include "os/api/sync.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

#include "os/api/error.h"
#include "os/posix/handle.h"
#include "os/posix/named_objects.h"

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace nvk::os {

namespace {

using posix::SetErrorCode;

// ---- Critical sections ------------------------------------------------------

static_assert(sizeof(std::recursive_mutex) <= sizeof(CRITICAL_SECTION::opaque));
static_assert(alignof(std::recursive_mutex) <= alignof(CRITICAL_SECTION));

std::recursive_mutex& MutexOf(LPCRITICAL_SECTION section) {
    return *std::launder(reinterpret_cast<std::recursive_mutex*>(section->opaque));
}

// ---- Mutexes ----------------------------------------------------------------

// A robust, recursive, process-shared mutex: when its owning thread or
// process ends, the kernel hands it to the next waiter, which learns that it
// was abandoned. The owner fields are the owner's own; other threads only
// read them.
struct MutexBlock {
    pthread_mutex_t mutex;
    std::atomic<pid_t> ownerThread;
    std::atomic<pid_t> ownerProcess;
    DWORD depth;
};
static_assert(sizeof(MutexBlock) <= sizeof(posix::ObjectHeader::body));

void InitMutex(MutexBlock& block) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&block.mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    block.ownerThread = 0;
    block.ownerProcess = 0;
    block.depth = 0;
}

DWORD Acquire(MutexBlock& block, DWORD milliseconds) {
    int result = pthread_mutex_trylock(&block.mutex);
    [[maybe_unused]] bool timed = false;
    if (result != EBUSY || milliseconds == 0) {
        // taken, found abandoned, or not to wait for
    } else if (milliseconds == INFINITE) {
        result = pthread_mutex_lock(&block.mutex);
    } else {
        timed = true;
        timespec deadline;
        clock_gettime(CLOCK_REALTIME, &deadline);
        deadline.tv_sec += static_cast<time_t>(milliseconds / 1000);
        deadline.tv_nsec += static_cast<long>(milliseconds % 1000) * 1000000L;
        if (deadline.tv_nsec >= 1000000000L) {
            deadline.tv_sec += 1;
            deadline.tv_nsec -= 1000000000L;
        }
        result = pthread_mutex_timedlock(&block.mutex, &deadline);
    }
    DWORD outcome = WAIT_OBJECT_0;
    if (result == EOWNERDEAD) {
#if defined(__SANITIZE_THREAD__)
        // The thread sanitizer takes a timed lock that finds its owner dead
        // for a failed one; tell it the mutex is held.
        if (timed) {
            __tsan_mutex_pre_lock(&block.mutex, __tsan_mutex_try_lock);
            __tsan_mutex_post_lock(&block.mutex, __tsan_mutex_try_lock, 0);
        }
#endif
        pthread_mutex_consistent(&block.mutex);
        block.depth = 0;  // the dead owner's holds went with it
        outcome = WAIT_ABANDONED;
    } else if (result == EBUSY || result == ETIMEDOUT) {
        return WAIT_TIMEOUT;
    } else if (result != 0) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    block.ownerThread = static_cast<pid_t>(GetCurrentThreadId());
    block.ownerProcess = getpid();
    ++block.depth;
    return outcome;
}

bool Release(MutexBlock& block) {
    if (block.ownerThread != static_cast<pid_t>(GetCurrentThreadId())) {
        return false;
    }
    if (--block.depth == 0) {
        block.ownerThread = 0;
        block.ownerProcess = 0;
    }
    pthread_mutex_unlock(&block.mutex);
    return true;
}

bool OwnedHere(const MutexBlock& block) {
    return block.ownerProcess == getpid();
}

class MutexHandle : public posix::KernelObject {
public:
    // A named mutex, in the header of its shared memory.
    MutexHandle(std::shared_ptr<posix::NamedObject> named, DWORD access)
        : named_(std::move(named)),
          block_(reinterpret_cast<MutexBlock*>(named_->header().body)),
          access_(access) {}
    // An unnamed one, this handle's own.
    MutexHandle() : block_(new MutexBlock), access_(MUTEX_ALL_ACCESS) { InitMutex(*block_); }

    bool Close() override {
        // A mutex still held here stays where its owner's thread lists it.
        const bool keep = OwnedHere(*block_);
        if (named_ && keep) {
            named_->KeepHeaderMapped();
        } else if (!named_ && !keep) {
            pthread_mutex_destroy(&block_->mutex);
            delete block_;
        }
        return true;
    }
    DWORD Wait(DWORD milliseconds) override {
        if ((access_ & SYNCHRONIZE) == 0) {
            SetErrorCode(ERROR_ACCESS_DENIED);
            return WAIT_FAILED;
        }
        return Acquire(*block_, milliseconds);
    }
    DWORD access() const { return access_; }
    MutexBlock& block() { return *block_; }

private:
    std::shared_ptr<posix::NamedObject> named_;
    MutexBlock* block_;
    DWORD access_;
};

void InitNamedMutex(posix::ObjectHeader& header, void* /*context*/) {
    InitMutex(*reinterpret_cast<MutexBlock*>(header.body));
}

}  // namespace

void InitializeCriticalSection(LPCRITICAL_SECTION section) {
    new (section->opaque) std::recursive_mutex;
}

BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION section, DWORD /*spinCount*/) {
    InitializeCriticalSection(section);
    return TRUE;
}

void EnterCriticalSection(LPCRITICAL_SECTION section) {
    MutexOf(section).lock();
}

BOOL TryEnterCriticalSection(LPCRITICAL_SECTION section) {
    return MutexOf(section).try_lock() ? TRUE : FALSE;
}

void LeaveCriticalSection(LPCRITICAL_SECTION section) {
    MutexOf(section).unlock();
}

void DeleteCriticalSection(LPCRITICAL_SECTION section) {
    MutexOf(section).~recursive_mutex();
    std::memset(section->opaque, 0, sizeof section->opaque);
}

HANDLE CreateMutexA(LPSECURITY_ATTRIBUTES /*attributes*/, BOOL initialOwner, LPCSTR name) {
    MutexHandle* handle = nullptr;
    bool existed = false;
    if (name == nullptr || *name == '\0') {
        handle = new MutexHandle;
    } else {
        posix::NewObject make;
        make.create = true;
        make.init = InitNamedMutex;
        auto named = posix::OpenNamedObject(name, posix::ObjectKind::Mutex, make, existed);
        if (!named) {
            return nullptr;
        }
        handle = new MutexHandle(std::move(named), MUTEX_ALL_ACCESS);
    }
    if (initialOwner && !existed) {
        Acquire(handle->block(), INFINITE);
    }
    HANDLE result = posix::RegisterHandle(handle);
    SetErrorCode(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return result;
}

HANDLE OpenMutexA(DWORD access, BOOL /*inherit*/, LPCSTR name) {
    if (name == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if ((access & MUTEX_ALL_ACCESS) == 0) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    bool existed = false;
    auto named = posix::OpenNamedObject(name, posix::ObjectKind::Mutex, {}, existed);
    if (!named) {
        return nullptr;
    }
    return posix::RegisterHandle(new MutexHandle(std::move(named), access));
}

BOOL ReleaseMutex(HANDLE mutex) {
    auto* handle = posix::HandleAs<MutexHandle>(mutex);
    if (handle == nullptr) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if ((handle->access() & MUTEX_MODIFY_STATE) == 0) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (!Release(handle->block())) {
        SetErrorCode(ERROR_NOT_OWNER);
        return FALSE;
    }
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    posix::KernelObject* object = posix::LookupHandle(handle);
    if (object == nullptr) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    return object->Wait(milliseconds);
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

DWORD GetCurrentThreadId() {
    static thread_local const DWORD id = static_cast<DWORD>(syscall(SYS_gettid));
    return id;
}

void Sleep(DWORD milliseconds) {
    // Sleep(0) gives the rest of the time slice to a thread that is ready,
    // as callers that wait for another thread with it expect.
    if (milliseconds == 0) {
        std::this_thread::yield();
        return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

ULONGLONG GetTickCount64() {
    using namespace std::chrono;
    return static_cast<ULONGLONG>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

DWORD GetTickCount() {
    return static_cast<DWORD>(GetTickCount64());
}

}  // namespace nvk::os
