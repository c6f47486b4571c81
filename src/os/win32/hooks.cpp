// The hooks that let an application (or a test) answer in place of the user:
// the call hook on the calls that change files, the key state and the
// message box.
#include <atomic>

#include "os/win32/forward.h"

namespace nvk::os {

namespace {

std::atomic<CallHook> g_CallHook{nullptr};
std::atomic<KeyStateHook> g_KeyStateHook{nullptr};
std::atomic<MessageBoxHook> g_MessageBoxHook{nullptr};

}  // namespace

void SetCallHook(CallHook hook) {
    g_CallHook.store(hook);
}

void FireCallHook(const char* call) {
    if (CallHook hook = g_CallHook.load(std::memory_order_relaxed); hook != nullptr) {
        hook(call);
    }
}

SHORT GetKeyState(int virtualKey) {
    const KeyStateHook hook = g_KeyStateHook.load();
    return hook != nullptr ? hook(virtualKey) : ::GetKeyState(virtualKey);
}

KeyStateHook SetKeyStateHook(KeyStateHook hook) {
    return g_KeyStateHook.exchange(hook);
}

MessageBoxHook SetMessageBoxHook(MessageBoxHook hook) {
    return g_MessageBoxHook.exchange(hook);
}

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    if (const MessageBoxHook hook = g_MessageBoxHook.load()) {
        return hook(owner, text, caption, type);
    }
    return win32::Call<int>(::MessageBoxA, owner, text, caption, type);
}

}  // namespace nvk::os
