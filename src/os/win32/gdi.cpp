// The device contexts the layer adds: an image in memory, and one on a file.
#include "os/win32/forward.h"

namespace nvk::os {

HDC CreateImageDC(int width, int height) {
    ::HDC screen = ::GetDC(nullptr);
    ::HDC dc = ::CreateCompatibleDC(screen);
    ::HBITMAP bitmap = ::CreateCompatibleBitmap(screen, width, height);
    ::ReleaseDC(nullptr, screen);
    if (dc == nullptr || bitmap == nullptr) {
        if (dc != nullptr) {
            ::DeleteDC(dc);
        }
        return nullptr;
    }
    ::SelectObject(dc, bitmap);
    ::PatBlt(dc, 0, 0, width, height, WHITENESS);
    return reinterpret_cast<HDC>(dc);
}

// Windows writes no image files from a device context of its own; the
// programs that draw bar codes to files need the POSIX build.
HDC CreateFileDC(LPCSTR, int, int) {
    ::SetLastError(ERROR_NOT_SUPPORTED);
    return nullptr;
}

}  // namespace nvk::os
