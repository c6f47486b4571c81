// Helpers of the pixel operations.
#pragma once

#include "os/posix/gdi_dc.h"

namespace nvk::os::gdi {

// The pixel of the device context's bitmap at a logical point; false when it
// has none there.
bool DevicePixel(const Dc& dc, int x, int y, int& px, int& py);

// The result of a ternary raster operation (the operation's index, bits 16
// to 23 of its code) on pattern, source and destination bits.
std::uint32_t Rop3(unsigned index, std::uint32_t pattern, std::uint32_t source,
                   std::uint32_t destination);

}  // namespace nvk::os::gdi
