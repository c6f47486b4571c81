// Windows without a display. Each window has its class's procedure, a text,
// an enabled state, a parent and an identifier; messages are calls of the
// procedure, on the caller's thread. The system's classes "COMBOBOX" and
// "LISTBOX" keep their items and answer the CB_ and LB_ messages as the
// controls do; any other class name must be registered first.
#pragma once

#include "nvk/os/window_types.h"

namespace nvk::os {

ATOM RegisterClassA(const WNDCLASSA* windowClass);
// `menu` is a child window's identifier. No WM_CREATE is sent: windows
// without a display have nothing to set up there.
HWND CreateWindowExA(DWORD exStyle, LPCSTR className, LPCSTR windowName, DWORD style, int x, int y,
                     int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                     LPVOID param);
// Destroys the window's children first, then sends WM_DESTROY and
// WM_NCDESTROY.
BOOL DestroyWindow(HWND window);
BOOL IsWindow(HWND window);

LRESULT SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
LRESULT CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wParam, LPARAM lParam);
// Answers WM_SETTEXT, WM_GETTEXT, WM_GETTEXTLENGTH with the window's text.
LRESULT DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// GWLP_WNDPROC, GWLP_ID and GWLP_USERDATA; Set returns the previous value.
LONG_PTR GetWindowLongPtrA(HWND window, int index);
LONG_PTR SetWindowLongPtrA(HWND window, int index, LONG_PTR value);

BOOL SetWindowTextA(HWND window, LPCSTR text);
int GetWindowTextA(HWND window, LPSTR text, int maxCount);
int GetWindowTextLengthA(HWND window);
// Whether the window was disabled before.
BOOL EnableWindow(HWND window, BOOL enable);
BOOL IsWindowEnabled(HWND window);
// Nothing to paint: TRUE for a window.
BOOL UpdateWindow(HWND window);

HWND GetParent(HWND window);
HWND GetDlgItem(HWND parent, int id);
int GetDlgCtrlID(HWND window);

}  // namespace nvk::os
