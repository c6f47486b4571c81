#include "nvk/afx/message_box.h"

#include <atomic>
#include <cstdio>
#include <span>

namespace {

std::atomic<nvk::afx::MessageBoxHook> g_hook{nullptr};

// The buttons of each style, left to right.
std::span<const int> Buttons(unsigned type) {
    static constexpr int kOk[] = {IDOK};
    static constexpr int kOkCancel[] = {IDOK, IDCANCEL};
    static constexpr int kAbortRetryIgnore[] = {IDABORT, IDRETRY, IDIGNORE};
    static constexpr int kYesNoCancel[] = {IDYES, IDNO, IDCANCEL};
    static constexpr int kYesNo[] = {IDYES, IDNO};
    static constexpr int kRetryCancel[] = {IDRETRY, IDCANCEL};
    static constexpr int kCancelTryContinue[] = {IDCANCEL, IDTRYAGAIN, IDCONTINUE};
    switch (type & MB_TYPEMASK) {
        case MB_OKCANCEL:
            return kOkCancel;
        case MB_ABORTRETRYIGNORE:
            return kAbortRetryIgnore;
        case MB_YESNOCANCEL:
            return kYesNoCancel;
        case MB_YESNO:
            return kYesNo;
        case MB_RETRYCANCEL:
            return kRetryCancel;
        case MB_CANCELTRYCONTINUE:
            return kCancelTryContinue;
        default:
            return kOk;
    }
}

}  // namespace

namespace nvk::afx {

MessageBoxHook SetMessageBoxHook(MessageBoxHook hook) {
    return g_hook.exchange(hook);
}

int DefaultButton(unsigned type) {
    const std::span<const int> buttons = Buttons(type);
    const std::size_t index = (type & MB_DEFMASK) >> 8;
    // A default beyond the last button falls back to the first, as on Windows.
    return buttons[index < buttons.size() ? index : 0];
}

}  // namespace nvk::afx

int AfxMessageBox(const char* text, unsigned type, unsigned helpId) {
    if (const nvk::afx::MessageBoxHook hook = g_hook.load()) {
        return hook(text, type, helpId);
    }
    std::fputs(text != nullptr ? text : "", stderr);
    std::fputc('\n', stderr);
    return nvk::afx::DefaultButton(type);
}
