// Helpers of the drawing tests: images and their pixels.
#pragma once

#include <gtest/gtest.h>

#include "os/api/gdi.h"

namespace nvk::os::test {

// A memory device context holding a bitmap, both freed at the end.
class Canvas {
public:
    Canvas(int width, int height, bool monochrome = false)
        : m_dc(CreateCompatibleDC(nullptr)),
          m_bitmap(CreateBitmap(width, height, 1, monochrome ? 1 : 32, nullptr)) {
        m_old = SelectObject(m_dc, m_bitmap);
    }
    ~Canvas() {
        SelectObject(m_dc, m_old);
        DeleteObject(m_bitmap);
        DeleteDC(m_dc);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    operator HDC() const { return m_dc; }
    HBITMAP Bitmap() const { return m_bitmap; }

private:
    HDC m_dc;
    HBITMAP m_bitmap;
    HGDIOBJ m_old;
};

// The bounding box of the pixels that are not `background`; empty if none.
inline RECT InkBox(HDC dc, int width, int height, COLORREF background = 0xFFFFFF) {
    RECT box{width, height, 0, 0};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (GetPixel(dc, x, y) != background) {
                box.left = std::min<LONG>(box.left, x);
                box.top = std::min<LONG>(box.top, y);
                box.right = std::max<LONG>(box.right, x + 1);
                box.bottom = std::max<LONG>(box.bottom, y + 1);
            }
        }
    }
    return box;
}

}  // namespace nvk::os::test
