// A frame window and the control bars along its edges, the status bar among
// them. Without a display a bar is a child window with its identifier and
// its text; the status bar's text is that of its first pane.
#pragma once

#include <vector>

#include "nvk/afx/window.h"
#include "nvk/nvkafx_export.h"

inline constexpr nvk::os::UINT AFX_IDW_STATUS_BAR = 0xE801;

class CFrameWnd;

class NVKAFX_EXPORT CControlBar : public CWnd {
public:
    ~CControlBar() override;

protected:
    // Creates the bar as a child of `parent`; a frame then lists it.
    bool CreateBar(const char* className, CWnd* parent, nvk::os::DWORD style, nvk::os::UINT id);
    void PostNcDestroy() override;

private:
    friend class CFrameWnd;
    void LeaveFrame();

    CFrameWnd* m_pDockSite = nullptr;
};

class NVKAFX_EXPORT CStatusBar : public CControlBar {
public:
    bool Create(CWnd* parent, nvk::os::DWORD style = nvk::os::WS_CHILD | nvk::os::WS_VISIBLE,
                nvk::os::UINT id = AFX_IDW_STATUS_BAR);
};

class NVKAFX_EXPORT CFrameWnd : public CWnd {
public:
    // The bars outlive their frame's list.
    ~CFrameWnd() override;
    bool Create(const char* className, const char* title,
                nvk::os::DWORD style = nvk::os::WS_OVERLAPPEDWINDOW);
    // The bar of that identifier, or null.
    CControlBar* GetControlBar(nvk::os::UINT id) const;

private:
    friend class CControlBar;
    std::vector<CControlBar*> m_listControlBars;
};
