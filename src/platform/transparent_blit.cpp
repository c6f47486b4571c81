// The mask blit: a monochrome mask of the transparent colour keeps the
// target where it is set, the inverted mask clears those pixels of the
// source, and OR-ing the two gives the picture. Each device context holds
// its bitmap for the whole blit.
#include "nvk/platform/transparent_blit.h"

#include "os/api/gdi.h"

using namespace nvk::os;

namespace {

struct MemoryDC {
    MemoryDC(HDC compatible, HBITMAP bitmap)
        : Dc(CreateCompatibleDC(compatible)), Bitmap(bitmap), Old(SelectObject(Dc, bitmap)) {}
    ~MemoryDC() {
        SelectObject(Dc, Old);
        DeleteObject(Bitmap);
        DeleteDC(Dc);
    }
    MemoryDC(const MemoryDC&) = delete;
    MemoryDC& operator=(const MemoryDC&) = delete;

    HDC Dc;
    HBITMAP Bitmap;
    HGDIOBJ Old;
};

}  // namespace

void DrawTransparentBitmap(HDC dc, int x, int y, int cx, int cy, HDC src, int xSrc, int ySrc,
                           COLORREF transparent) {
    MemoryDC inverted(dc, CreateBitmap(cx, cy, 1, 1, nullptr));
    MemoryDC mask(dc, CreateBitmap(cx, cy, 1, 1, nullptr));
    MemoryDC work(dc, CreateCompatibleBitmap(dc, cx, cy));
    MemoryDC save(dc, CreateCompatibleBitmap(dc, cx, cy));

    BitBlt(save.Dc, 0, 0, cx, cy, src, xSrc, ySrc, SRCCOPY);

    const COLORREF background = SetBkColor(src, transparent);
    BitBlt(mask.Dc, 0, 0, cx, cy, src, xSrc, ySrc, SRCCOPY);
    SetBkColor(src, background);

    BitBlt(inverted.Dc, 0, 0, cx, cy, mask.Dc, 0, 0, NOTSRCCOPY);

    BitBlt(work.Dc, 0, 0, cx, cy, dc, x, y, SRCCOPY);
    BitBlt(work.Dc, 0, 0, cx, cy, mask.Dc, 0, 0, SRCAND);

    BitBlt(src, xSrc, ySrc, cx, cy, inverted.Dc, 0, 0, SRCAND);

    BitBlt(work.Dc, 0, 0, cx, cy, src, xSrc, ySrc, SRCPAINT);
    BitBlt(dc, x, y, cx, cy, work.Dc, 0, 0, SRCCOPY);

    BitBlt(src, xSrc, ySrc, cx, cy, save.Dc, 0, 0, SRCCOPY);
}
