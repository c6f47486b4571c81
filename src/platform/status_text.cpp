#include "nvk/platform/status_text.h"

#include "load_text.h"
#include "nvk/afx/frame_window.h"

CStatusText::CStatusText() {
    Save();
}

CStatusText::CStatusText(unsigned stringId) {
    Save();
    SetText(stringId);
}

CStatusText::CStatusText(const char* text) {
    Save();
    SetText(text);
}

CStatusText::~CStatusText() {
    Restore();
}

void CStatusText::Save() {
    if (IsEmpty()) {
        GetStatusText(*this);
    }
}

void CStatusText::SetText(unsigned stringId) {
    SetStatusText(nvk::LoadText(stringId));
}

void CStatusText::SetText(const char* text) {
    SetStatusText(text);
}

void CStatusText::Restore() {
    SetStatusText(*this);
    Empty();
}

CStatusBar* CStatusText::GetStatusBar() {
    if (m_pStatusBar == nullptr) {
        if (auto* frame = dynamic_cast<CFrameWnd*>(AfxGetMainWnd())) {
            m_pStatusBar = dynamic_cast<CStatusBar*>(frame->GetControlBar(AFX_IDW_STATUS_BAR));
        }
    }
    return m_pStatusBar;
}

bool CStatusText::GetStatusText(CString& text) {
    CStatusBar* bar = GetStatusBar();
    if (bar == nullptr) {
        return false;
    }
    bar->GetWindowText(text);
    return true;
}

void CStatusText::SetStatusText(const char* text) {
    if (CStatusBar* bar = GetStatusBar()) {
        bar->SetWindowText(text);
        bar->UpdateWindow();
    }
}
