#include "render.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "frame.h"
#include "os/api/gdi.h"
#include "os/api/kernel_text.h"
#include "os/api/metafile.h"

namespace dlsbar {

namespace os = nvk::os;

namespace {

// Maps the symbol's units onto the rectangle, turned by the rotation code:
// u runs along the symbol, v across it, from its top left corner.
class Placement {
public:
    Placement(const zint_vector& vector, const os::RECT& rect, int rotation)
        : m_rect(rect), m_rotation(rotation) {
        double width = rect.right - rect.left, height = rect.bottom - rect.top;
        bool sideways = rotation == 1 || rotation == 2;
        m_along = (sideways ? height : width) / vector.width;
        m_across = (sideways ? width : height) / vector.height;
    }

    void Map(double u, double v, double& x, double& y) const {
        double a = u * m_along, c = v * m_across;
        switch (m_rotation) {
            case 2:  // a quarter counter-clockwise: the start at the bottom
                x = m_rect.left + c;
                y = m_rect.bottom - a;
                break;
            case -1:
                x = m_rect.right - a;
                y = m_rect.bottom - c;
                break;
            case 1:  // a quarter clockwise: the start at the top
                x = m_rect.right - c;
                y = m_rect.top + a;
                break;
            default:
                x = m_rect.left + a;
                y = m_rect.top + c;
                break;
        }
    }

    int Escapement() const {
        return m_rotation == 2 ? 900 : m_rotation == -1 ? 1800 : m_rotation == 1 ? 2700 : 0;
    }
    double TextScale() const { return std::min(m_along, m_across); }

private:
    os::RECT m_rect;
    int m_rotation;
    double m_along;
    double m_across;
};

void Fill(os::HDC dc, double x0, double y0, double x1, double y1) {
    int left = static_cast<int>(std::lround(std::min(x0, x1)));
    int top = static_cast<int>(std::lround(std::min(y0, y1)));
    int right = static_cast<int>(std::lround(std::max(x0, x1)));
    int bottom = static_cast<int>(std::lround(std::max(y0, y1)));
    os::BitBlt(dc, left, top, right - left, bottom - top, nullptr, 0, 0, os::PATCOPY);
}

}  // namespace

os::HENHMETAFILE Render(const zint_symbol& symbol, const os::RECT& rect, const os::LOGFONTA& font,
                        const BARCODERECORD& record) {
    const zint_vector& vector = *symbol.vector;
    Placement place(vector, rect, record.rotation);
    os::RECT frame = ScreenFrame(rect);
    os::HDC dc = os::CreateEnhMetaFileA(nullptr, nullptr, &frame, "Dlsbar32\0bar code\0");
    if (dc == nullptr) {
        return nullptr;
    }
    os::HBRUSH background = os::CreateSolidBrush(record.backgroundColour);
    os::HGDIOBJ oldBrush = os::SelectObject(dc, background);
    os::BitBlt(dc, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top, nullptr, 0,
               0, os::PATCOPY);
    os::HBRUSH bars = os::CreateSolidBrush(record.barColour);
    os::SelectObject(dc, bars);
    for (const zint_vector_rect* bar = vector.rectangles; bar != nullptr; bar = bar->next) {
        double x0, y0, x1, y1;
        place.Map(bar->x, bar->y, x0, y0);
        place.Map(bar->x + bar->width, bar->y + bar->height, x1, y1);
        Fill(dc, x0, y0, x1, y1);
    }
    os::SelectObject(dc, oldBrush);
    os::DeleteObject(background);
    os::DeleteObject(bars);

    if (vector.strings != nullptr) {
        os::SetBkMode(dc, os::TRANSPARENT);
        os::SetTextColor(dc, record.barColour);
    }
    for (const zint_vector_string* text = vector.strings; text != nullptr; text = text->next) {
        os::LOGFONTA log = font;
        log.lfHeight = -std::max(1L, std::lround(text->fsize * place.TextScale()));
        log.lfWidth = 0;
        log.lfEscapement = log.lfOrientation = place.Escapement();
        os::HFONT made = os::CreateFontIndirectA(&log);
        os::HGDIOBJ oldFont = os::SelectObject(dc, made);
        os::SetTextAlign(dc, os::TA_BASELINE | (text->halign == 1   ? os::TA_LEFT
                                                : text->halign == 2 ? os::TA_RIGHT
                                                                    : os::TA_CENTER));
        double x, y;
        place.Map(text->x, text->y, x, y);
        const char* chars = reinterpret_cast<const char*>(text->text);
        os::TextOutA(dc, static_cast<int>(std::lround(x)), static_cast<int>(std::lround(y)), chars,
                     static_cast<int>(std::strlen(chars)));
        os::SelectObject(dc, oldFont);
        os::DeleteObject(made);
    }
    return os::CloseEnhMetaFile(dc);
}

}  // namespace dlsbar
