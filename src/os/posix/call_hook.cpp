#include "os/api/call_hook.h"

#include <atomic>

#include "os/posix/handle.h"

namespace nvk::os {

namespace {

std::atomic<CallHook> g_hook{nullptr};

}  // namespace

void SetCallHook(CallHook hook) {
    g_hook.store(hook);
}

namespace posix {

void OnCall(const char* call) {
    if (CallHook hook = g_hook.load(std::memory_order_relaxed); hook != nullptr) {
        hook(call);
    }
}

}  // namespace posix
}  // namespace nvk::os
