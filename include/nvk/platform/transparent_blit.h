// Copying a bitmap onto a device context with one colour left out.
#pragma once

#include "nvk/nvkutil_export.h"
#include "nvk/os/gdi_types.h"

// Copies the `cx` by `cy` pixels of `src` at (xSrc, ySrc) to (x, y) of `dc`,
// except those of the colour `transparent`, where `dc` keeps its own. The
// source is changed while the copy runs and put back after it.
NVKUTIL_EXPORT void DrawTransparentBitmap(nvk::os::HDC dc, int x, int y, int cx, int cy,
                                          nvk::os::HDC src, int xSrc, int ySrc,
                                          nvk::os::COLORREF transparent);
