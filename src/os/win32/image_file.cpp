// The image files of file device contexts. The PNG image is stored without
// compression, which any reader takes; PDF and SVG wrap the same pixels.
#include "os/win32/image_file.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>

namespace nvk::os::win32 {

namespace {

using Bytes = std::vector<std::uint8_t>;

std::uint32_t Crc32(const std::uint8_t* data, std::size_t size, std::uint32_t crc = 0) {
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t n = 0; n < 256; ++n) {
            std::uint32_t c = n;
            for (int k = 0; k < 8; ++k) {
                c = (c & 1) != 0 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            }
            t[n] = c;
        }
        return t;
    }();
    crc = ~crc;
    for (std::size_t i = 0; i < size; ++i) {
        crc = table[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    }
    return ~crc;
}

void PutBig(Bytes& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) {
        out.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void Chunk(Bytes& out, const char* type, const Bytes& data) {
    PutBig(out, static_cast<std::uint32_t>(data.size()));
    std::size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), data.begin(), data.end());
    PutBig(out, Crc32(out.data() + start, out.size() - start));
}

Bytes Png(int width, int height, const Bytes& rgb) {
    Bytes out = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    Bytes header;
    PutBig(header, static_cast<std::uint32_t>(width));
    PutBig(header, static_cast<std::uint32_t>(height));
    header.insert(header.end(), {8, 2, 0, 0, 0});  // 8-bit RGB
    Chunk(out, "IHDR", header);
    // Each row behind its filter byte (none), in stored deflate blocks.
    Bytes raw;
    std::size_t row = static_cast<std::size_t>(width) * 3;
    for (int y = 0; y < height; ++y) {
        raw.push_back(0);
        raw.insert(raw.end(), rgb.begin() + static_cast<std::ptrdiff_t>(row * y),
                   rgb.begin() + static_cast<std::ptrdiff_t>(row * (y + 1)));
    }
    Bytes z = {0x78, 0x01};
    std::size_t at = 0;
    do {
        std::size_t length = std::min<std::size_t>(raw.size() - at, 65535);
        z.push_back(at + length == raw.size() ? 1 : 0);
        z.insert(z.end(),
                 {static_cast<std::uint8_t>(length), static_cast<std::uint8_t>(length >> 8),
                  static_cast<std::uint8_t>(~length), static_cast<std::uint8_t>(~length >> 8)});
        z.insert(z.end(), raw.begin() + static_cast<std::ptrdiff_t>(at),
                 raw.begin() + static_cast<std::ptrdiff_t>(at + length));
        at += length;
    } while (at < raw.size());
    std::uint32_t a = 1, b = 0;
    for (std::uint8_t byte : raw) {
        a = (a + byte) % 65521;
        b = (b + a) % 65521;
    }
    PutBig(z, b << 16 | a);
    Chunk(out, "IDAT", z);
    Chunk(out, "IEND", {});
    return out;
}

Bytes Pdf(int width, int height, const Bytes& rgb) {
    std::string size = std::to_string(width) + " " + std::to_string(height);
    std::string drawing =
        "q " + std::to_string(width) + " 0 0 " + std::to_string(height) + " 0 0 cm /Im Do Q\n";
    std::string pixels(rgb.begin(), rgb.end());
    const std::string objects[] = {
        "<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
        "<</Type/Page/Parent 2 0 R/MediaBox[0 0 " + size +
            "]/Resources<</XObject<</Im 4 0 R>>>>/Contents 5 0 R>>",
        "<</Type/XObject/Subtype/Image/Width " + std::to_string(width) + "/Height " +
            std::to_string(height) + "/ColorSpace/DeviceRGB/BitsPerComponent 8/Length " +
            std::to_string(pixels.size()) + ">>\nstream\n" + pixels + "\nendstream",
        "<</Length " + std::to_string(drawing.size()) + ">>\nstream\n" + drawing + "endstream"};
    std::string text = "%PDF-1.4\n";
    std::string xref = "xref\n0 6\n0000000000 65535 f \n";
    int number = 1;
    for (const std::string& object : objects) {
        char offset[21];
        std::snprintf(offset, sizeof offset, "%010zu 00000 n \n", text.size());
        xref += offset;
        text += std::to_string(number++) + " 0 obj\n" + object + "\nendobj\n";
    }
    std::size_t start = text.size();
    text +=
        xref + "trailer\n<</Size 6/Root 1 0 R>>\nstartxref\n" + std::to_string(start) + "\n%%EOF\n";
    return Bytes(text.begin(), text.end());
}

Bytes Svg(int width, int height, const Bytes& rgb) {
    static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    Bytes png = Png(width, height, rgb);
    std::string base64;
    for (std::size_t i = 0; i < png.size(); i += 3) {
        std::uint32_t group = static_cast<std::uint32_t>(png[i]) << 16;
        if (i + 1 < png.size()) {
            group |= static_cast<std::uint32_t>(png[i + 1]) << 8;
        }
        if (i + 2 < png.size()) {
            group |= png[i + 2];
        }
        for (std::size_t k = 0; k < 4; ++k) {
            base64 += k <= png.size() - i ? digits[group >> (18 - 6 * k) & 63] : '=';
        }
    }
    std::string size =
        "width=\"" + std::to_string(width) + "\" height=\"" + std::to_string(height) + "\"";
    std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<svg xmlns=\"http://www.w3.org/2000/svg\" "
        "xmlns:xlink=\"http://www.w3.org/1999/xlink\" " +
        size + ">\n<image " + size + " xlink:href=\"data:image/png;base64," + base64 +
        "\"/>\n</svg>\n";
    return Bytes(text.begin(), text.end());
}

}  // namespace

bool WriteImageFile(const std::string& path, ImageFormat format, int width, int height,
                    const std::vector<std::uint8_t>& rgb) {
    Bytes bytes = format == ImageFormat::Png   ? Png(width, height, rgb)
                  : format == ImageFormat::Pdf ? Pdf(width, height, rgb)
                                               : Svg(width, height, rgb);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(out.flush());
}

}  // namespace nvk::os::win32
