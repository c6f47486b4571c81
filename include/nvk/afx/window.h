// CWnd: the framework's object over an OS-layer window. A window the object
// creates or subclasses sends its messages to WindowProc, which looks them up
// in the message maps of the class and its bases, and passes the rest to the
// procedure the window had before (DefWindowProc).
#pragma once

#include "nvk/afx/cstring.h"
#include "nvk/afx/object.h"
#include "nvk/nvkafx_export.h"
#include "nvk/os/window_types.h"

class CWnd;

using AFX_PMSG = nvk::os::LRESULT (CWnd::*)(nvk::os::WPARAM, nvk::os::LPARAM);

struct AFX_MSGMAP_ENTRY {
    nvk::os::UINT nMessage;
    AFX_PMSG pfn;  // null ends a map
};

struct AFX_MSGMAP {
    const AFX_MSGMAP* (*pfnGetBaseMap)();
    const AFX_MSGMAP_ENTRY* lpEntries;
};

#define DECLARE_MESSAGE_MAP()                     \
protected:                                        \
    static const AFX_MSGMAP* GetThisMessageMap(); \
    const AFX_MSGMAP* GetMessageMap() const override;

#define BEGIN_MESSAGE_MAP(theClass, baseClass)          \
    const AFX_MSGMAP* theClass::GetMessageMap() const { \
        return GetThisMessageMap();                     \
    }                                                   \
    const AFX_MSGMAP* theClass::GetThisMessageMap() {   \
        using ThisClass = theClass;                     \
        using TheBaseClass = baseClass;                 \
        static const AFX_MSGMAP_ENTRY _messageEntries[] = {
// A handler of any message: LRESULT OnSomething(WPARAM, LPARAM).
#define ON_MESSAGE(message, memberFxn) {message, static_cast<AFX_PMSG>(&ThisClass::memberFxn)},

#define END_MESSAGE_MAP()                                                                     \
    { 0, nullptr }                                                                            \
    }                                                                                         \
    ;                                                                                         \
    static const AFX_MSGMAP messageMap = {&TheBaseClass::GetThisMessageMap, _messageEntries}; \
    return &messageMap;                                                                       \
    }

class NVKAFX_EXPORT CWnd : public CObject {
public:
    CWnd();
    CWnd(const CWnd&) = delete;
    CWnd& operator=(const CWnd&) = delete;
    // Destroys the window the object still holds.
    ~CWnd() override;

    // Creates a window of a registered class; a null class makes a plain
    // framework window.
    bool CreateEx(nvk::os::DWORD exStyle, const char* className, const char* windowName,
                  nvk::os::DWORD style, const nvk::os::RECT& rect, CWnd* parent, nvk::os::UINT id);
    virtual bool DestroyWindow();
    // Routes an existing window's messages through this object.
    bool SubclassWindow(nvk::os::HWND window);
    nvk::os::HWND UnsubclassWindow();

    nvk::os::HWND GetSafeHwnd() const { return m_hWnd; }
    // The object that routes the window's messages, or null.
    static CWnd* FromHandlePermanent(nvk::os::HWND window);

    nvk::os::LRESULT SendMessage(nvk::os::UINT message, nvk::os::WPARAM wParam = 0,
                                 nvk::os::LPARAM lParam = 0) const;
    void SetWindowText(const char* text);
    void GetWindowText(CString& text) const;
    int GetWindowTextLength() const;
    // Whether the window was disabled before.
    bool EnableWindow(bool enable = true);
    bool IsWindowEnabled() const;
    void UpdateWindow();
    int GetDlgCtrlID() const;
    CWnd* GetParent() const;

    nvk::os::HWND m_hWnd;

protected:
    virtual nvk::os::LRESULT WindowProc(nvk::os::UINT message, nvk::os::WPARAM wParam,
                                        nvk::os::LPARAM lParam);
    // The window's own procedure, that of its class, bypassing the maps.
    virtual nvk::os::LRESULT DefWindowProc(nvk::os::UINT message, nvk::os::WPARAM wParam,
                                           nvk::os::LPARAM lParam);
    virtual const AFX_MSGMAP* GetMessageMap() const;
    static const AFX_MSGMAP* GetThisMessageMap();
    // After the last message of the window.
    virtual void PostNcDestroy() {}

private:
    static nvk::os::LRESULT AfxWndProc(nvk::os::HWND window, nvk::os::UINT message,
                                       nvk::os::WPARAM wParam, nvk::os::LPARAM lParam);

    nvk::os::WNDPROC m_pfnSuper;
};

// The object of the calling thread, made at its first use; m_pMainWnd is the
// thread's main window.
class NVKAFX_EXPORT CWinThread : public CObject {
public:
    CWnd* m_pMainWnd = nullptr;
    virtual CWnd* GetMainWnd() { return m_pMainWnd; }
};

NVKAFX_EXPORT CWinThread* AfxGetThread();
NVKAFX_EXPORT CWnd* AfxGetMainWnd();
