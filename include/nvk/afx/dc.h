// The framework's device contexts: CDC wraps a handle, CClientDC takes that
// of a window (the screen's for a null window) and gives it back at its end;
// CRect is a RECT with its sizes. No window has drawing of its own on this
// system, so a client device context is always the screen's.
#pragma once

#include "nvk/nvkafx_export.h"
#include "nvk/os/gdi_types.h"

class CWnd;

class NVKAFX_EXPORT CRect : public nvk::os::RECT {
public:
    CRect() : nvk::os::RECT{0, 0, 0, 0} {}
    CRect(int l, int t, int r, int b) : nvk::os::RECT{l, t, r, b} {}
    CRect(const nvk::os::RECT& rect) : nvk::os::RECT(rect) {}
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    operator nvk::os::RECT*() { return this; }
    operator const nvk::os::RECT*() const { return this; }
};

class NVKAFX_EXPORT CDC {
public:
    CDC() = default;
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;
    // Deletes a device context that CreateCompatibleDC made; one attached is
    // left to its owner.
    virtual ~CDC();

    nvk::os::HDC GetSafeHdc() const { return m_hDC; }
    operator nvk::os::HDC() const { return m_hDC; }
    bool Attach(nvk::os::HDC dc);
    nvk::os::HDC Detach();
    bool CreateCompatibleDC(CDC* dc);
    bool DeleteDC();

    int SaveDC();
    bool RestoreDC(int savedDC);
    nvk::os::HGDIOBJ SelectObject(nvk::os::HGDIOBJ object);
    int SetMapMode(int mode);
    nvk::os::COLORREF SetBkColor(nvk::os::COLORREF colour);
    nvk::os::COLORREF SetTextColor(nvk::os::COLORREF colour);
    nvk::os::POINT MoveTo(int x, int y);
    bool LineTo(int x, int y);
    bool BitBlt(int x, int y, int cx, int cy, CDC* source, int xSource, int ySource,
                nvk::os::DWORD rop);
    int DrawText(const char* text, nvk::os::RECT* rect, nvk::os::UINT format);

    nvk::os::HDC m_hDC = nullptr;

private:
    bool m_created = false;
};

class NVKAFX_EXPORT CClientDC : public CDC {
public:
    explicit CClientDC(CWnd* window);
    ~CClientDC() override;

private:
    CWnd* m_pWnd;
};
