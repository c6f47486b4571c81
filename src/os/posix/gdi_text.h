// Text through Pango, shared by the text calls and the metafile player.
#pragma once

#include <string>

#include "os/posix/gdi_dc.h"

namespace nvk::os::gdi {

// Draws (or records) UTF-8 text at a logical point, aligned by `align`.
bool DrawTextAt(Dc& dc, int x, int y, UINT options, const RECT* rect, const std::string& text,
                UINT align);
// The text's width and height in logical units, unrotated.
SIZE TextExtent(Dc& dc, const std::string& text);
// The ANSI text as UTF-8.
std::string Utf8OfAnsi(const char* text, int count);

}  // namespace nvk::os::gdi
