// Enhanced metafiles: the records as stored, and their play on a rectangle.
#include <cstring>
#include <vector>

#include "gdi/gdi_test_support.h"
#include "os/api/kernel_text.h"
#include "os/api/metafile.h"

namespace nvk::os {
namespace {

// 1000 x 500 pixels of the screen, the reference device, in hundredths of a
// millimetre.
RECT Frame() {
    HDC screen = GetDC(nullptr);
    RECT frame{0, 0,
               MulDiv(1000, 100 * GetDeviceCaps(screen, HORZSIZE), GetDeviceCaps(screen, HORZRES)),
               MulDiv(500, 100 * GetDeviceCaps(screen, VERTSIZE), GetDeviceCaps(screen, VERTRES))};
    ReleaseDC(nullptr, screen);
    return frame;
}

// A drawing on that frame: a red bar, a line and a text.
HENHMETAFILE Drawing() {
    RECT frame = Frame();
    HDC dc = CreateEnhMetaFileA(nullptr, nullptr, &frame, "nvk\0test\0");
    HBRUSH red = CreateSolidBrush(RGB(255, 0, 0));
    HGDIOBJ old = SelectObject(dc, red);
    BitBlt(dc, 100, 0, 200, 500, nullptr, 0, 0, PATCOPY);
    SelectObject(dc, old);
    DeleteObject(red);
    MoveToEx(dc, 0, 0, nullptr);
    LineTo(dc, 1000, 0);
    LOGFONTA log{};
    log.lfHeight = -100;
    HFONT font = CreateFontIndirectA(&log);
    SelectObject(dc, font);
    SetTextAlign(dc, TA_CENTER);
    TextOutA(dc, 700, 200, "Ab", 2);
    SelectObject(dc, GetStockObject(SYSTEM_FONT));
    DeleteObject(font);
    return CloseEnhMetaFile(dc);
}

TEST(Metafile, RecordsReadAsTheDocumentedLayout) {
    HENHMETAFILE metafile = Drawing();
    ASSERT_NE(metafile, nullptr);
    UINT size = GetEnhMetaFileBits(metafile, 0, nullptr);
    std::vector<BYTE> bits(size);
    ASSERT_EQ(GetEnhMetaFileBits(metafile, size, bits.data()), size);
    ENHMETAHEADER header;
    std::memcpy(&header, bits.data(), sizeof header);
    EXPECT_EQ(header.iType, EMR_HEADER);
    EXPECT_EQ(header.dSignature, ENHMETA_SIGNATURE);
    EXPECT_EQ(header.nBytes, size);
    EXPECT_EQ(header.rclFrame.right, Frame().right);
    EXPECT_EQ(header.nDescription, 10u);
    // The metafile's own slot, and one that the font takes after the brush.
    EXPECT_EQ(header.nHandles, 2);
    std::vector<DWORD> types;
    for (UINT at = 0; at < size;) {
        EMR emr;
        std::memcpy(&emr, bits.data() + at, sizeof emr);
        ASSERT_EQ(emr.nSize % 4, 0u);
        types.push_back(emr.iType);
        at += emr.nSize;
    }
    EXPECT_EQ(types.size(), header.nRecords);
    const std::vector<DWORD> expected = {EMR_HEADER,
                                         EMR_CREATEBRUSHINDIRECT,
                                         EMR_SELECTOBJECT,
                                         EMR_BITBLT,
                                         EMR_SELECTOBJECT,
                                         EMR_DELETEOBJECT,
                                         EMR_MOVETOEX,
                                         EMR_LINETO,
                                         EMR_EXTCREATEFONTINDIRECTW,
                                         EMR_SELECTOBJECT,
                                         EMR_SETTEXTALIGN,
                                         EMR_EXTTEXTOUTW,
                                         EMR_SELECTOBJECT,
                                         EMR_DELETEOBJECT,
                                         EMR_EOF};
    EXPECT_EQ(types, expected);
    // The same bits make the same metafile; damaged ones make none.
    HENHMETAFILE copy = SetEnhMetaFileBits(size, bits.data());
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(GetEnhMetaFileBits(copy, 0, nullptr), size);
    EXPECT_EQ(SetEnhMetaFileBits(size - 4, bits.data()), nullptr);
    bits[size - 20] = 0xFF;  // EMR_EOF's type
    EXPECT_EQ(SetEnhMetaFileBits(size, bits.data()), nullptr);
    EXPECT_TRUE(DeleteEnhMetaFile(copy));
    EXPECT_TRUE(DeleteEnhMetaFile(metafile));
    EXPECT_FALSE(DeleteEnhMetaFile(metafile));
}

TEST(Metafile, PlaysScaledOntoTheRectangleAndLeavesTheContextAsItWas) {
    HENHMETAFILE metafile = Drawing();
    HDC image = CreateImageDC(300, 200);
    HGDIOBJ brush = GetCurrentObject(image, OBJ_BRUSH);
    RECT target{50, 50, 250, 150};  // the frame at a fifth
    ASSERT_TRUE(PlayEnhMetaFile(image, metafile, &target));
    EXPECT_EQ(GetPixel(image, 75, 100), RGB(255, 0, 0));
    EXPECT_EQ(GetPixel(image, 68, 100), 0xFFFFFFu);
    EXPECT_EQ(GetPixel(image, 112, 100), 0xFFFFFFu);
    EXPECT_EQ(GetPixel(image, 150, 50), 0u);  // the line along the top
    // The text, centred on 700, 200 of the frame: 190, 90 here.
    int ink = 0;
    for (int y = 88; y < 115; ++y) {
        for (int x = 165; x < 215; ++x) {
            ink += GetPixel(image, x, y) == 0 ? 1 : 0;
        }
    }
    EXPECT_GT(ink, 20);
    EXPECT_EQ(GetPixel(image, 160, 100), 0xFFFFFFu);
    EXPECT_EQ(GetCurrentObject(image, OBJ_BRUSH), brush);
    EXPECT_EQ(SetTextAlign(image, TA_LEFT), TA_LEFT);
    // A callback that stops the enumeration.
    int seen = 0;
    EXPECT_FALSE(EnumEnhMetaFile(
        image, metafile,
        [](HDC, HANDLETABLE*, const ENHMETARECORD*, int, LPARAM data) {
            return ++*reinterpret_cast<int*>(data) < 3 ? 1 : 0;
        },
        &seen, &target));
    EXPECT_EQ(seen, 3);
    DeleteEnhMetaFile(metafile);
    DeleteDC(image);
}

}  // namespace
}  // namespace nvk::os
