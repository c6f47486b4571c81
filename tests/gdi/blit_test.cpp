// Raster operations against a model that states each operation's formula,
// on random pixels, with the monochrome conversions of both directions.
#include <map>
#include <random>

#include "gdi/gdi_test_support.h"

namespace nvk::os {
namespace {

using test::Canvas;

constexpr int kSize = 6;

std::uint32_t Model(DWORD rop, std::uint32_t p, std::uint32_t s, std::uint32_t d) {
    std::map<DWORD, std::uint32_t> results = {
        {SRCCOPY, s},       {SRCAND, s & d},         {SRCPAINT, s | d},    {NOTSRCCOPY, ~s},
        {SRCINVERT, s ^ d}, {SRCERASE, s & ~d},      {MERGEPAINT, ~s | d}, {PATCOPY, p},
        {PATINVERT, p ^ d}, {DSTINVERT, ~d},         {BLACKNESS, 0},       {WHITENESS, 0xFFFFFF},
        {MERGECOPY, p & s}, {NOTSRCERASE, ~(s | d)},
    };
    return results.at(rop) & 0xFFFFFF;
}

TEST(BitBlt, RasterOperationsOnColourPixelsMatchTheirFormulas) {
    std::mt19937 random(7);
    const DWORD rops[] = {SRCCOPY,   SRCAND,     SRCPAINT,  NOTSRCCOPY, SRCINVERT,
                          SRCERASE,  MERGEPAINT, PATCOPY,   PATINVERT,  DSTINVERT,
                          BLACKNESS, WHITENESS,  MERGECOPY, NOTSRCERASE};
    for (DWORD rop : rops) {
        Canvas source(kSize, kSize), target(kSize, kSize);
        COLORREF brushColour = random() & 0xFFFFFF;
        HBRUSH brush = CreateSolidBrush(brushColour);
        HGDIOBJ oldBrush = SelectObject(target, brush);
        COLORREF s[kSize][kSize], d[kSize][kSize];
        for (int y = 0; y < kSize; ++y) {
            for (int x = 0; x < kSize; ++x) {
                s[y][x] = SetPixel(source, x, y, random() & 0xFFFFFF);
                d[y][x] = SetPixel(target, x, y, random() & 0xFFFFFF);
            }
        }
        // A 3x3 block from (1, 2) of the source onto (2, 1) of the target.
        ASSERT_TRUE(BitBlt(target, 2, 1, 3, 3, source, 1, 2, rop));
        for (int y = 0; y < kSize; ++y) {
            for (int x = 0; x < kSize; ++x) {
                bool inside = x >= 2 && x < 5 && y >= 1 && y < 4;
                COLORREF expected =
                    inside ? Model(rop, brushColour, s[y + 1][x - 1], d[y][x]) : d[y][x];
                ASSERT_EQ(GetPixel(target, x, y), expected)
                    << std::hex << rop << " " << x << "," << y;
            }
        }
        SelectObject(target, oldBrush);
        EXPECT_TRUE(DeleteObject(brush));
    }
}

TEST(BitBlt, ConvertsBetweenColourAndMonochrome) {
    Canvas colour(4, 1), mono(4, 1, true);
    const COLORREF pixels[] = {RGB(255, 0, 0), RGB(0, 0, 255), RGB(255, 0, 0), 0xFFFFFF};
    for (int x = 0; x < 4; ++x) {
        SetPixel(colour, x, 0, pixels[x]);
    }
    // To monochrome: the source's background colour becomes white.
    SetBkColor(colour, RGB(255, 0, 0));
    ASSERT_TRUE(BitBlt(mono, 0, 0, 4, 1, colour, 0, 0, SRCCOPY));
    const COLORREF maskExpected[] = {0xFFFFFF, 0, 0xFFFFFF, 0};
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(GetPixel(mono, x, 0), maskExpected[x]) << x;
    }
    // From monochrome: white is the target's background, black its text colour.
    SetBkColor(colour, RGB(0, 255, 0));
    SetTextColor(colour, RGB(10, 20, 30));
    ASSERT_TRUE(BitBlt(colour, 0, 0, 4, 1, mono, 0, 0, SRCCOPY));
    const COLORREF back[] = {RGB(0, 255, 0), RGB(10, 20, 30), RGB(0, 255, 0), RGB(10, 20, 30)};
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(GetPixel(colour, x, 0), back[x]) << x;
    }
    // What is drawn on a monochrome bitmap is black or white.
    EXPECT_EQ(SetPixel(mono, 0, 0, RGB(200, 200, 200)), 0xFFFFFFu);
    EXPECT_EQ(SetPixel(mono, 1, 0, RGB(90, 20, 200)), 0u);
}

// The mask blit that draws a bitmap with one colour left transparent.
TEST(BitBlt, MaskBlitLeavesTheTransparentColourUnpainted) {
    const int w = 5, h = 3;
    const COLORREF key = RGB(255, 0, 255);
    Canvas picture(w, h), screen(w, h), mask(w, h, true), work(w, h);
    std::mt19937 random(3);
    COLORREF drawn[h][w], under[h][w];
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            drawn[y][x] = SetPixel(picture, x, y, (x + y) % 2 == 0 ? key : random() & 0xFFFF);
            under[y][x] = SetPixel(screen, x, y, random() & 0xFFFFFF);
        }
    }
    SetBkColor(picture, key);
    ASSERT_TRUE(BitBlt(mask, 0, 0, w, h, picture, 0, 0, SRCCOPY));
    ASSERT_TRUE(BitBlt(work, 0, 0, w, h, screen, 0, 0, SRCCOPY));
    SetBkColor(work, 0xFFFFFF);
    SetTextColor(work, 0);
    ASSERT_TRUE(BitBlt(work, 0, 0, w, h, mask, 0, 0, SRCAND));
    ASSERT_TRUE(BitBlt(mask, 0, 0, w, h, mask, 0, 0, NOTSRCCOPY));
    SetBkColor(picture, 0xFFFFFF);
    SetTextColor(picture, 0);
    ASSERT_TRUE(BitBlt(picture, 0, 0, w, h, mask, 0, 0, SRCAND));
    ASSERT_TRUE(BitBlt(work, 0, 0, w, h, picture, 0, 0, SRCPAINT));
    ASSERT_TRUE(BitBlt(screen, 0, 0, w, h, work, 0, 0, SRCCOPY));
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            EXPECT_EQ(GetPixel(screen, x, y), drawn[y][x] == key ? under[y][x] : drawn[y][x]);
        }
    }
}

TEST(BitBlt, ClipsToTheBitmapAndRefusesAMissingSource) {
    Canvas target(4, 4);
    HBRUSH black = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    RECT all{0, 0, 4, 4};
    FillRect(target, &all, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    HGDIOBJ old = SelectObject(target, black);
    EXPECT_TRUE(BitBlt(target, 2, 2, 10, 10, nullptr, 0, 0, PATCOPY));
    EXPECT_TRUE(BitBlt(target, -3, -3, 4, 4, nullptr, 0, 0, DSTINVERT));
    SelectObject(target, old);
    EXPECT_EQ(GetPixel(target, 3, 3), 0u);
    EXPECT_EQ(GetPixel(target, 0, 0), 0u);
    EXPECT_EQ(GetPixel(target, 1, 1), 0xFFFFFFu);
    EXPECT_EQ(GetPixel(target, 4, 0), CLR_INVALID);
    EXPECT_FALSE(BitBlt(target, 0, 0, 1, 1, nullptr, 0, 0, SRCCOPY));
}

}  // namespace
}  // namespace nvk::os
