// Device contexts: their objects and states, map modes, lines, and the
// files they write.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "gdi/gdi_test_support.h"
#include "nvk/afx/dc.h"
#include "os/api/error.h"

namespace nvk::os {
namespace {

using test::Canvas;
using test::InkBox;

TEST(DeviceContext, MemoryContextsStartMonochromeAndKeepTheirObjects) {
    HDC screen = GetDC(nullptr);
    HDC memory = CreateCompatibleDC(screen);
    BITMAP info{};
    HGDIOBJ first = GetCurrentObject(memory, OBJ_BITMAP);
    ASSERT_EQ(GetObjectA(first, sizeof info, &info), static_cast<int>(sizeof info));
    EXPECT_EQ(info.bmWidth, 1);
    EXPECT_EQ(info.bmBitsPixel, 1);
    // Compatible with a memory context on its first bitmap: monochrome; with
    // the screen: colour.
    HBITMAP mono = CreateCompatibleBitmap(memory, 8, 2);
    HBITMAP colour = CreateCompatibleBitmap(screen, 8, 2);
    GetObjectA(mono, sizeof info, &info);
    EXPECT_EQ(info.bmBitsPixel, 1);
    EXPECT_EQ(info.bmWidthBytes, 2);
    GetObjectA(colour, sizeof info, &info);
    EXPECT_EQ(info.bmBitsPixel, 32);
    EXPECT_EQ(SelectObject(memory, colour), first);
    // A bitmap shows in one device context at a time.
    HDC other = CreateCompatibleDC(screen);
    EXPECT_EQ(SelectObject(other, colour), nullptr);
    EXPECT_EQ(SelectObject(memory, first), colour);
    EXPECT_TRUE(DeleteObject(colour));
    EXPECT_EQ(GetObjectType(colour), 0u);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_TRUE(DeleteObject(mono));
    EXPECT_TRUE(DeleteDC(other));
    EXPECT_TRUE(DeleteDC(memory));
    EXPECT_EQ(ReleaseDC(nullptr, screen), 1);
    EXPECT_FALSE(DeleteDC(memory));
}

TEST(DeviceContext, RestoreDCGivesBackObjectsAndAttributesByLevel) {
    Canvas canvas(4, 4);
    HPEN pen = CreatePen(PS_SOLID, 3, RGB(1, 2, 3));
    LOGFONTA log{};
    log.lfHeight = -20;
    log.lfEscapement = 900;
    log.lfOrientation = 450;
    HFONT font = CreateFontIndirectA(&log);
    HGDIOBJ firstPen = GetCurrentObject(canvas, OBJ_PEN);
    int first = SaveDC(canvas);
    SelectObject(canvas, pen);
    SetBkColor(canvas, RGB(9, 9, 9));
    SetMapMode(canvas, MM_LOMETRIC);
    int second = SaveDC(canvas);
    EXPECT_EQ(second, first + 1);
    SelectObject(canvas, font);
    LOGFONTA read{};
    EXPECT_EQ(GetObjectA(GetCurrentObject(canvas, OBJ_FONT), sizeof read, &read), 60);
    EXPECT_EQ(read.lfEscapement, 900);
    EXPECT_EQ(read.lfOrientation, 450);
    EXPECT_TRUE(RestoreDC(canvas, -1));
    EXPECT_EQ(GetCurrentObject(canvas, OBJ_PEN), pen);
    EXPECT_NE(GetCurrentObject(canvas, OBJ_FONT), font);
    EXPECT_TRUE(DeleteObject(font));
    EXPECT_TRUE(RestoreDC(canvas, first));
    EXPECT_EQ(GetCurrentObject(canvas, OBJ_PEN), firstPen);
    EXPECT_EQ(GetBkColor(canvas), 0xFFFFFFu);
    EXPECT_EQ(GetMapMode(canvas), MM_TEXT);
    EXPECT_FALSE(RestoreDC(canvas, first));
    LOGPEN readPen{};
    GetObjectA(pen, sizeof readPen, &readPen);
    EXPECT_EQ(readPen.lopnWidth.x, 3);
    EXPECT_TRUE(DeleteObject(pen));
}

// An object selected into a device context is not deleted, and stays whole
// for the caller.
TEST(DeviceContext, SelectedObjectsAreNotDeleted) {
    Canvas canvas(4, 4);
    HBITMAP bitmap = CreateCompatibleBitmap(canvas, 2, 2);
    HDC memory = CreateCompatibleDC(canvas);
    HGDIOBJ first = SelectObject(memory, bitmap);
    EXPECT_FALSE(DeleteObject(bitmap));
    SelectObject(memory, first);
    EXPECT_TRUE(DeleteObject(bitmap));
    DeleteDC(memory);

    HPEN pen = CreatePen(PS_SOLID, 3, RGB(1, 2, 3));
    int level = SaveDC(canvas);
    SelectObject(canvas, pen);
    EXPECT_FALSE(DeleteObject(pen));
    RestoreDC(canvas, level);
    LOGPEN read{};
    EXPECT_EQ(GetObjectA(pen, sizeof read, &read), static_cast<int>(sizeof read));
    EXPECT_EQ(read.lopnWidth.x, 3);
    EXPECT_TRUE(DeleteObject(pen));
}

TEST(DeviceContext, MetricModesCountTenthsOfMillimetresUpward) {
    HDC image = CreateImageDC(200, 200);
    ASSERT_EQ(GetDeviceCaps(image, LOGPIXELSX), 96);
    SetMapMode(image, MM_LOMETRIC);
    RECT inch{0, 0, 254, -254};
    FillRect(image, &inch, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    SetMapMode(image, MM_TEXT);
    RECT ink = InkBox(image, 200, 200);
    EXPECT_EQ(ink.right - ink.left, 96);
    EXPECT_EQ(ink.bottom - ink.top, 96);
    EXPECT_EQ(ink.left, 0);
    DeleteDC(image);
}

TEST(DeviceContext, LinesUseThePenAndMoveTheCurrentPosition) {
    HDC image = CreateImageDC(20, 20);
    HPEN red = CreatePen(PS_SOLID, 1, RGB(255, 0, 0));
    HGDIOBJ old = SelectObject(image, red);
    POINT previous{-1, -1};
    MoveToEx(image, 2, 2, &previous);
    EXPECT_EQ(previous.x, 0);
    LineTo(image, 12, 12);
    for (int i = 2; i < 12; ++i) {
        EXPECT_EQ(GetPixel(image, i, i), RGB(255, 0, 0)) << i;
    }
    EXPECT_EQ(GetPixel(image, 12, 2), 0xFFFFFFu);
    MoveToEx(image, 0, 0, &previous);
    EXPECT_EQ(previous.x, 12);
    SelectObject(image, GetStockObject(NULL_PEN));
    LineTo(image, 19, 0);
    EXPECT_EQ(GetPixel(image, 10, 0), 0xFFFFFFu);
    SelectObject(image, old);
    DeleteObject(red);
    DeleteDC(image);
}

std::string Head(const std::filesystem::path& path, std::size_t size) {
    std::ifstream in(path, std::ios::binary);
    std::string text(size, '\0');
    in.read(text.data(), static_cast<std::streamsize>(size));
    return text.substr(0, static_cast<std::size_t>(in.gcount()));
}

TEST(DeviceContext, FileContextsWriteTheirFormatWhenDeleted) {
    std::filesystem::path folder = std::filesystem::temp_directory_path() / "nvk_gdi_files";
    std::filesystem::create_directories(folder);
    for (const char* name : {"a.png", "a.PDF", "a.svg"}) {
        std::string path = (folder / name).string();
        HDC dc = CreateFileDC(path.c_str(), 50, 30);
        ASSERT_NE(dc, nullptr) << name;
        RECT r{5, 5, 20, 20};
        FillRect(dc, &r, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
        // Vector files take fills but no bitwise operations.
        EXPECT_EQ(BitBlt(dc, 0, 0, 5, 5, nullptr, 0, 0, DSTINVERT) != 0,
                  std::string(name) == "a.png");
        EXPECT_TRUE(DeleteDC(dc));
    }
    EXPECT_EQ(Head(folder / "a.png", 8), "\x89PNG\r\n\x1a\n");
    EXPECT_EQ(Head(folder / "a.PDF", 5), "%PDF-");
    EXPECT_NE(Head(folder / "a.svg", 200).find("<svg"), std::string::npos);
    EXPECT_EQ(CreateFileDC((folder / "a.bmp").string().c_str(), 5, 5), nullptr);
    HDC lost = CreateFileDC((folder / "missing" / "b.png").string().c_str(), 5, 5);
    ASSERT_NE(lost, nullptr);
    EXPECT_FALSE(DeleteDC(lost));
    std::filesystem::remove_all(folder);
}

TEST(DeviceContext, FrameworkWrappersPassTheHandleThrough) {
    CClientDC screen(nullptr);
    ASSERT_NE(screen.GetSafeHdc(), nullptr);
    CDC memory;
    ASSERT_TRUE(memory.CreateCompatibleDC(&screen));
    HBITMAP bitmap = CreateCompatibleBitmap(screen, 4, 4);
    HGDIOBJ old = memory.SelectObject(bitmap);
    memory.SetTextColor(RGB(1, 1, 1));
    EXPECT_EQ(memory.MoveTo(1, 1).x, 0);
    CRect rect(0, 0, 4, 4);
    EXPECT_EQ(rect.Width(), 4);
    memory.SelectObject(old);
    DeleteObject(bitmap);
}

}  // namespace
}  // namespace nvk::os
