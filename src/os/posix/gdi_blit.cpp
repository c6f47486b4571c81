// BitBlt: raster operations as pixel loops over the bitmaps of memory device
// contexts, since cairo has no bitwise operators; operations that read
// neither source nor destination are fills, which every device takes.
#include <cmath>
#include <vector>

#include "os/api/gdi.h"
#include "os/posix/gdi_blit.h"
#include "os/posix/handle.h"
#include "os/posix/metafile_recorder.h"

namespace nvk::os {

namespace gdi {

namespace {

struct DeviceRect {
    int left;
    int top;
    int width;
    int height;
};

DeviceRect ToDevice(const Dc& dc, int x, int y, int cx, int cy) {
    cairo_matrix_t matrix = dc.Matrix();
    double x0 = x, y0 = y, x1 = static_cast<double>(x) + cx, y1 = static_cast<double>(y) + cy;
    cairo_matrix_transform_point(&matrix, &x0, &y0);
    cairo_matrix_transform_point(&matrix, &x1, &y1);
    int left = static_cast<int>(std::lround(std::min(x0, x1)));
    int top = static_cast<int>(std::lround(std::min(y0, y1)));
    return DeviceRect{left, top, static_cast<int>(std::lround(std::max(x0, x1))) - left,
                      static_cast<int>(std::lround(std::max(y0, y1))) - top};
}

}  // namespace

bool DevicePixel(const Dc& dc, int x, int y, int& px, int& py) {
    if (!dc.IsImage()) {
        return false;
    }
    cairo_matrix_t matrix = dc.Matrix();
    double dx = x, dy = y;
    cairo_matrix_transform_point(&matrix, &dx, &dy);
    px = static_cast<int>(std::floor(dx));
    py = static_cast<int>(std::floor(dy));
    return px >= 0 && py >= 0 && px < dc.m_state.bitmap->m_width &&
           py < dc.m_state.bitmap->m_height;
}

std::uint32_t Rop3(unsigned index, std::uint32_t pattern, std::uint32_t source,
                   std::uint32_t destination) {
    std::uint32_t result = 0;
    // Each bit of the index is the result for one combination of the three
    // inputs' bits: bit (p << 2 | s << 1 | d).
    for (unsigned term = 0; term < 8; ++term) {
        if ((index >> term & 1) != 0) {
            result |= ((term & 4) != 0 ? pattern : ~pattern) &
                      ((term & 2) != 0 ? source : ~source) &
                      ((term & 1) != 0 ? destination : ~destination);
        }
    }
    return result & 0xFFFFFF;
}

}  // namespace gdi

using gdi::Dc;
using posix::SetErrorCode;

BOOL BitBlt(HDC dc, int x, int y, int cx, int cy, HDC source, int xSource, int ySource, DWORD rop) {
    Dc* target = gdi::DcOf(dc);
    if (target == nullptr) {
        return FALSE;
    }
    unsigned index = rop >> 16 & 0xFF;
    bool readsSource = ((index ^ index >> 2) & 0x33) != 0;
    bool readsPattern = ((index ^ index >> 4) & 0x0F) != 0;
    bool readsTarget = ((index ^ index >> 1) & 0x55) != 0;
    Dc* from = nullptr;
    if (readsSource) {
        from = gdi::DcOf(source);
        if (from == nullptr) {
            return FALSE;
        }
        if (!from->IsImage()) {
            SetErrorCode(ERROR_NOT_SUPPORTED);
            return FALSE;
        }
    }
    const LOGBRUSH& brush = target->m_state.brush->m_log;
    // A null brush paints nothing where the pattern counts.
    if (readsPattern && brush.lbStyle == BS_NULL) {
        return TRUE;
    }
    bool monochrome = target->IsImage() && target->m_state.bitmap->m_monochrome;
    std::uint32_t pattern = gdi::PixelOf(brush.lbColor);
    if (monochrome) {
        pattern = gdi::MonochromeOf(pattern);
    }

    if (target->m_recorder != nullptr) {
        if (readsSource) {
            SetErrorCode(ERROR_NOT_SUPPORTED);
            return FALSE;
        }
        EMRBITBLT record{};
        cairo_matrix_t matrix = target->Matrix();
        double x0 = x, y0 = y, x1 = static_cast<double>(x) + cx, y1 = static_cast<double>(y) + cy;
        cairo_matrix_transform_point(&matrix, &x0, &y0);
        cairo_matrix_transform_point(&matrix, &x1, &y1);
        target->m_recorder->Bounds(x0, y0, x1, y1);
        record.rclBounds =
            RECTL{static_cast<LONG>(std::min(x0, x1)), static_cast<LONG>(std::min(y0, y1)),
                  static_cast<LONG>(std::max(x0, x1)) - 1, static_cast<LONG>(std::max(y0, y1)) - 1};
        record.xDest = x;
        record.yDest = y;
        record.cxDest = cx;
        record.cyDest = cy;
        record.dwRop = rop;
        record.xSrc = xSource;
        record.ySrc = ySource;
        record.xformSrc = XFORM{1, 0, 0, 1, 0, 0};
        target->m_recorder->Append(EMR_BITBLT, &record, sizeof record);
        return TRUE;
    }

    if (!readsSource && !readsTarget) {
        cairo_t* cairo = target->Prepare();
        if (cairo != nullptr) {
            gdi::SetCairoColour(cairo, gdi::ColourOf(gdi::Rop3(index, pattern, 0, 0)));
            cairo_rectangle(cairo, x, y, cx, cy);
            cairo_fill(cairo);
        }
        return TRUE;
    }
    if (!target->IsImage()) {
        SetErrorCode(ERROR_NOT_SUPPORTED);
        return FALSE;
    }

    gdi::Bitmap* bitmap = target->m_state.bitmap;
    gdi::DeviceRect to = gdi::ToDevice(*target, x, y, cx, cy);
    // The source is read whole before any write: it may be the target.
    std::vector<std::uint32_t> pixels;
    gdi::DeviceRect at{};
    if (from != nullptr) {
        at = gdi::ToDevice(*from, xSource, ySource, cx, cy);
        gdi::Bitmap* image = from->m_state.bitmap;
        cairo_surface_flush(image->m_surface);
        pixels.resize(static_cast<std::size_t>(at.width) * static_cast<std::size_t>(at.height));
        std::uint32_t sourceBackground = gdi::PixelOf(from->m_state.bkColour);
        for (int row = 0; row < at.height; ++row) {
            for (int column = 0; column < at.width; ++column) {
                int sx = at.left + column, sy = at.top + row;
                std::uint32_t pixel = 0;
                if (sx >= 0 && sy >= 0 && sx < image->m_width && sy < image->m_height) {
                    pixel = image->Row(sy)[sx] & 0xFFFFFF;
                }
                // Colour to monochrome: the source's background is white.
                // Monochrome to colour: white is the target's background
                // colour and black its text colour.
                if (monochrome && !image->m_monochrome) {
                    pixel = pixel == sourceBackground ? 0xFFFFFF : 0;
                } else if (!monochrome && image->m_monochrome) {
                    pixel = gdi::PixelOf(pixel != 0 ? target->m_state.bkColour
                                                    : target->m_state.textColour);
                }
                pixels[static_cast<std::size_t>(row) * static_cast<std::size_t>(at.width) +
                       static_cast<std::size_t>(column)] = pixel;
            }
        }
    }
    cairo_surface_flush(bitmap->m_surface);
    for (int row = std::max(0, -to.top); row < to.height && to.top + row < bitmap->m_height;
         ++row) {
        std::uint32_t* line = bitmap->Row(to.top + row);
        for (int column = std::max(0, -to.left);
             column < to.width && to.left + column < bitmap->m_width; ++column) {
            std::uint32_t sourcePixel = 0;
            if (from != nullptr) {
                // A source mapped to another size is sampled to the nearest pixel.
                long sr = static_cast<long>(row) * at.height / std::max(1, to.height);
                long sc = static_cast<long>(column) * at.width / std::max(1, to.width);
                if (sr >= at.height || sc >= at.width) {
                    continue;
                }
                sourcePixel = pixels[static_cast<std::size_t>(sr * at.width + sc)];
            }
            std::uint32_t& pixel = line[to.left + column];
            pixel = gdi::Rop3(index, pattern, sourcePixel, pixel & 0xFFFFFF);
        }
    }
    cairo_surface_mark_dirty(bitmap->m_surface);
    return TRUE;
}

}  // namespace nvk::os
