#include "os/api/message_box.h"

#include <atomic>
#include <cstdio>
#include <span>

namespace nvk::os {

namespace {

std::atomic<MessageBoxHook> messageBoxHook{nullptr};

// The answers of each style's buttons, left to right (IDOK 1 ... IDCONTINUE 11).
std::span<const int> Buttons(UINT type) {
    static constexpr int kOk[] = {1};
    static constexpr int kOkCancel[] = {1, 2};
    static constexpr int kAbortRetryIgnore[] = {3, 4, 5};
    static constexpr int kYesNoCancel[] = {6, 7, 2};
    static constexpr int kYesNo[] = {6, 7};
    static constexpr int kRetryCancel[] = {4, 2};
    static constexpr int kCancelTryContinue[] = {2, 10, 11};
    switch (type & 0xF) {
        case 1:
            return kOkCancel;
        case 2:
            return kAbortRetryIgnore;
        case 3:
            return kYesNoCancel;
        case 4:
            return kYesNo;
        case 5:
            return kRetryCancel;
        case 6:
            return kCancelTryContinue;
        default:
            return kOk;
    }
}

}  // namespace

int MessageBoxDefaultButton(UINT type) {
    const std::span<const int> buttons = Buttons(type);
    const std::size_t index = (type & 0xF00) >> 8;
    return buttons[index < buttons.size() ? index : 0];
}

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
