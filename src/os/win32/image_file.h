// The files a file device context writes when deleted: its pixels as a PNG
// image, or as the one image of a PDF page or an SVG drawing.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace nvk::os::win32 {

enum class ImageFormat { Png, Pdf, Svg };

// `rgb` holds `height` rows of `width` pixels, 3 bytes each, top row first.
// Returns false when the file can't be written.
bool WriteImageFile(const std::string& path, ImageFormat format, int width, int height,
                    const std::vector<std::uint8_t>& rgb);

}  // namespace nvk::os::win32
