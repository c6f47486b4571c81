#include "os/api/message_box.h"

#include <atomic>
#include <cstdio>

namespace nvk::os {

namespace {

std::atomic<MessageBoxHook> messageBoxHook{nullptr};

}  // namespace

MessageBoxHook SetMessageBoxHook(MessageBoxHook hook) {
    return messageBoxHook.exchange(hook);
}

int MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
    if (const MessageBoxHook hook = messageBoxHook.load()) {
        return hook(owner, text, caption, type);
    }
    std::fprintf(stderr, "%s: %s\n", caption != nullptr ? caption : "Error",
                 text != nullptr ? text : "");
    return MessageBoxDefaultButton(type);
}

}  // namespace nvk::os
