#include "os/common/folder_browser_hook.h"

#include <mutex>

namespace nvk::os {

namespace {

std::mutex g_HookLock;
FolderBrowserHook g_Hook{};

}  // namespace

FolderBrowserHook SetFolderBrowserHook(FolderBrowserHook hook) {
    std::lock_guard<std::mutex> lock(g_HookLock);
    FolderBrowserHook old = g_Hook;
    g_Hook = hook;
    return old;
}

FolderBrowserHook CurrentFolderBrowserHook() {
    std::lock_guard<std::mutex> lock(g_HookLock);
    return g_Hook;
}

}  // namespace nvk::os
