// Fonts and text: a LOGFONTA becomes a Pango font description; the size is
// the character height for a negative lfHeight and the cell height for a
// positive one; a non-zero lfWidth stretches to that average character
// width; the text runs along lfEscapement. As in the system's compatible
// graphics mode, the characters follow the escapement and lfOrientation is
// kept but not drawn apart.
#include "os/posix/gdi_text.h"

#include <pango/pangocairo.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include "os/api/gdi.h"
#include "os/api/nls.h"
#include "os/posix/handle.h"
#include "os/posix/metafile_recorder.h"

namespace nvk::os {

namespace gdi {

namespace {

// The cell height of a font whose lfHeight is 0.
constexpr double kDefaultCell = 16;
constexpr double kPi = 3.14159265358979323846;

struct LayoutDeleter {
    void operator()(PangoLayout* layout) const { g_object_unref(layout); }
};
using Layout = std::unique_ptr<PangoLayout, LayoutDeleter>;

// A context for measuring where the device context has none to draw on.
cairo_t* ScratchCairo() {
    thread_local std::unique_ptr<cairo_t, void (*)(cairo_t*)> cairo(
        [] {
            cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, 1, 1);
            cairo_t* made = cairo_create(surface);
            cairo_surface_destroy(surface);
            return made;
        }(),
        cairo_destroy);
    return cairo.get();
}

Layout MakeLayout(cairo_t* cairo, const LOGFONTA& font, double em, const std::string& text) {
    Layout layout(pango_cairo_create_layout(cairo));
    PangoFontDescription* description = pango_font_description_new();
    pango_font_description_set_family(description,
                                      font.lfFaceName[0] != '\0' ? font.lfFaceName : "Sans");
    pango_font_description_set_weight(
        description, static_cast<PangoWeight>(font.lfWeight == 0 ? FW_NORMAL : font.lfWeight));
    pango_font_description_set_style(description,
                                     font.lfItalic != 0 ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    pango_font_description_set_absolute_size(description, std::max(em, 0.1) * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), description);
    pango_font_description_free(description);
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
    return layout;
}

double LayoutWidth(PangoLayout* layout) {
    PangoRectangle logical;
    pango_layout_get_extents(layout, nullptr, &logical);
    return static_cast<double>(logical.width) / PANGO_SCALE;
}

double LayoutHeight(PangoLayout* layout) {
    PangoRectangle logical;
    pango_layout_get_extents(layout, nullptr, &logical);
    return static_cast<double>(logical.height) / PANGO_SCALE;
}

// How a font draws at a scale of device units to logical units: the em size
// and the horizontal stretch, both in logical units.
struct Metrics {
    double em;
    double stretch;
};

Metrics MetricsOf(const LOGFONTA& font) {
    cairo_t* cairo = ScratchCairo();
    double cell = font.lfHeight == 0 ? kDefaultCell : std::abs(font.lfHeight);
    double em = cell;
    if (font.lfHeight >= 0) {
        // A cell height: the em that gives a line of that height.
        Layout probe = MakeLayout(cairo, font, 100, "X");
        em = cell * 100 / LayoutHeight(probe.get());
    }
    double stretch = 1;
    if (font.lfWidth != 0) {
        static const char kAlphabet[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
        Layout probe = MakeLayout(cairo, font, em, kAlphabet);
        double average = LayoutWidth(probe.get()) / (sizeof kAlphabet - 1);
        stretch = average > 0 ? std::abs(font.lfWidth) / average : 1;
    }
    return Metrics{em, stretch};
}

std::u16string Utf16Of(const std::string& text) {
    int length =
        MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::u16string wide(static_cast<std::size_t>(std::max(length, 0)), u'\0');
    if (length > 0) {
        MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                            length);
    }
    return wide;
}

// The EMR_EXTTEXTOUTW record, with the string and the advance of each
// character in logical units.
void RecordText(Dc& dc, int x, int y, UINT options, const RECT* rect, const std::string& text,
                PangoLayout* layout, double stretch, const double bounds[4]) {
    std::u16string wide = Utf16Of(text);
    std::size_t stringBytes = (wide.size() * 2 + 3) / 4 * 4;
    std::vector<BYTE> record(sizeof(EMREXTTEXTOUTW) + stringBytes + wide.size() * 4);
    EMREXTTEXTOUTW head{};
    head.rclBounds = RECTL{
        static_cast<LONG>(std::floor(bounds[0])), static_cast<LONG>(std::floor(bounds[1])),
        static_cast<LONG>(std::ceil(bounds[2])) - 1, static_cast<LONG>(std::ceil(bounds[3])) - 1};
    head.iGraphicsMode = 1;
    head.emrtext.ptlReference = POINTL{x, y};
    head.emrtext.nChars = static_cast<DWORD>(wide.size());
    head.emrtext.offString = sizeof(EMREXTTEXTOUTW);
    head.emrtext.fOptions = options;
    if (rect != nullptr) {
        head.emrtext.rcl = RECTL{rect->left, rect->top, rect->right, rect->bottom};
    }
    head.emrtext.offDx = static_cast<DWORD>(sizeof(EMREXTTEXTOUTW) + stringBytes);
    std::memcpy(record.data(), &head, sizeof head);
    std::memcpy(record.data() + sizeof head, wide.data(), wide.size() * 2);
    // The advances, from the start of each character of the UTF-8 text.
    std::vector<LONG> advances;
    int previous = 0;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t next = i + 1;
        while (next < text.size() && (static_cast<unsigned char>(text[next]) & 0xC0) == 0x80) {
            ++next;
        }
        PangoRectangle position;
        pango_layout_index_to_pos(layout, static_cast<int>(next), &position);
        int end =
            next < text.size() ? position.x : static_cast<int>(LayoutWidth(layout) * PANGO_SCALE);
        int advance = static_cast<int>(std::lround((end - previous) * stretch / PANGO_SCALE));
        advances.push_back(advance);
        // A character outside the basic plane takes two units and one advance
        // each, the second of them 0.
        if (next - i == 4) {
            advances.push_back(0);
        }
        previous = end;
        i = next;
    }
    advances.resize(wide.size());
    std::memcpy(record.data() + head.emrtext.offDx, advances.data(), advances.size() * 4);
    dc.m_recorder->Append(EMR_EXTTEXTOUTW, record.data(), record.size());
    dc.m_recorder->Bounds(bounds[0], bounds[1], bounds[2], bounds[3]);
}

}  // namespace

std::string Utf8OfAnsi(const char* text, int count) {
    int length = MultiByteToWideChar(CP_ACP, 0, text, count, nullptr, 0);
    std::u16string wide(static_cast<std::size_t>(std::max(length, 0)), u'\0');
    if (length > 0) {
        MultiByteToWideChar(CP_ACP, 0, text, count, wide.data(), length);
    }
    int bytes = WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(std::max(bytes, 0)), '\0');
    if (bytes > 0) {
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(), bytes, nullptr, nullptr);
    }
    return utf8;
}

SIZE TextExtent(Dc& dc, const std::string& text) {
    const LOGFONTA& font = dc.m_state.font->m_log;
    Metrics metrics = MetricsOf(font);
    Layout layout = MakeLayout(ScratchCairo(), font, metrics.em, text);
    return SIZE{static_cast<LONG>(std::lround(LayoutWidth(layout.get()) * metrics.stretch)),
                static_cast<LONG>(std::lround(LayoutHeight(layout.get())))};
}

bool DrawTextAt(Dc& dc, int x, int y, UINT options, const RECT* rect, const std::string& text,
                UINT align) {
    const DcState& state = dc.m_state;
    const LOGFONTA& font = state.font->m_log;
    Metrics metrics = MetricsOf(font);
    cairo_matrix_t matrix = dc.Matrix();
    // Device units a logical unit, across and down.
    double across = std::hypot(matrix.xx, matrix.yx);
    double down = std::hypot(matrix.xy, matrix.yy);
    cairo_t* cairo =
        dc.m_recorder != nullptr || dc.m_cairo == nullptr ? ScratchCairo() : dc.m_cairo;
    cairo_save(cairo);
    cairo_identity_matrix(cairo);
    double px = x, py = y;
    cairo_matrix_transform_point(&matrix, &px, &py);
    cairo_translate(cairo, px, py);
    cairo_rotate(cairo, -font.lfEscapement * kPi / 1800);
    // The layout is made at an even scale, and stretched afterwards: Pango
    // would space the glyphs as if unstretched.
    cairo_scale(cairo, down, down);
    Layout layout = MakeLayout(cairo, font, metrics.em, text);
    cairo_scale(cairo, across * metrics.stretch / down, 1);
    double width = LayoutWidth(layout.get());
    double height = LayoutHeight(layout.get());
    double baseline = static_cast<double>(pango_layout_get_baseline(layout.get())) / PANGO_SCALE;
    double left = (align & TA_CENTER) == TA_CENTER ? -width / 2
                  : (align & TA_RIGHT) != 0        ? -width
                                                   : 0;
    double top = (align & TA_BASELINE) == TA_BASELINE ? -baseline
                 : (align & TA_BOTTOM) != 0           ? -height
                                                      : 0;
    if (dc.m_recorder != nullptr) {
        // The bounds in device units, from the four corners as turned.
        double bounds[4] = {1e300, 1e300, -1e300, -1e300};
        for (double corner : {0.0, 1.0, 2.0, 3.0}) {
            double cx = left + (corner == 1 || corner == 2 ? width : 0);
            double cy = top + (corner >= 2 ? height : 0);
            cairo_user_to_device(cairo, &cx, &cy);
            bounds[0] = std::min(bounds[0], cx);
            bounds[1] = std::min(bounds[1], cy);
            bounds[2] = std::max(bounds[2], cx);
            bounds[3] = std::max(bounds[3], cy);
        }
        cairo_restore(cairo);
        RecordText(dc, x, y, options, rect, text, layout.get(), metrics.stretch, bounds);
        return true;
    }
    if (dc.m_cairo == nullptr) {
        cairo_restore(cairo);
        return true;
    }
    bool monochrome = dc.IsImage() && state.bitmap->m_monochrome;
    auto colour = [&](COLORREF c) { return monochrome ? ColourOf(MonochromeOf(PixelOf(c))) : c; };
    if ((options & ETO_OPAQUE) != 0 && rect != nullptr) {
        cairo_save(cairo);
        cairo_set_matrix(cairo, &matrix);
        SetCairoColour(cairo, colour(state.bkColour));
        cairo_rectangle(cairo, rect->left, rect->top, rect->right - rect->left,
                        rect->bottom - rect->top);
        cairo_fill(cairo);
        cairo_restore(cairo);
    }
    if (state.bkMode == OPAQUE) {
        SetCairoColour(cairo, colour(state.bkColour));
        cairo_rectangle(cairo, left, top, width, height);
        cairo_fill(cairo);
    }
    SetCairoColour(cairo, colour(state.textColour));
    cairo_move_to(cairo, left, top);
    pango_cairo_show_layout(cairo, layout.get());
    cairo_restore(cairo);
    return true;
}

}  // namespace gdi

using gdi::Dc;

BOOL ExtTextOutA(HDC dc, int x, int y, UINT options, const RECT* rect, LPCSTR text, UINT count,
                 const int* /*dx*/) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr || (text == nullptr && count != 0)) {
        return FALSE;
    }
    std::string utf8 = count == 0 ? std::string() : gdi::Utf8OfAnsi(text, static_cast<int>(count));
    return gdi::DrawTextAt(*context, x, y, options, rect, utf8, context->m_state.textAlign) ? TRUE
                                                                                            : FALSE;
}

BOOL TextOutA(HDC dc, int x, int y, LPCSTR text, int count) {
    return count < 0 ? FALSE
                     : ExtTextOutA(dc, x, y, 0, nullptr, text, static_cast<UINT>(count), nullptr);
}

BOOL GetTextExtentPoint32A(HDC dc, LPCSTR text, int count, SIZE* size) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr || size == nullptr || count < 0 || (text == nullptr && count != 0)) {
        posix::SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *size = gdi::TextExtent(*context, count == 0 ? std::string() : gdi::Utf8OfAnsi(text, count));
    return TRUE;
}

int DrawTextExA(HDC dc, LPSTR text, int count, RECT* rect, UINT format,
                DRAWTEXTPARAMS* /*params*/) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr || text == nullptr || rect == nullptr) {
        posix::SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    std::string whole =
        count < 0 ? std::string(text) : std::string(text, static_cast<std::size_t>(count));
    if ((format & DT_NOPREFIX) == 0) {
        // "&&" shows one ampersand; a single one only marks the next letter.
        std::string shown;
        for (std::size_t i = 0; i < whole.size(); ++i) {
            if (whole[i] == '&' && i + 1 < whole.size()) {
                ++i;
            }
            shown += whole[i];
        }
        whole = shown;
    }
    std::vector<std::string> lines;
    if ((format & DT_SINGLELINE) != 0) {
        lines.push_back(whole);
    } else {
        std::size_t start = 0;
        for (std::size_t end; (end = whole.find('\n', start)) != std::string::npos;
             start = end + 1) {
            std::string line = whole.substr(start, end - start);
            if (!line.empty() && line.back() == '\r') {
                line.pop_back();
            }
            lines.push_back(line);
        }
        lines.push_back(whole.substr(start));
    }
    std::vector<std::string> utf8;
    std::vector<SIZE> sizes;
    LONG widest = 0, height = 0;
    for (const std::string& line : lines) {
        utf8.push_back(gdi::Utf8OfAnsi(line.c_str(), static_cast<int>(line.size())));
        sizes.push_back(gdi::TextExtent(*context, utf8.back()));
        widest = std::max(widest, sizes.back().cx);
        height += sizes.back().cy;
    }
    if ((format & DT_CALCRECT) != 0) {
        rect->right = rect->left + widest;
        rect->bottom = rect->top + height;
        return height;
    }
    LONG top = rect->top;
    if ((format & DT_SINGLELINE) != 0 && (format & DT_VCENTER) != 0) {
        top = (rect->top + rect->bottom - height) / 2;
    } else if ((format & DT_SINGLELINE) != 0 && (format & DT_BOTTOM) != 0) {
        top = rect->bottom - height;
    }
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        LONG left = rect->left;
        if ((format & DT_CENTER) != 0) {
            left = (rect->left + rect->right - sizes[i].cx) / 2;
        } else if ((format & DT_RIGHT) != 0) {
            left = rect->right - sizes[i].cx;
        }
        gdi::DrawTextAt(*context, left, top, 0, nullptr, utf8[i], TA_LEFT | TA_TOP);
        top += sizes[i].cy;
    }
    return height;
}

}  // namespace nvk::os
