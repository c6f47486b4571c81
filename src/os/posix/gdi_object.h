// The objects behind drawing handles. A handle is the object's address,
// accepted only while the object is alive in the table of drawing objects.
#pragma once

#include <cairo.h>

#include <memory>
#include <string>
#include <vector>

#include "nvk/os/gdi_types.h"

namespace nvk::os::gdi {

class Object {
public:
    explicit Object(UINT type) : m_type(type) {}
    virtual ~Object() = default;
    UINT Type() const { return m_type; }
    // Stock objects and objects held by a device context stay alive.
    bool m_stock = false;
    int m_uses = 0;

private:
    UINT m_type;
};

struct Pen : Object {
    explicit Pen(const LOGPEN& pen) : Object(OBJ_PEN), m_log(pen) {}
    LOGPEN m_log;
};

struct Brush : Object {
    explicit Brush(const LOGBRUSH& brush) : Object(OBJ_BRUSH), m_log(brush) {}
    LOGBRUSH m_log;
};

struct Font : Object {
    explicit Font(const LOGFONTA& font) : Object(OBJ_FONT), m_log(font) {}
    LOGFONTA m_log;
};

// Pixels in cairo's 24-bit format (0x00RRGGBB); a monochrome bitmap holds
// 0 and 0xFFFFFF only.
struct Bitmap : Object {
    Bitmap(int width, int height, bool monochrome);
    ~Bitmap() override;
    std::uint32_t* Row(int y) const;
    int m_width;
    int m_height;
    bool m_monochrome;
    cairo_surface_t* m_surface;
};

// Enters an object in the table and gives its handle; the table owns it.
HGDIOBJ Register(Object* object);
// The live object of a handle, or null with ERROR_INVALID_HANDLE.
Object* Lookup(const void* handle);
void Unregister(Object* object);
template <class T>
T* As(const void* handle, UINT type) {
    Object* object = Lookup(handle);
    return object != nullptr && object->Type() == type ? static_cast<T*>(object) : nullptr;
}

inline HGDIOBJ HandleOf(Object* object) {
    return reinterpret_cast<HGDIOBJ>(object);
}

// Keeps an object alive while something holds it.
void Use(Object* object);
void Release(Object* object);

// The stock object of an id (GetStockObject's), or null; and back, -1 for
// an object that is not one.
Object* Stock(int id);
int StockId(const Object* object);

// cairo's pixel for a colour, and back.
inline std::uint32_t PixelOf(COLORREF colour) {
    return (colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF);
}
inline COLORREF ColourOf(std::uint32_t pixel) {
    return (pixel & 0xFF) << 16 | (pixel & 0xFF00) | (pixel >> 16 & 0xFF);
}
// The nearest of black and white, as a colour is put on a monochrome bitmap.
std::uint32_t MonochromeOf(std::uint32_t pixel);

}  // namespace nvk::os::gdi
