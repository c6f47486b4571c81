// Device contexts: making them, their selected objects and attributes,
// SaveDC and RestoreDC, and the mapping from logical to device units.
#include "os/posix/gdi_dc.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <string_view>

#include "os/api/gdi.h"
#include "os/api/path_map.h"
#include "os/posix/handle.h"
#include "os/posix/metafile_recorder.h"

namespace nvk::os {

namespace gdi {

Dc::Dc(Kind kind, UINT type) : Object(type), m_kind(kind) {
    m_state.pen = static_cast<Pen*>(Stock(BLACK_PEN));
    m_state.brush = static_cast<Brush*>(Stock(WHITE_BRUSH));
    m_state.font = static_cast<Font*>(Stock(SYSTEM_FONT));
    m_state.bitmap = nullptr;
    cairo_matrix_init_identity(&m_state.world);
}

Dc::~Dc() {
    auto release = [](const DcState& state) {
        Release(state.pen);
        Release(state.brush);
        Release(state.font);
        Release(state.bitmap);
    };
    release(m_state);
    for (const DcState& state : m_saved) {
        release(state);
    }
    if (m_cairo != nullptr) {
        cairo_destroy(m_cairo);
    }
    if (m_surface != nullptr) {
        cairo_surface_destroy(m_surface);
    }
    if (m_ownBitmap != nullptr) {
        Unregister(m_ownBitmap);
        delete m_ownBitmap;
    }
    delete m_recorder;
}

void Dc::Target(Bitmap* bitmap) {
    Object* slot = m_state.bitmap;
    Swap(slot, bitmap);
    m_state.bitmap = bitmap;
    if (m_cairo != nullptr) {
        cairo_destroy(m_cairo);
        m_cairo = nullptr;
    }
    if (bitmap != nullptr) {
        m_cairo = cairo_create(bitmap->m_surface);
        // Pixels are whole: bars and lines stay sharp, as the system draws them.
        cairo_set_antialias(m_cairo, CAIRO_ANTIALIAS_NONE);
        m_width = bitmap->m_width;
        m_height = bitmap->m_height;
    }
}

cairo_matrix_t Dc::Matrix() const {
    double perInch = 0;
    switch (m_state.mapMode) {
        case MM_LOMETRIC:
            perInch = 254;
            break;
        case MM_HIMETRIC:
            perInch = 2540;
            break;
        case MM_LOENGLISH:
            perInch = 100;
            break;
        case MM_HIENGLISH:
            perInch = 1000;
            break;
        case MM_TWIPS:
            perInch = 1440;
            break;
        default:
            break;
    }
    cairo_matrix_t map;
    if (perInch == 0) {
        cairo_matrix_init_identity(&map);
    } else {
        // The metric modes count y upward.
        cairo_matrix_init_scale(&map, m_dpi / perInch, -m_dpi / perInch);
    }
    cairo_matrix_t result;
    cairo_matrix_multiply(&result, &m_state.world, &map);
    return result;
}

cairo_t* Dc::Prepare() {
    if (m_cairo == nullptr) {
        return nullptr;
    }
    cairo_matrix_t matrix = Matrix();
    cairo_set_matrix(m_cairo, &matrix);
    return m_cairo;
}

void Dc::Swap(Object*& slot, Object* object) {
    Use(object);
    Release(slot);
    slot = object;
}

Dc* DcOf(HDC dc) {
    Object* object = Lookup(dc);
    if (object == nullptr) {
        return nullptr;
    }
    UINT type = object->Type();
    if (type != OBJ_DC && type != OBJ_MEMDC && type != OBJ_ENHMETADC) {
        posix::SetErrorCode(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    return static_cast<Dc*>(object);
}

void SetCairoColour(cairo_t* cairo, COLORREF colour) {
    cairo_set_source_rgb(cairo, GetRValue(colour) / 255.0, GetGValue(colour) / 255.0,
                         GetBValue(colour) / 255.0);
}

namespace {

HDC HandleOfDc(Dc* dc) {
    return reinterpret_cast<HDC>(Register(dc));
}

}  // namespace

void Dc::Own(Bitmap* bitmap) {
    // Its own bitmap goes with the device context, never by DeleteObject.
    bitmap->m_stock = true;
    Register(bitmap);
    m_ownBitmap = bitmap;
    Target(bitmap);
}

namespace {

// A device context drawing on its own white colour bitmap.
Dc* ImageDc(Dc::Kind kind, UINT type, int width, int height) {
    auto* dc = new Dc(kind, type);
    dc->Own(new Bitmap(width, height, false));
    cairo_set_source_rgb(dc->m_cairo, 1, 1, 1);
    cairo_paint(dc->m_cairo);
    return dc;
}

}  // namespace

}  // namespace gdi

using gdi::Dc;
using posix::SetErrorCode;

HDC GetDC(HWND /*window*/) {
    auto* dc = new Dc(Dc::Kind::Screen, OBJ_DC);
    dc->m_width = 1920;
    dc->m_height = 1080;
    return gdi::HandleOfDc(dc);
}

int ReleaseDC(HWND /*window*/, HDC dc) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr || context->m_kind != Dc::Kind::Screen) {
        return 0;
    }
    gdi::Unregister(context);
    delete context;
    return 1;
}

HDC CreateFileDC(LPCSTR fileName, int width, int height) {
    std::string native = fileName != nullptr ? ToNativePath(fileName) : std::string();
    std::string_view name = native;
    if (native.empty() || width <= 0 || height <= 0) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto ends = [&](std::string_view extension) {
        if (name.size() < extension.size()) {
            return false;
        }
        std::string tail(name.substr(name.size() - extension.size()));
        for (char& c : tail) {
            c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
        }
        return tail == extension;
    };
    Dc* dc = nullptr;
    if (ends(".png")) {
        dc = gdi::ImageDc(Dc::Kind::Png, OBJ_DC, width, height);
    } else if (ends(".pdf") || ends(".svg")) {
        bool pdf = ends(".pdf");
        cairo_surface_t* surface = pdf ? cairo_pdf_surface_create(native.c_str(), width, height)
                                       : cairo_svg_surface_create(native.c_str(), width, height);
        if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
            cairo_surface_destroy(surface);
            SetErrorCode(ERROR_PATH_NOT_FOUND);
            return nullptr;
        }
        dc = new Dc(pdf ? Dc::Kind::Pdf : Dc::Kind::Svg, OBJ_DC);
        dc->m_surface = surface;
        dc->m_cairo = cairo_create(surface);
        dc->m_dpi = 72;
        dc->m_width = width;
        dc->m_height = height;
        cairo_set_source_rgb(dc->m_cairo, 1, 1, 1);
        cairo_paint(dc->m_cairo);
    } else {
        SetErrorCode(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    dc->m_file = native;
    return gdi::HandleOfDc(dc);
}

HDC CreateImageDC(int width, int height) {
    if (width <= 0 || height <= 0) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return gdi::HandleOfDc(gdi::ImageDc(Dc::Kind::Memory, OBJ_MEMDC, width, height));
}

HDC CreateCompatibleDC(HDC dc) {
    if (dc != nullptr && gdi::DcOf(dc) == nullptr) {
        return nullptr;
    }
    auto* memory = new Dc(Dc::Kind::Memory, OBJ_MEMDC);
    // Every memory device context starts on a one-pixel monochrome bitmap.
    memory->Own(new gdi::Bitmap(1, 1, true));
    return gdi::HandleOfDc(memory);
}

BOOL DeleteDC(HDC dc) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr || context->m_kind == Dc::Kind::Record) {
        return FALSE;
    }
    bool written = true;
    if (context->m_kind == Dc::Kind::Png) {
        cairo_surface_flush(context->m_ownBitmap->m_surface);
        written = cairo_surface_write_to_png(context->m_ownBitmap->m_surface,
                                             context->m_file.c_str()) == CAIRO_STATUS_SUCCESS;
    } else if (context->m_surface != nullptr) {
        cairo_destroy(context->m_cairo);
        context->m_cairo = nullptr;
        cairo_surface_finish(context->m_surface);
        written = cairo_surface_status(context->m_surface) == CAIRO_STATUS_SUCCESS;
    }
    gdi::Unregister(context);
    // The device context's own bitmap goes with it even if selected away.
    context->Target(nullptr);
    delete context;
    if (!written) {
        SetErrorCode(ERROR_CANTWRITE);
    }
    return written ? TRUE : FALSE;
}

int GetDeviceCaps(HDC dc, int index) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr) {
        return 0;
    }
    switch (index) {
        case HORZRES:
            return context->m_width;
        case VERTRES:
            return context->m_height;
        case HORZSIZE:
            return static_cast<int>(context->m_width * 25.4 / context->m_dpi + 0.5);
        case VERTSIZE:
            return static_cast<int>(context->m_height * 25.4 / context->m_dpi + 0.5);
        case BITSPIXEL:
            return context->m_state.bitmap != nullptr && context->m_state.bitmap->m_monochrome ? 1
                                                                                               : 32;
        case LOGPIXELSX:
        case LOGPIXELSY:
            return static_cast<int>(context->m_dpi);
        default:
            return 0;
    }
}

int SaveDC(HDC dc) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr) {
        return 0;
    }
    const gdi::DcState& state = context->m_state;
    gdi::Use(state.pen);
    gdi::Use(state.brush);
    gdi::Use(state.font);
    gdi::Use(state.bitmap);
    context->m_saved.push_back(state);
    if (context->m_recorder != nullptr) {
        context->m_recorder->Record(EMR_SAVEDC, {});
    }
    return static_cast<int>(context->m_saved.size());
}

BOOL RestoreDC(HDC dc, int savedDC) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr) {
        return FALSE;
    }
    int count = static_cast<int>(context->m_saved.size());
    int level = savedDC < 0 ? count + savedDC + 1 : savedDC;
    if (level < 1 || level > count) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (context->m_recorder != nullptr) {
        context->m_recorder->Record(EMR_RESTOREDC, {static_cast<DWORD>(level - count - 1)});
    }
    while (static_cast<int>(context->m_saved.size()) > level) {
        const gdi::DcState& dropped = context->m_saved.back();
        gdi::Release(dropped.pen);
        gdi::Release(dropped.brush);
        gdi::Release(dropped.font);
        gdi::Release(dropped.bitmap);
        context->m_saved.pop_back();
    }
    gdi::DcState saved = context->m_saved.back();
    context->m_saved.pop_back();
    gdi::DcState& state = context->m_state;
    gdi::Release(state.pen);
    gdi::Release(state.brush);
    gdi::Release(state.font);
    gdi::Bitmap* bitmap = saved.bitmap;
    saved.bitmap = state.bitmap;
    state = saved;
    if (bitmap != state.bitmap) {
        context->Target(bitmap);
    }
    gdi::Release(bitmap);
    return TRUE;
}

HGDIOBJ SelectObject(HDC dc, HGDIOBJ object) {
    Dc* context = gdi::DcOf(dc);
    gdi::Object* found = context != nullptr ? gdi::Lookup(object) : nullptr;
    if (found == nullptr) {
        return nullptr;
    }
    gdi::DcState& state = context->m_state;
    gdi::Object* old = nullptr;
    auto swap = [&](auto*& slot) {
        old = slot;
        gdi::Object* generic = slot;
        context->Swap(generic, found);
        slot = static_cast<std::remove_reference_t<decltype(slot)>>(found);
    };
    switch (found->Type()) {
        case OBJ_PEN:
            swap(state.pen);
            break;
        case OBJ_BRUSH:
            swap(state.brush);
            break;
        case OBJ_FONT:
            swap(state.font);
            break;
        case OBJ_BITMAP: {
            // Only a memory device context shows a bitmap, and a bitmap shows
            // in one device context at a time.
            auto* bitmap = static_cast<gdi::Bitmap*>(found);
            if (context->m_kind != Dc::Kind::Memory ||
                (bitmap != state.bitmap && bitmap->m_uses > 0)) {
                return nullptr;
            }
            old = state.bitmap;
            context->Target(bitmap);
            return gdi::HandleOf(old);
        }
        default:
            SetErrorCode(ERROR_INVALID_PARAMETER);
            return nullptr;
    }
    if (context->m_recorder != nullptr) {
        context->m_recorder->Select(found);
    }
    return gdi::HandleOf(old);
}

HGDIOBJ GetCurrentObject(HDC dc, UINT type) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr) {
        return nullptr;
    }
    const gdi::DcState& state = context->m_state;
    switch (type) {
        case OBJ_PEN:
            return gdi::HandleOf(state.pen);
        case OBJ_BRUSH:
            return gdi::HandleOf(state.brush);
        case OBJ_FONT:
            return gdi::HandleOf(state.font);
        case OBJ_BITMAP:
            return gdi::HandleOf(state.bitmap);
        default:
            SetErrorCode(ERROR_INVALID_PARAMETER);
            return nullptr;
    }
}

namespace {

// Sets one attribute of a device context, recording it; returns the old
// value, or `failure` for an unknown handle.
template <class T>
T SetAttribute(HDC dc, T gdi::DcState::*field, T value, DWORD recordType, T failure) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr) {
        return failure;
    }
    T old = context->m_state.*field;
    context->m_state.*field = value;
    if (context->m_recorder != nullptr && recordType != 0) {
        context->m_recorder->Record(recordType, {static_cast<DWORD>(value)});
    }
    return old;
}

template <class T>
T GetAttribute(HDC dc, T gdi::DcState::*field, T failure) {
    Dc* context = gdi::DcOf(dc);
    return context != nullptr ? context->m_state.*field : failure;
}

}  // namespace

int SetMapMode(HDC dc, int mode) {
    if (mode < MM_TEXT || mode > MM_TWIPS) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return SetAttribute(dc, &gdi::DcState::mapMode, mode, 0, 0);
}

int GetMapMode(HDC dc) {
    return GetAttribute(dc, &gdi::DcState::mapMode, 0);
}

COLORREF SetBkColor(HDC dc, COLORREF colour) {
    return SetAttribute(dc, &gdi::DcState::bkColour, colour & 0xFFFFFF, EMR_SETBKCOLOR,
                        CLR_INVALID);
}

COLORREF GetBkColor(HDC dc) {
    return GetAttribute(dc, &gdi::DcState::bkColour, CLR_INVALID);
}

COLORREF SetTextColor(HDC dc, COLORREF colour) {
    return SetAttribute(dc, &gdi::DcState::textColour, colour & 0xFFFFFF, EMR_SETTEXTCOLOR,
                        CLR_INVALID);
}

COLORREF GetTextColor(HDC dc) {
    return GetAttribute(dc, &gdi::DcState::textColour, CLR_INVALID);
}

int SetBkMode(HDC dc, int mode) {
    if (mode != TRANSPARENT && mode != OPAQUE) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return SetAttribute(dc, &gdi::DcState::bkMode, mode, EMR_SETBKMODE, 0);
}

UINT SetTextAlign(HDC dc, UINT align) {
    return SetAttribute(dc, &gdi::DcState::textAlign, align, EMR_SETTEXTALIGN, UINT(0xFFFFFFFF));
}

BOOL MoveToEx(HDC dc, int x, int y, POINT* previous) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr) {
        return FALSE;
    }
    if (previous != nullptr) {
        *previous = context->m_state.position;
    }
    context->m_state.position = POINT{x, y};
    if (context->m_recorder != nullptr) {
        context->m_recorder->Record(EMR_MOVETOEX, {static_cast<DWORD>(x), static_cast<DWORD>(y)});
    }
    return TRUE;
}

}  // namespace nvk::os
