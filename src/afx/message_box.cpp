#include "nvk/afx/message_box.h"

#include "os/api/message_box.h"

#include <atomic>
#include <cstdio>

namespace {

std::atomic<nvk::afx::MessageBoxHook> g_hook{nullptr};

}  // namespace

namespace nvk::afx {

MessageBoxHook SetMessageBoxHook(MessageBoxHook hook) {
    return g_hook.exchange(hook);
}

int DefaultButton(unsigned type) {
    return nvk::os::MessageBoxDefaultButton(type);
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
