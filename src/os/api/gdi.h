// Drawing: device contexts and the pens, brushes, fonts and bitmaps selected
// into them, with Windows' meanings. A device context draws on an image, a
// PNG, PDF or SVG file, or (CreateEnhMetaFileA) records into a metafile.
// Memory device contexts and bitmaps hold 24-bit colour pixels; a
// monochrome bitmap holds only black and white, converted as Windows
// converts: to monochrome, the source's background colour is white and all
// else black; from monochrome, white is the target's background colour and
// black its text colour. Raster operations are bitwise on pixels, so they
// work on images only; a file of vector drawing takes fills and copies.
// Failures set the last error; an unknown handle is ERROR_INVALID_HANDLE.
#pragma once

#include "nvk/os/gdi_types.h"

namespace nvk::os {

// The screen: a colour device of 96 pixels an inch with nothing to show, for
// the fonts and the compatible bitmaps that callers take from it.
HDC GetDC(HWND window);
int ReleaseDC(HWND window, HDC dc);

// A device context on a new file, its kind from the extension (".png",
// ".pdf", ".svg"), `width` by `height` pixels (points for PDF and SVG) on
// white; the file is written by DeleteDC, which fails if it can't be.
HDC CreateFileDC(LPCSTR fileName, int width, int height);
// A memory device context with its own white colour bitmap of the size,
// freed with it by DeleteDC.
HDC CreateImageDC(int width, int height);

HDC CreateCompatibleDC(HDC dc);
BOOL DeleteDC(HDC dc);
int GetDeviceCaps(HDC dc, int index);
int SaveDC(HDC dc);
// A positive level restores that save, a negative one counts back from the
// last.
BOOL RestoreDC(HDC dc, int savedDC);

HGDIOBJ GetStockObject(int object);
HPEN CreatePen(int style, int width, COLORREF colour);
HBRUSH CreateSolidBrush(COLORREF colour);
HFONT CreateFontIndirectA(const LOGFONTA* font);
// Monochrome with 1 bit a pixel, colour otherwise; `bits` rows of 1 bpp are
// padded to 16 bits as Windows' device-dependent bitmaps are, and may be null.
HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bitsPerPixel, LPCVOID bits);
// The format of what the device context shows: a memory device context
// holding its first monochrome bitmap gives a monochrome one.
HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height);
HGDIOBJ SelectObject(HDC dc, HGDIOBJ object);
// Objects selected into a device context are not deleted (FALSE).
BOOL DeleteObject(HGDIOBJ object);
DWORD GetObjectType(HGDIOBJ object);
HGDIOBJ GetCurrentObject(HDC dc, UINT type);
// The object's LOGPEN, LOGBRUSH, LOGFONTA or BITMAP; a null buffer asks for
// the size.
int GetObjectA(HGDIOBJ object, int size, LPVOID buffer);

int SetMapMode(HDC dc, int mode);
int GetMapMode(HDC dc);
COLORREF SetBkColor(HDC dc, COLORREF colour);
COLORREF GetBkColor(HDC dc);
COLORREF SetTextColor(HDC dc, COLORREF colour);
COLORREF GetTextColor(HDC dc);
int SetBkMode(HDC dc, int mode);
UINT SetTextAlign(HDC dc, UINT align);

BOOL MoveToEx(HDC dc, int x, int y, POINT* previous);
BOOL LineTo(HDC dc, int x, int y);
int FillRect(HDC dc, const RECT* rect, HBRUSH brush);
COLORREF GetPixel(HDC dc, int x, int y);
COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour);
// A null source serves the operations that take none (PATCOPY, BLACKNESS...).
BOOL BitBlt(HDC dc, int x, int y, int cx, int cy, HDC source, int xSource, int ySource, DWORD rop);

inline constexpr UINT ETO_OPAQUE = 0x2;
BOOL ExtTextOutA(HDC dc, int x, int y, UINT options, const RECT* rect, LPCSTR text, UINT count,
                 const int* dx);
BOOL TextOutA(HDC dc, int x, int y, LPCSTR text, int count);
BOOL GetTextExtentPoint32A(HDC dc, LPCSTR text, int count, SIZE* size);
// Single lines and lines broken at '\n'; '&' marks a mnemonic unless
// DT_NOPREFIX. Returns the height of the text, 0 on failure.
int DrawTextExA(HDC dc, LPSTR text, int count, RECT* rect, UINT format, DRAWTEXTPARAMS* params);

}  // namespace nvk::os
