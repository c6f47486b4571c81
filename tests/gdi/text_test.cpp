// Text: placement by DrawTextExA, and the font's height, width and
// escapement as drawn.
#include "gdi/gdi_test_support.h"

namespace nvk::os {
namespace {

using test::InkBox;

RECT DrawWith(const LOGFONTA& log, const char* text, UINT format, RECT area, int size = 200) {
    HDC image = CreateImageDC(size, size);
    HFONT font = CreateFontIndirectA(&log);
    HGDIOBJ old = SelectObject(image, font);
    SetBkMode(image, TRANSPARENT);
    std::string copy(text);
    EXPECT_GT(DrawTextExA(image, copy.data(), -1, &area, format, nullptr), 0);
    RECT ink = InkBox(image, size, size);
    SelectObject(image, old);
    DeleteObject(font);
    DeleteDC(image);
    return ink;
}

LOGFONTA Font(LONG height, LONG width = 0, LONG escapement = 0) {
    LOGFONTA log{};
    log.lfHeight = height;
    log.lfWidth = width;
    log.lfEscapement = escapement;
    return log;
}

TEST(Text, DrawTextCentresASingleLineInItsRectangle) {
    RECT area{20, 40, 180, 120};
    RECT ink =
        DrawWith(Font(-20), "Centre", DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX, area);
    ASSERT_LT(ink.left, ink.right);
    EXPECT_NEAR((ink.left + ink.right) / 2.0, 100, 3);
    EXPECT_NEAR((ink.top + ink.bottom) / 2.0, 80, 5);
    // Left and top alignment start at the rectangle's corner.
    RECT corner = DrawWith(Font(-20), "Corner", DT_SINGLELINE, area);
    EXPECT_NEAR(corner.left, 20, 3);
    EXPECT_GE(corner.top, 40);
    EXPECT_LT(corner.top, 50);
}

TEST(Text, HeightWidthAndEscapementShapeTheText) {
    RECT area{0, 0, 400, 400};
    RECT small = DrawWith(Font(-12), "MMMM", DT_CENTER | DT_VCENTER | DT_SINGLELINE, area, 400);
    RECT large = DrawWith(Font(-36), "MMMM", DT_CENTER | DT_VCENTER | DT_SINGLELINE, area, 400);
    EXPECT_NEAR(static_cast<double>(large.bottom - large.top) / (small.bottom - small.top), 3, 0.5);
    RECT wide = DrawWith(Font(-36, 40), "MMMM", DT_CENTER | DT_VCENTER | DT_SINGLELINE, area, 400);
    EXPECT_GT(wide.right - wide.left, (large.right - large.left) * 3 / 2);
    EXPECT_NEAR(wide.bottom - wide.top, large.bottom - large.top, 2);
    // Turned a quarter counter-clockwise, from the reference point upward.
    HDC image = CreateImageDC(200, 200);
    LOGFONTA log = Font(-24, 0, 900);
    HFONT font = CreateFontIndirectA(&log);
    HGDIOBJ old = SelectObject(image, font);
    TextOutA(image, 50, 150, "Upward", 6);
    RECT ink = InkBox(image, 200, 200);
    EXPECT_GT(ink.bottom - ink.top, 2 * (ink.right - ink.left));
    EXPECT_LE(ink.bottom, 151);
    EXPECT_GE(ink.left, 49);
    SelectObject(image, old);
    DeleteObject(font);
    DeleteDC(image);
}

TEST(Text, CalcRectMeasuresWithoutDrawingAndPrefixesAreDropped) {
    HDC image = CreateImageDC(100, 100);
    char text[] = "A&&B&C";
    RECT measured{10, 10, 10, 10};
    int height = DrawTextExA(image, text, -1, &measured, DT_CALCRECT | DT_SINGLELINE, nullptr);
    EXPECT_GT(height, 0);
    EXPECT_EQ(measured.bottom - measured.top, height);
    SIZE plain{};
    ASSERT_TRUE(GetTextExtentPoint32A(image, "A&BC", 4, &plain));
    EXPECT_EQ(measured.right - measured.left, plain.cx);
    EXPECT_EQ(InkBox(image, 100, 100).right, 0);
    char lines[] = "one\r\ntwo\nthree";
    RECT multi{0, 0, 0, 0};
    EXPECT_EQ(DrawTextExA(image, lines, -1, &multi, DT_CALCRECT, nullptr), 3 * plain.cy);
    DeleteDC(image);
}

}  // namespace
}  // namespace nvk::os
