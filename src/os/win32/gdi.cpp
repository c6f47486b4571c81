// The device contexts the layer adds, an image in memory and one on a file,
// and the calls Windows answers otherwise than the layer promises.
#include <map>
#include <mutex>
#include <optional>

#include "os/common/metafile_bits.h"
#include "os/win32/forward.h"
#include "os/win32/image_file.h"

namespace nvk::os {

namespace {

// An image device context: its own bitmap, freed with it, and the file it
// writes when it is one.
struct Image {
    ::HBITMAP bitmap;
    ::HGDIOBJ first;
    int width;
    int height;
    std::string file;
    std::optional<win32::ImageFormat> format;
};

std::mutex& ImagesLock() {
    static std::mutex lock;
    return lock;
}

std::map<::HDC, Image>& Images() {
    static std::map<::HDC, Image> images;
    return images;
}

std::optional<Image> FindImage(::HDC dc) {
    std::lock_guard<std::mutex> guard(ImagesLock());
    auto found = Images().find(dc);
    return found == Images().end() ? std::nullopt : std::optional<Image>(found->second);
}

::HDC NewImage(int width, int height, Image image) {
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
    image.bitmap = bitmap;
    image.first = ::SelectObject(dc, bitmap);
    image.width = width;
    image.height = height;
    ::PatBlt(dc, 0, 0, width, height, WHITENESS);
    std::lock_guard<std::mutex> guard(ImagesLock());
    Images()[dc] = image;
    return dc;
}

// The pixels the device context shows, as rows of RGB, top first.
std::vector<std::uint8_t> Pixels(::HDC dc, const Image& image) {
    ::BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = image.width;
    info.bmiHeader.biHeight = -image.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    std::size_t count = static_cast<std::size_t>(image.width) * image.height;
    std::vector<std::uint8_t> bgra(count * 4);
    std::vector<std::uint8_t> rgb(count * 3);
    ::HGDIOBJ shown = ::GetCurrentObject(dc, OBJ_BITMAP);
    ::GetDIBits(dc, static_cast<::HBITMAP>(shown), 0, image.height, bgra.data(), &info,
                DIB_RGB_COLORS);
    for (std::size_t i = 0; i < count; ++i) {
        rgb[i * 3] = bgra[i * 4 + 2];
        rgb[i * 3 + 1] = bgra[i * 4 + 1];
        rgb[i * 3 + 2] = bgra[i * 4];
    }
    return rgb;
}

}  // namespace

HDC CreateImageDC(int width, int height) {
    if (width <= 0 || height <= 0) {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return NewImage(width, height, Image{});
}

// Drawn on an image of the size, which DeleteDC writes in the file's format.
HDC CreateFileDC(LPCSTR fileName, int width, int height) {
    std::string name = fileName != nullptr ? fileName : "";
    std::string extension = name.substr(name.size() < 4 ? 0 : name.size() - 4);
    for (char& c : extension) {
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    }
    Image image{};
    image.file = name;
    if (extension == ".png") {
        image.format = win32::ImageFormat::Png;
    } else if (extension == ".pdf") {
        image.format = win32::ImageFormat::Pdf;
    } else if (extension == ".svg") {
        image.format = win32::ImageFormat::Svg;
    } else {
        ::SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    if (width <= 0 || height <= 0) {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return NewImage(width, height, image);
}

BOOL DeleteDC(HDC dc) {
    std::optional<Image> image = FindImage(dc);
    if (!image) {
        return ::DeleteDC(dc);
    }
    bool written =
        !image->format || win32::WriteImageFile(image->file, *image->format, image->width,
                                                image->height, Pixels(dc, *image));
    {
        std::lock_guard<std::mutex> guard(ImagesLock());
        Images().erase(dc);
    }
    // The device context's own bitmap goes with it even if selected away.
    ::SelectObject(dc, image->first);
    ::DeleteDC(dc);
    ::DeleteObject(image->bitmap);
    if (!written) {
        ::SetLastError(ERROR_CANTWRITE);
        return FALSE;
    }
    return TRUE;
}

// A PDF or SVG file is vector drawing, where operations that read the pixels
// (the source's or the target's) have nothing to read.
BOOL BitBlt(HDC dc, int x, int y, int cx, int cy, HDC source, int xSource, int ySource, DWORD rop) {
    std::optional<Image> image = FindImage(dc);
    if (image && image->format && *image->format != win32::ImageFormat::Png) {
        unsigned index = rop >> 16 & 0xFF;
        bool readsSource = ((index ^ index >> 2) & 0x33) != 0;
        bool readsTarget = ((index ^ index >> 1) & 0x55) != 0;
        if (readsSource || readsTarget) {
            ::SetLastError(ERROR_NOT_SUPPORTED);
            return FALSE;
        }
    }
    return ::BitBlt(dc, x, y, cx, cy, source, xSource, ySource, rop);
}

// Windows' own takes bits shorter than their header counts, and reads past
// them; the layer checks them first.
HENHMETAFILE SetEnhMetaFileBits(UINT size, const BYTE* data) {
    if (!EnhMetaFileBitsValid(size, data)) {
        ::SetLastError(ERROR_INVALID_DATA);
        return nullptr;
    }
    return ::SetEnhMetaFileBits(size, data);
}

}  // namespace nvk::os
