#include "os/api/sync.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "os/api/error.h"
#include "os/posix/handle.h"
#include "os/posix/named_objects.h"

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

// A mutex that its owning thread may take again; owned by a thread, not a
// scope, as a kernel mutex is.
struct MutexState {
    std::mutex lock;
    std::condition_variable released;
    DWORD owner = 0;
    DWORD count = 0;

    DWORD Acquire(DWORD milliseconds) {
        const DWORD self = GetCurrentThreadId();
        std::unique_lock guard(lock);
        if (owner != self) {
            auto isFree = [this] { return owner == 0; };
            if (milliseconds == INFINITE) {
                released.wait(guard, isFree);
            } else if (!released.wait_for(guard, std::chrono::milliseconds(milliseconds), isFree)) {
                return WAIT_TIMEOUT;
            }
            owner = self;
        }
        ++count;
        return WAIT_OBJECT_0;
    }

    bool Release() {
        std::lock_guard guard(lock);
        if (owner != GetCurrentThreadId()) {
            return false;
        }
        if (--count == 0) {
            owner = 0;
            released.notify_one();
        }
        return true;
    }
};

class MutexHandle : public posix::KernelObject {
public:
    explicit MutexHandle(std::shared_ptr<MutexState> state) : state_(std::move(state)) {}
    DWORD Wait(DWORD milliseconds) override { return state_->Acquire(milliseconds); }
    MutexState& State() { return *state_; }

private:
    std::shared_ptr<MutexState> state_;
};

posix::NamedObjects<MutexState>& Mutexes() {
    static auto* table = new posix::NamedObjects<MutexState>;
    return *table;
}

// ---- Sections ---------------------------------------------------------------

struct SectionState {
    std::vector<unsigned char> bytes;
};

class SectionHandle : public posix::KernelObject {
public:
    explicit SectionHandle(std::shared_ptr<SectionState> state) : state_(std::move(state)) {}
    const std::shared_ptr<SectionState>& State() const { return state_; }

private:
    std::shared_ptr<SectionState> state_;
};

posix::NamedObjects<SectionState>& Sections() {
    static auto* table = new posix::NamedObjects<SectionState>;
    return *table;
}

// Mapped views keep their section alive until they are unmapped.
struct Views {
    std::mutex lock;
    std::multimap<LPCVOID, std::shared_ptr<SectionState>> live;
};

Views& AllViews() {
    static auto* views = new Views;
    return *views;
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
    bool existed = false;
    auto state = Mutexes().CreateOrOpen(
        name, [] { return std::make_shared<MutexState>(); }, existed);
    if (initialOwner && !existed) {
        state->Acquire(INFINITE);
    }
    HANDLE handle = posix::RegisterHandle(new MutexHandle(std::move(state)));
    SetErrorCode(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

HANDLE OpenMutexA(DWORD /*access*/, BOOL /*inherit*/, LPCSTR name) {
    auto state = Mutexes().Open(name);
    if (!state) {
        SetErrorCode(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    return posix::RegisterHandle(new MutexHandle(std::move(state)));
}

BOOL ReleaseMutex(HANDLE mutex) {
    auto* handle = posix::HandleAs<MutexHandle>(mutex);
    if (handle == nullptr) {
        return FALSE;
    }
    if (!handle->State().Release()) {
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

HANDLE CreateFileMappingA(HANDLE file, LPSECURITY_ATTRIBUTES /*attributes*/, DWORD /*protect*/,
                          DWORD maximumSizeHigh, DWORD maximumSizeLow, LPCSTR name) {
    if (file != INVALID_HANDLE_VALUE) {
        SetErrorCode(ERROR_NOT_SUPPORTED);  // only sections backed by memory
        return nullptr;
    }
    const auto size = (static_cast<ULONGLONG>(maximumSizeHigh) << 32) | maximumSizeLow;
    if (size == 0) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    bool existed = false;
    auto state = Sections().CreateOrOpen(
        name,
        [size] {
            auto made = std::make_shared<SectionState>();
            made->bytes.assign(size, 0);
            return made;
        },
        existed);
    HANDLE handle = posix::RegisterHandle(new SectionHandle(std::move(state)));
    SetErrorCode(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

HANDLE OpenFileMappingA(DWORD /*access*/, BOOL /*inherit*/, LPCSTR name) {
    auto state = Sections().Open(name);
    if (!state) {
        SetErrorCode(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    return posix::RegisterHandle(new SectionHandle(std::move(state)));
}

LPVOID MapViewOfFile(HANDLE mapping, DWORD /*access*/, DWORD offsetHigh, DWORD offsetLow,
                     SIZE_T bytes) {
    auto* handle = posix::HandleAs<SectionHandle>(mapping);
    if (handle == nullptr) {
        return nullptr;
    }
    const auto& state = handle->State();
    const auto offset = (static_cast<ULONGLONG>(offsetHigh) << 32) | offsetLow;
    if (offset > state->bytes.size() || bytes > state->bytes.size() - offset) {
        SetErrorCode(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    LPVOID view = state->bytes.data() + offset;
    Views& views = AllViews();
    std::lock_guard guard(views.lock);
    views.live.emplace(view, state);
    return view;
}

BOOL UnmapViewOfFile(LPCVOID view) {
    Views& views = AllViews();
    std::shared_ptr<SectionState> last;  // released outside the lock
    std::lock_guard guard(views.lock);
    auto it = views.live.find(view);
    if (it == views.live.end()) {
        SetErrorCode(ERROR_INVALID_ADDRESS);
        return FALSE;
    }
    last = std::move(it->second);
    views.live.erase(it);
    return TRUE;
}

DWORD GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

DWORD GetCurrentThreadId() {
    static thread_local const DWORD id = static_cast<DWORD>(syscall(SYS_gettid));
    return id;
}

void Sleep(DWORD milliseconds) {
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
