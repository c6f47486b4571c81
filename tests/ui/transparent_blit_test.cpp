#include "nvk/platform/transparent_blit.h"

#include <gtest/gtest.h>

#include <string>

#include "os/api/gdi.h"

namespace {

using namespace nvk::os;

constexpr COLORREF kRed = RGB(200, 0, 0);
constexpr COLORREF kGreen = RGB(0, 255, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kNearGreen = RGB(0, 254, 0);

// A picture as rows of letters: r, g, b, n (near green), w (white).
std::string Pixels(HDC dc, int width, int height) {
    std::string out;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const COLORREF c = GetPixel(dc, x, y);
            out += c == kRed         ? 'r'
                   : c == kGreen     ? 'g'
                   : c == kBlue      ? 'b'
                   : c == kNearGreen ? 'n'
                   : c == 0xFFFFFF   ? 'w'
                                     : '?';
        }
        out += '/';
    }
    return out;
}

void Paint(HDC dc, const std::string& rows) {
    int x = 0;
    int y = 0;
    for (char c : rows) {
        if (c == '/') {
            x = 0;
            ++y;
            continue;
        }
        SetPixel(dc, x++, y,
                 c == 'r'   ? kRed
                 : c == 'g' ? kGreen
                 : c == 'b' ? kBlue
                 : c == 'n' ? kNearGreen
                            : 0xFFFFFF);
    }
}

TEST(DrawTransparentBitmap, KeepsTheTargetUnderTheTransparentColour) {
    HDC target = CreateImageDC(5, 4);
    HDC source = CreateImageDC(4, 3);
    Paint(target, "bbbbb/bbbbb/bbbbb/bbbbb/");
    Paint(source, "wwww/wgrw/wngw/");
    // The inverted mask reaches the source through its colours, which must
    // be the default white and black.
    const COLORREF background = GetBkColor(source);

    DrawTransparentBitmap(target, 2, 1, 2, 2, source, 1, 1, kGreen);
    EXPECT_EQ(Pixels(target, 5, 4), "bbbbb/bbbrb/bbnbb/bbbbb/");
    EXPECT_EQ(Pixels(source, 4, 3), "wwww/wgrw/wngw/");
    EXPECT_EQ(GetBkColor(source), background);

    // The source's corner, all of it kept.
    DrawTransparentBitmap(target, 0, 0, 2, 2, source, 0, 0, kGreen);
    EXPECT_EQ(Pixels(target, 5, 4), "wwbbb/wbbrb/bbnbb/bbbbb/");

    DeleteDC(source);
    DeleteDC(target);
}

}  // namespace
