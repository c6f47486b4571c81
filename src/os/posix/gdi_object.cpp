// The table of drawing objects, the stock objects, and the calls that make,
// describe and delete pens, brushes, fonts and bitmaps.
#include <cstring>
#include <mutex>
#include <unordered_set>

#include "os/api/gdi.h"
#include "os/posix/gdi_dc.h"
#include "os/posix/handle.h"
#include "os/posix/metafile_recorder.h"

namespace nvk::os {

namespace gdi {

namespace {

std::mutex& TableLock() {
    static std::mutex lock;
    return lock;
}

// Never destroyed: objects that their owners leave to the end of the
// process, as Windows lets them, stay reachable in it until then.
std::unordered_set<const void*>& Table() {
    static auto* table = new std::unordered_set<const void*>;
    return *table;
}

}  // namespace

Bitmap::Bitmap(int width, int height, bool monochrome)
    : Object(OBJ_BITMAP),
      m_width(width),
      m_height(height),
      m_monochrome(monochrome),
      m_surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)),
      m_data(cairo_image_surface_get_data(m_surface)),
      m_stride(cairo_image_surface_get_stride(m_surface)) {}

Bitmap::~Bitmap() {
    cairo_surface_destroy(m_surface);
}

HGDIOBJ Register(Object* object) {
    std::lock_guard<std::mutex> guard(TableLock());
    Table().insert(object);
    return HandleOf(object);
}

Object* Lookup(const void* handle) {
    {
        std::lock_guard<std::mutex> guard(TableLock());
        if (handle != nullptr && Table().contains(handle)) {
            return static_cast<Object*>(const_cast<void*>(handle));
        }
    }
    posix::SetErrorCode(ERROR_INVALID_HANDLE);
    return nullptr;
}

void Unregister(Object* object) {
    std::lock_guard<std::mutex> guard(TableLock());
    Table().erase(object);
}

void Use(Object* object) {
    if (object != nullptr) {
        ++object->m_uses;
    }
}

void Release(Object* object) {
    if (object != nullptr) {
        --object->m_uses;
    }
}

std::uint32_t MonochromeOf(std::uint32_t pixel) {
    unsigned sum = (pixel >> 16 & 0xFF) + (pixel >> 8 & 0xFF) + (pixel & 0xFF);
    return sum >= 3 * 128 ? 0xFFFFFF : 0;
}

namespace {

Object* MakeStock(int id) {
    auto pen = [](UINT style, COLORREF colour) { return new Pen(LOGPEN{style, {0, 0}, colour}); };
    auto brush = [](UINT style, COLORREF colour) { return new Brush(LOGBRUSH{style, colour, 0}); };
    switch (id) {
        case WHITE_BRUSH:
            return brush(BS_SOLID, 0xFFFFFF);
        case BLACK_BRUSH:
            return brush(BS_SOLID, 0);
        case NULL_BRUSH:
            return brush(BS_NULL, 0);
        case WHITE_PEN:
            return pen(PS_SOLID, 0xFFFFFF);
        case BLACK_PEN:
            return pen(PS_SOLID, 0);
        case NULL_PEN:
            return pen(PS_NULL, 0);
        case SYSTEM_FONT:
        case DEFAULT_GUI_FONT: {
            LOGFONTA font{};
            font.lfHeight = id == SYSTEM_FONT ? 16 : -11;
            font.lfWeight = id == SYSTEM_FONT ? FW_BOLD : FW_NORMAL;
            std::strcpy(font.lfFaceName, "Sans");
            return new Font(font);
        }
        default:
            return nullptr;
    }
}

}  // namespace

Object* Stock(int id) {
    static std::once_flag once;
    static Object* stock[DEFAULT_GUI_FONT + 1];
    std::call_once(once, [] {
        for (int i = 0; i <= DEFAULT_GUI_FONT; ++i) {
            stock[i] = MakeStock(i);
            if (stock[i] != nullptr) {
                stock[i]->m_stock = true;
                Register(stock[i]);
            }
        }
    });
    return id >= 0 && id <= DEFAULT_GUI_FONT ? stock[id] : nullptr;
}

int StockId(const Object* object) {
    for (int i = 0; i <= DEFAULT_GUI_FONT; ++i) {
        if (Stock(i) == object) {
            return i;
        }
    }
    return -1;
}

}  // namespace gdi

using gdi::Bitmap;
using posix::SetErrorCode;

HGDIOBJ GetStockObject(int object) {
    return gdi::HandleOf(gdi::Stock(object));
}

HPEN CreatePen(int style, int width, COLORREF colour) {
    if (style != PS_SOLID && style != PS_NULL) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return static_cast<HPEN>(gdi::Register(new gdi::Pen(
        LOGPEN{static_cast<UINT>(style), {width < 0 ? 0 : width, 0}, colour & 0xFFFFFF})));
}

HBRUSH CreateSolidBrush(COLORREF colour) {
    return static_cast<HBRUSH>(
        gdi::Register(new gdi::Brush(LOGBRUSH{BS_SOLID, colour & 0xFFFFFF, 0})));
}

HFONT CreateFontIndirectA(const LOGFONTA* font) {
    if (font == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    LOGFONTA copy = *font;
    copy.lfFaceName[LF_FACESIZE - 1] = '\0';
    return static_cast<HFONT>(gdi::Register(new gdi::Font(copy)));
}

HBITMAP CreateBitmap(int width, int height, UINT planes, UINT bitsPerPixel, LPCVOID bits) {
    if (width < 0 || height < 0 || planes != 1 ||
        (bitsPerPixel != 1 && bitsPerPixel != 24 && bitsPerPixel != 32)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    // An empty bitmap is the one-pixel monochrome bitmap, as on Windows.
    bool monochrome = bitsPerPixel == 1 || width == 0 || height == 0;
    if (width == 0 || height == 0) {
        width = height = 1;
        bits = nullptr;
    }
    auto* bitmap = new Bitmap(width, height, monochrome);
    if (cairo_surface_status(bitmap->m_surface) != CAIRO_STATUS_SUCCESS) {
        delete bitmap;
        SetErrorCode(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const auto* in = static_cast<const BYTE*>(bits);
    int rowBytes = bitsPerPixel == 1 ? (width + 15) / 16 * 2
                                     : (width * static_cast<int>(bitsPerPixel) / 8 + 1) / 2 * 2;
    cairo_surface_flush(bitmap->m_surface);
    for (int y = 0; y < height; ++y) {
        std::uint32_t* row = bitmap->Row(y);
        for (int x = 0; x < width; ++x) {
            if (in == nullptr) {
                row[x] = 0;
            } else if (bitsPerPixel == 1) {
                row[x] = in[y * rowBytes + x / 8] >> (7 - x % 8) & 1 ? 0xFFFFFF : 0;
            } else {
                const BYTE* p = in + y * rowBytes + x * (bitsPerPixel / 8);
                row[x] = std::uint32_t(p[2]) << 16 | std::uint32_t(p[1]) << 8 | p[0];
            }
        }
    }
    cairo_surface_mark_dirty(bitmap->m_surface);
    return static_cast<HBITMAP>(gdi::Register(bitmap));
}

HBITMAP CreateCompatibleBitmap(HDC dc, int width, int height) {
    gdi::Dc* context = gdi::DcOf(dc);
    if (context == nullptr) {
        return nullptr;
    }
    bool monochrome = context->m_kind == gdi::Dc::Kind::Memory &&
                      context->m_state.bitmap != nullptr && context->m_state.bitmap->m_monochrome;
    return CreateBitmap(width, height, 1, monochrome ? 1 : 32, nullptr);
}

BOOL DeleteObject(HGDIOBJ object) {
    gdi::Object* found = gdi::Lookup(object);
    if (found == nullptr || found->Type() == OBJ_DC || found->Type() == OBJ_MEMDC ||
        found->Type() == OBJ_ENHMETADC) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (found->m_stock) {
        return TRUE;
    }
    if (found->m_uses > 0) {
        return FALSE;
    }
    gdi::Recorder::ObjectDeleted(found);
    gdi::Unregister(found);
    delete found;
    return TRUE;
}

DWORD GetObjectType(HGDIOBJ object) {
    gdi::Object* found = gdi::Lookup(object);
    return found != nullptr ? found->Type() : 0;
}

int GetObjectA(HGDIOBJ object, int size, LPVOID buffer) {
    gdi::Object* found = gdi::Lookup(object);
    if (found == nullptr) {
        return 0;
    }
    BITMAP bitmap{};
    const void* data = nullptr;
    int length = 0;
    switch (found->Type()) {
        case OBJ_PEN:
            data = &static_cast<gdi::Pen*>(found)->m_log;
            length = sizeof(LOGPEN);
            break;
        case OBJ_BRUSH:
            data = &static_cast<gdi::Brush*>(found)->m_log;
            length = sizeof(LOGBRUSH);
            break;
        case OBJ_FONT:
            data = &static_cast<gdi::Font*>(found)->m_log;
            length = sizeof(LOGFONTA);
            break;
        case OBJ_BITMAP: {
            auto* b = static_cast<Bitmap*>(found);
            bitmap.bmWidth = b->m_width;
            bitmap.bmHeight = b->m_height;
            bitmap.bmPlanes = 1;
            bitmap.bmBitsPixel = b->m_monochrome ? 1 : 32;
            bitmap.bmWidthBytes = b->m_monochrome ? (b->m_width + 15) / 16 * 2 : b->m_width * 4;
            data = &bitmap;
            length = sizeof(BITMAP);
            break;
        }
        default:
            SetErrorCode(ERROR_INVALID_HANDLE);
            return 0;
    }
    if (buffer == nullptr) {
        return length;
    }
    // A smaller buffer takes the start of the record, as Windows gives it.
    length = size < length ? (size < 0 ? 0 : size) : length;
    std::memcpy(buffer, data, static_cast<std::size_t>(length));
    return length;
}

}  // namespace nvk::os
