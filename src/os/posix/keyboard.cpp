#include "os/api/keyboard.h"

#include <atomic>

namespace nvk::os {

namespace {

std::atomic<KeyStateHook> keyStateHook{nullptr};

}  // namespace

SHORT GetKeyState(int virtualKey) {
    const KeyStateHook hook = keyStateHook.load();
    return hook == nullptr ? SHORT{0} : hook(virtualKey);
}

KeyStateHook SetKeyStateHook(KeyStateHook hook) {
    return keyStateHook.exchange(hook);
}

}  // namespace nvk::os
