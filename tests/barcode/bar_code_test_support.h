// Helpers of the bar-code tests: images, fonts and pixels.
#pragma once

#include <gtest/gtest.h>

#include "nvk/platform/bar_code.h"
#include "os/api/gdi.h"

namespace nvk::os::test {

// EBarCode with its protected parts in reach.
class BarCodeProbe : public EBarCode {
public:
    using EBarCode::BarCodef;
    using EBarCode::BarCodeh;
    using EBarCode::BarCodemx;
    using EBarCode::BarInfo;
    using EBarCode::m_hDll;
};

// An image with a font of the given angles selected.
class Image {
public:
    Image(int width, int height, LONG escapement = 0, LONG orientation = 0)
        : m_dc(CreateImageDC(width, height)), m_width(width), m_height(height) {
        LOGFONTA log{};
        log.lfHeight = -14;
        log.lfWidth = 3;
        log.lfEscapement = escapement;
        log.lfOrientation = orientation;
        m_font = CreateFontIndirectA(&log);
        m_old = SelectObject(m_dc, m_font);
    }
    ~Image() {
        SelectObject(m_dc, m_old);
        DeleteObject(m_font);
        DeleteDC(m_dc);
    }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    operator HDC() const { return m_dc; }

    int Count(COLORREF colour) const {
        int count = 0;
        for (int y = 0; y < m_height; ++y) {
            for (int x = 0; x < m_width; ++x) {
                count += GetPixel(m_dc, x, y) == colour ? 1 : 0;
            }
        }
        return count;
    }
    bool Blank() const { return Count(0xFFFFFF) == m_width * m_height; }
    // Pixels of neither colour in the rectangle.
    int Others(const RECT& r, COLORREF a, COLORREF b) const {
        int count = 0;
        for (LONG y = r.top; y < r.bottom; ++y) {
            for (LONG x = r.left; x < r.right; ++x) {
                COLORREF pixel = GetPixel(m_dc, x, y);
                count += pixel != a && pixel != b ? 1 : 0;
            }
        }
        return count;
    }
    // Whether both diagonals of the rectangle show the colour, away from
    // the centre, where a text may cover them.
    bool Crossed(const RECT& r, COLORREF colour) const {
        for (int i : {1, 2, 3, 7, 8, 9}) {
            double t = i / 10.0;
            int x = r.left + static_cast<int>((r.right - r.left) * t);
            int y = r.top + static_cast<int>((r.bottom - r.top) * t);
            int back = r.right - 1 - static_cast<int>((r.right - r.left) * t);
            auto near = [&](int px, int py) {
                for (int dy = -1; dy <= 1; ++dy) {
                    for (int dx = -1; dx <= 1; ++dx) {
                        if (GetPixel(m_dc, px + dx, py + dy) == colour) {
                            return true;
                        }
                    }
                }
                return false;
            };
            if (!near(x, y) || !near(back, y)) {
                return false;
            }
        }
        return true;
    }

private:
    HDC m_dc;
    int m_width;
    int m_height;
    HFONT m_font;
    HGDIOBJ m_old;
};

}  // namespace nvk::os::test
