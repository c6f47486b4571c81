#include "nvk/afx/frame_window.h"

#include <algorithm>

using namespace nvk::os;

CControlBar::~CControlBar() {
    LeaveFrame();
}

bool CControlBar::CreateBar(const char* className, CWnd* parent, DWORD style, UINT id) {
    if (!CreateEx(0, className, nullptr, style | WS_CHILD, RECT{}, parent, id)) {
        return false;
    }
    m_pDockSite = dynamic_cast<CFrameWnd*>(parent);
    if (m_pDockSite != nullptr) {
        m_pDockSite->m_listControlBars.push_back(this);
    }
    return true;
}

void CControlBar::PostNcDestroy() {
    LeaveFrame();
}

void CControlBar::LeaveFrame() {
    if (m_pDockSite != nullptr) {
        std::erase(m_pDockSite->m_listControlBars, this);
        m_pDockSite = nullptr;
    }
}

bool CStatusBar::Create(CWnd* parent, DWORD style, UINT id) {
    return CreateBar("msctls_statusbar32", parent, style, id);
}

CFrameWnd::~CFrameWnd() {
    for (CControlBar* bar : m_listControlBars) {
        bar->m_pDockSite = nullptr;
    }
}

bool CFrameWnd::Create(const char* className, const char* title, DWORD style) {
    return CreateEx(0, className, title, style, RECT{}, nullptr, 0);
}

CControlBar* CFrameWnd::GetControlBar(UINT id) const {
    auto found = std::find_if(
        m_listControlBars.begin(), m_listControlBars.end(),
        [id](const CControlBar* bar) { return static_cast<UINT>(bar->GetDlgCtrlID()) == id; });
    return found != m_listControlBars.end() ? *found : nullptr;
}
