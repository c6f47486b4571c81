// The frame of a metafile drawn in the screen's pixels: the screen is the
// reference device when none is given, and a frame is in hundredths of a
// millimetre of its reference device.
#pragma once

#include "os/api/gdi.h"
#include "os/api/kernel_text.h"

namespace dlsbar {

inline nvk::os::RECT ScreenFrame(const nvk::os::RECT& pixels) {
    namespace os = nvk::os;
    os::HDC screen = os::GetDC(nullptr);
    const int across = os::GetDeviceCaps(screen, os::HORZSIZE) * 100;
    const int pixelsAcross = os::GetDeviceCaps(screen, os::HORZRES);
    const int down = os::GetDeviceCaps(screen, os::VERTSIZE) * 100;
    const int pixelsDown = os::GetDeviceCaps(screen, os::VERTRES);
    os::ReleaseDC(nullptr, screen);
    return os::RECT{os::MulDiv(pixels.left, across, pixelsAcross),
                    os::MulDiv(pixels.top, down, pixelsDown),
                    os::MulDiv(pixels.right, across, pixelsAcross),
                    os::MulDiv(pixels.bottom, down, pixelsDown)};
}

}  // namespace dlsbar
