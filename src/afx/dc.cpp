#include "nvk/afx/dc.h"

#include <string>

#include "os/api/gdi.h"

namespace os = nvk::os;

CDC::~CDC() {
    if (m_created) {
        DeleteDC();
    }
}

bool CDC::Attach(os::HDC dc) {
    if (m_hDC != nullptr || dc == nullptr) {
        return false;
    }
    m_hDC = dc;
    return true;
}

os::HDC CDC::Detach() {
    os::HDC dc = m_hDC;
    m_hDC = nullptr;
    m_created = false;
    return dc;
}

bool CDC::CreateCompatibleDC(CDC* dc) {
    m_hDC = os::CreateCompatibleDC(dc != nullptr ? dc->m_hDC : nullptr);
    m_created = m_hDC != nullptr;
    return m_created;
}

bool CDC::DeleteDC() {
    if (m_hDC == nullptr) {
        return false;
    }
    return os::DeleteDC(Detach()) != 0;
}

int CDC::SaveDC() {
    return os::SaveDC(m_hDC);
}
bool CDC::RestoreDC(int savedDC) {
    return os::RestoreDC(m_hDC, savedDC) != 0;
}
os::HGDIOBJ CDC::SelectObject(os::HGDIOBJ object) {
    return os::SelectObject(m_hDC, object);
}
int CDC::SetMapMode(int mode) {
    return os::SetMapMode(m_hDC, mode);
}
os::COLORREF CDC::SetBkColor(os::COLORREF colour) {
    return os::SetBkColor(m_hDC, colour);
}
os::COLORREF CDC::SetTextColor(os::COLORREF colour) {
    return os::SetTextColor(m_hDC, colour);
}

os::POINT CDC::MoveTo(int x, int y) {
    os::POINT previous{0, 0};
    os::MoveToEx(m_hDC, x, y, &previous);
    return previous;
}

bool CDC::LineTo(int x, int y) {
    return os::LineTo(m_hDC, x, y) != 0;
}

bool CDC::BitBlt(int x, int y, int cx, int cy, CDC* source, int xSource, int ySource,
                 os::DWORD rop) {
    return os::BitBlt(m_hDC, x, y, cx, cy, source != nullptr ? source->m_hDC : nullptr, xSource,
                      ySource, rop) != 0;
}

int CDC::DrawText(const char* text, os::RECT* rect, os::UINT format) {
    std::string copy(text != nullptr ? text : "");
    return os::DrawTextExA(m_hDC, copy.data(), static_cast<int>(copy.size()), rect, format,
                           nullptr);
}

CClientDC::CClientDC(CWnd* window) : m_pWnd(window) {
    m_hDC = os::GetDC(nullptr);
}

CClientDC::~CClientDC() {
    os::ReleaseDC(nullptr, Detach());
}
