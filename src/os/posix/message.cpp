#include "os/api/message.h"

#include <algorithm>

#include "os/api/error.h"
#include "os/api/sync.h"
#include "os/posix/dde_instance.h"

namespace nvk::os {

namespace {

struct QuitState {
    bool posted = false;
    int exitCode = 0;
};
thread_local QuitState quit;

// How often MsgWaitForMultipleObjects looks at its handles.
constexpr std::uint64_t kHandleSlice = 5000;

bool InRange(UINT message, UINT filterMin, UINT filterMax) {
    return (filterMin == 0 && filterMax == 0) || (message >= filterMin && message <= filterMax);
}

void Fill(LPMSG msg, UINT message, WPARAM wParam) {
    *msg = MSG{};
    msg->message = message;
    msg->wParam = wParam;
    msg->time = GetTickCount();
}

// A message, waiting until `deadline` for one; FALSE with none.
BOOL NextMessage(LPMSG msg, UINT filterMin, UINT filterMax, bool remove, std::uint64_t deadline) {
    if (InRange(WM_DDE_FIRST, filterMin, filterMax)) {
        // WM_QUIT comes only when nothing else waits.
        const int ready = dde::WaitThreadTraffic(quit.posted ? 0 : deadline);
        if (ready >= 0) {
            Fill(msg, WM_DDE_FIRST, dde::ThreadInstances()[static_cast<std::size_t>(ready)]->id);
            return TRUE;
        }
    }
    if (quit.posted) {
        Fill(msg, WM_QUIT, static_cast<WPARAM>(quit.exitCode));
        quit.posted = !remove;
        return TRUE;
    }
    return FALSE;
}

}  // namespace

BOOL GetMessageA(LPMSG msg, HWND /*hwnd*/, UINT filterMin, UINT filterMax) {
    while (NextMessage(msg, filterMin, filterMax, true, UINT64_MAX) == FALSE) {
        // Only WM_QUIT could come, and only this thread could post it.
        Sleep(INFINITE);
    }
    return msg->message == WM_QUIT ? FALSE : TRUE;
}

BOOL PeekMessageA(LPMSG msg, HWND /*hwnd*/, UINT filterMin, UINT filterMax, UINT removeMessage) {
    return NextMessage(msg, filterMin, filterMax, (removeMessage & PM_REMOVE) != 0, 0);
}

BOOL TranslateMessage(const MSG* /*msg*/) {
    return FALSE;
}

LRESULT DispatchMessageA(const MSG* msg) {
    if (msg == nullptr || msg->message != WM_DDE_FIRST) {
        return 0;
    }
    for (const dde::InstancePtr& instance : dde::ThreadInstances()) {
        if (instance->id == msg->wParam) {
            // A copy: serving may end the instance.
            const dde::InstancePtr held = instance;
            dde::ServeAll(held);
            break;
        }
    }
    return 0;
}

void PostQuitMessage(int exitCode) {
    quit.posted = true;
    quit.exitCode = exitCode;
}

DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll,
                                DWORD milliseconds, DWORD wakeMask) {
    if (waitAll && count > 0) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return WAIT_FAILED;
    }
    const bool messages = (wakeMask & (QS_POSTMESSAGE | QS_SENDMESSAGE | QS_ALLPOSTMESSAGE)) != 0;
    const std::uint64_t deadline =
        milliseconds == INFINITE ? UINT64_MAX : dde::Now() + std::uint64_t{milliseconds} * 1000u;
    for (;;) {
        for (DWORD i = 0; i < count; ++i) {
            const DWORD state = WaitForSingleObject(handles[i], 0);
            if (state == WAIT_OBJECT_0 || state == WAIT_ABANDONED) {
                return state + i;
            }
        }
        const std::uint64_t now = dde::Now();
        const std::uint64_t until = count > 0 ? std::min(deadline, now + kHandleSlice) : deadline;
        if (messages) {
            if (quit.posted || dde::WaitThreadTraffic(now >= deadline ? 0 : until) >= 0) {
                return WAIT_OBJECT_0 + count;
            }
        } else if (until > now) {
            Sleep(static_cast<DWORD>((until - now + 999) / 1000));
        }
        if (dde::Now() >= deadline) {
            return WAIT_TIMEOUT;
        }
    }
}

}  // namespace nvk::os
