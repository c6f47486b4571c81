// The device context: where it draws, what is selected into it, its
// attributes, and the states SaveDC keeps.
#pragma once

#include <cairo.h>

#include <string>
#include <vector>

#include "os/posix/gdi_object.h"

namespace nvk::os::gdi {

class Recorder;

struct DcState {
    Pen* pen;
    Brush* brush;
    Font* font;
    Bitmap* bitmap;
    COLORREF bkColour = 0xFFFFFF;
    COLORREF textColour = 0;
    int bkMode = OPAQUE;
    UINT textAlign = TA_LEFT | TA_TOP;
    int mapMode = MM_TEXT;
    POINT position{0, 0};
    // Logical to world units, set while a metafile plays.
    cairo_matrix_t world;
};

class Dc : public Object {
public:
    enum class Kind { Screen, Memory, Png, Pdf, Svg, Record };
    Dc(Kind kind, UINT type);
    ~Dc() override;

    Kind m_kind;
    DcState m_state;
    std::vector<DcState> m_saved;
    // The surface drawn on: the selected bitmap's, or the file's.
    cairo_surface_t* m_surface = nullptr;
    cairo_t* m_cairo = nullptr;
    // The bitmap a memory device context starts with, and the one that
    // CreateImageDC and a PNG file give it, freed with it.
    Bitmap* m_ownBitmap = nullptr;
    std::string m_file;
    double m_dpi = 96;
    int m_width = 1;
    int m_height = 1;
    // A recording device context's metafile frame and description.
    Recorder* m_recorder = nullptr;
    RECT m_frame{};
    bool m_hasFrame = false;
    std::u16string m_description;

    // Takes `bitmap` as its own and draws on it.
    void Own(Bitmap* bitmap);
    // Draws on the surface of `bitmap`, or on none.
    void Target(Bitmap* bitmap);
    // Logical to device units, the world transform included.
    cairo_matrix_t Matrix() const;
    // A cairo context ready for drawing in logical units, or null for a
    // device context that records or has nothing to draw on.
    cairo_t* Prepare();
    // Replaces a selected object, keeping the use counts.
    void Swap(Object*& slot, Object* object);
    bool IsImage() const { return m_state.bitmap != nullptr && m_kind != Kind::Record; }
};

// The device context of a handle, or null with ERROR_INVALID_HANDLE.
Dc* DcOf(HDC dc);
void SetCairoColour(cairo_t* cairo, COLORREF colour);

}  // namespace nvk::os::gdi
