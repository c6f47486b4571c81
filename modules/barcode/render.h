// zint's vector drawing of a symbol, recorded into an enhanced metafile.
#pragma once

#include "symbol.h"

namespace dlsbar {

// A metafile whose frame is the rectangle, the symbol filling it.
nvk::os::HENHMETAFILE Render(const zint_symbol& symbol, const nvk::os::RECT& rect,
                             const nvk::os::LOGFONTA& font, const BARCODERECORD& record);

}  // namespace dlsbar
