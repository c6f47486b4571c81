// The thread's message loop, reduced to what drives DDE: the DDE instances
// of the thread are its only source of messages besides WM_QUIT. A message
// of an instance says that its bus has traffic; dispatching it serves the
// instance's transactions, running its callback.
#pragma once

#include "nvk/os/types.h"
#include "nvk/os/window_types.h"

namespace nvk::os {

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};
using LPMSG = MSG*;

inline constexpr UINT WM_QUIT = 0x0012;
// The message of a DDE instance's traffic; wParam is the instance id.
inline constexpr UINT WM_DDE_FIRST = 0x03E0;

inline constexpr UINT PM_NOREMOVE = 0x0000;
inline constexpr UINT PM_REMOVE = 0x0001;

inline constexpr DWORD QS_POSTMESSAGE = 0x0008;
inline constexpr DWORD QS_SENDMESSAGE = 0x0040;
inline constexpr DWORD QS_ALLPOSTMESSAGE = 0x0100;
inline constexpr DWORD QS_ALLINPUT = 0x04FF;

// Waits for a message; 0 for WM_QUIT, which comes when nothing else waits.
// The filter range selects messages, WM_QUIT always passes; hwnd is ignored.
BOOL GetMessageA(LPMSG msg, HWND hwnd, UINT filterMin, UINT filterMax);
// The same without waiting: FALSE when no message waits.
BOOL PeekMessageA(LPMSG msg, HWND hwnd, UINT filterMin, UINT filterMax, UINT removeMessage);
// No keyboard messages here, so nothing is ever translated: FALSE.
BOOL TranslateMessage(const MSG* msg);
LRESULT DispatchMessageA(const MSG* msg);
void PostQuitMessage(int exitCode);

// Waits for one of `handles`, or for a message of a kind in `wakeMask`:
// WAIT_OBJECT_0 + i for handle i, WAIT_OBJECT_0 + count for a message,
// WAIT_TIMEOUT. Handles are looked at every few milliseconds; waiting for
// all of them is not offered (WAIT_FAILED, ERROR_NOT_SUPPORTED).
DWORD MsgWaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll,
                                DWORD milliseconds, DWORD wakeMask);

}  // namespace nvk::os
