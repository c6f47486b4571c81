// Lines, fills and single pixels.
#include <cmath>

#include "os/api/gdi.h"
#include "os/posix/gdi_blit.h"
#include "os/posix/handle.h"
#include "os/posix/metafile_recorder.h"

namespace nvk::os {

using gdi::Dc;

BOOL LineTo(HDC dc, int x, int y) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr) {
        return FALSE;
    }
    POINT from = context->m_state.position;
    context->m_state.position = POINT{x, y};
    const LOGPEN& pen = context->m_state.pen->m_log;
    cairo_matrix_t matrix = context->Matrix();
    double x0 = from.x, y0 = from.y, x1 = x, y1 = y;
    cairo_matrix_transform_point(&matrix, &x0, &y0);
    cairo_matrix_transform_point(&matrix, &x1, &y1);
    // A pen of width 0 is one device pixel wide whatever the mapping.
    double width = pen.lopnWidth.x == 0
                       ? 1
                       : std::max(1.0, pen.lopnWidth.x * std::hypot(matrix.xx, matrix.yx));
    if (context->m_recorder != nullptr) {
        context->m_recorder->Record(EMR_LINETO, {static_cast<DWORD>(x), static_cast<DWORD>(y)});
        context->m_recorder->Bounds(std::min(x0, x1) - width / 2, std::min(y0, y1) - width / 2,
                                    std::max(x0, x1) + width / 2, std::max(y0, y1) + width / 2);
        return TRUE;
    }
    cairo_t* cairo = context->m_cairo;
    if (pen.lopnStyle == PS_NULL || cairo == nullptr) {
        return TRUE;
    }
    cairo_save(cairo);
    cairo_identity_matrix(cairo);
    COLORREF colour = pen.lopnColor;
    if (context->IsImage() && context->m_state.bitmap->m_monochrome) {
        colour = gdi::MonochromeOf(colour);
    }
    gdi::SetCairoColour(cairo, colour);
    cairo_set_line_width(cairo, width);
    if (width <= 1) {
        // Thin lines run through pixel centres from the first pixel to short
        // of the last, as the system draws them: both ends go back half a
        // pixel.
        x0 = std::floor(x0) + 0.5;
        y0 = std::floor(y0) + 0.5;
        x1 = std::floor(x1) + 0.5;
        y1 = std::floor(y1) + 0.5;
        double length = std::hypot(x1 - x0, y1 - y0);
        if (length > 0) {
            double bx = (x1 - x0) / length / 2, by = (y1 - y0) / length / 2;
            x0 -= bx;
            y0 -= by;
            x1 -= bx;
            y1 -= by;
        }
        cairo_set_line_cap(cairo, CAIRO_LINE_CAP_BUTT);
    } else {
        cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
    }
    cairo_move_to(cairo, x0, y0);
    cairo_line_to(cairo, x1, y1);
    cairo_stroke(cairo);
    cairo_restore(cairo);
    return TRUE;
}

int FillRect(HDC dc, const RECT* rect, HBRUSH brush) {
    if (rect == nullptr || gdi::As<gdi::Brush>(brush, OBJ_BRUSH) == nullptr) {
        posix::SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    HGDIOBJ old = SelectObject(dc, brush);
    if (old == nullptr) {
        return 0;
    }
    BOOL done = BitBlt(dc, rect->left, rect->top, rect->right - rect->left,
                       rect->bottom - rect->top, nullptr, 0, 0, PATCOPY);
    SelectObject(dc, old);
    return done;
}

COLORREF GetPixel(HDC dc, int x, int y) {
    Dc* context = gdi::DcOf(dc);
    int px = 0, py = 0;
    if (context == nullptr || !gdi::DevicePixel(*context, x, y, px, py)) {
        return CLR_INVALID;
    }
    cairo_surface_flush(context->m_state.bitmap->m_surface);
    return gdi::ColourOf(context->m_state.bitmap->Row(py)[px]);
}

COLORREF SetPixel(HDC dc, int x, int y, COLORREF colour) {
    Dc* context = gdi::DcOf(dc);
    int px = 0, py = 0;
    if (context == nullptr || !gdi::DevicePixel(*context, x, y, px, py)) {
        return CLR_INVALID;
    }
    gdi::Bitmap* bitmap = context->m_state.bitmap;
    std::uint32_t pixel = gdi::PixelOf(colour);
    if (bitmap->m_monochrome) {
        pixel = gdi::MonochromeOf(pixel);
    }
    cairo_surface_flush(bitmap->m_surface);
    bitmap->Row(py)[px] = pixel;
    cairo_surface_mark_dirty(bitmap->m_surface);
    return gdi::ColourOf(pixel);
}

}  // namespace nvk::os
