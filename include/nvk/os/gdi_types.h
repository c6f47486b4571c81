// The Win32 types and constants of drawing: device contexts, the objects
// selected into them, and enhanced metafiles with their records as stored.
#pragma once

#include "nvk/os/types.h"

struct HDC__;
struct HPEN__;
struct HBRUSH__;
struct HFONT__;
struct HBITMAP__;
struct HENHMETAFILE__;

namespace nvk::os {

// The same alias as the window headers give it.
using LPARAM = LONG_PTR;

using HDC = ::HDC__*;
// Any object: each kind's handle converts to it, and back by a cast.
using HGDIOBJ = void*;
using HPEN = ::HPEN__*;
using HBRUSH = ::HBRUSH__*;
using HFONT = ::HFONT__*;
using HBITMAP = ::HBITMAP__*;
using HENHMETAFILE = ::HENHMETAFILE__*;

// 0x00BBGGRR.
using COLORREF = DWORD;
constexpr COLORREF RGB(BYTE r, BYTE g, BYTE b) {
    return static_cast<COLORREF>(r) | static_cast<COLORREF>(g) << 8 |
           static_cast<COLORREF>(b) << 16;
}
constexpr BYTE GetRValue(COLORREF c) {
    return static_cast<BYTE>(c);
}
constexpr BYTE GetGValue(COLORREF c) {
    return static_cast<BYTE>(c >> 8);
}
constexpr BYTE GetBValue(COLORREF c) {
    return static_cast<BYTE>(c >> 16);
}
inline constexpr COLORREF CLR_INVALID = 0xFFFFFFFF;
inline const HGDIOBJ HGDI_ERROR = reinterpret_cast<HGDIOBJ>(static_cast<LONG_PTR>(-1));

struct SIZE {
    LONG cx;
    LONG cy;
};

struct RECTL {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

struct POINTL {
    LONG x;
    LONG y;
};

struct SIZEL {
    LONG cx;
    LONG cy;
};

struct XFORM {
    float eM11;
    float eM12;
    float eM21;
    float eM22;
    float eDx;
    float eDy;
};

// Object types of GetObjectType and GetCurrentObject.
inline constexpr UINT OBJ_PEN = 1;
inline constexpr UINT OBJ_BRUSH = 2;
inline constexpr UINT OBJ_DC = 3;
inline constexpr UINT OBJ_FONT = 6;
inline constexpr UINT OBJ_BITMAP = 7;
inline constexpr UINT OBJ_MEMDC = 10;
inline constexpr UINT OBJ_ENHMETADC = 12;
inline constexpr UINT OBJ_ENHMETAFILE = 13;

// Stock objects.
inline constexpr int WHITE_BRUSH = 0;
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;
inline constexpr int WHITE_PEN = 6;
inline constexpr int BLACK_PEN = 7;
inline constexpr int NULL_PEN = 8;
inline constexpr int SYSTEM_FONT = 13;
inline constexpr int DEFAULT_GUI_FONT = 17;

// Pens and brushes.
inline constexpr int PS_SOLID = 0;
inline constexpr int PS_NULL = 5;
inline constexpr UINT BS_SOLID = 0;
inline constexpr UINT BS_NULL = 1;

struct LOGPEN {
    UINT lopnStyle;
    POINT lopnWidth;
    COLORREF lopnColor;
};

struct LOGBRUSH {
    UINT lbStyle;
    COLORREF lbColor;
    ULONG_PTR lbHatch;
};

// The brush as a metafile stores it, with a 32-bit hatch.
struct LOGBRUSH32 {
    UINT lbStyle;
    COLORREF lbColor;
    ULONG lbHatch;
};

// Fonts.
inline constexpr int LF_FACESIZE = 32;
inline constexpr LONG FW_NORMAL = 400;
inline constexpr LONG FW_BOLD = 700;

struct LOGFONTA {
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    char lfFaceName[LF_FACESIZE];
};
static_assert(sizeof(LOGFONTA) == 60);

struct LOGFONTW {
    LONG lfHeight;
    LONG lfWidth;
    LONG lfEscapement;
    LONG lfOrientation;
    LONG lfWeight;
    BYTE lfItalic;
    BYTE lfUnderline;
    BYTE lfStrikeOut;
    BYTE lfCharSet;
    BYTE lfOutPrecision;
    BYTE lfClipPrecision;
    BYTE lfQuality;
    BYTE lfPitchAndFamily;
    WCHAR lfFaceName[LF_FACESIZE];
};
static_assert(sizeof(LOGFONTW) == 92);

// Bitmaps.
struct BITMAP {
    LONG bmType;
    LONG bmWidth;
    LONG bmHeight;
    LONG bmWidthBytes;
    WORD bmPlanes;
    WORD bmBitsPixel;
    LPVOID bmBits;
};

// Raster operations.
inline constexpr DWORD SRCCOPY = 0x00CC0020;
inline constexpr DWORD SRCPAINT = 0x00EE0086;
inline constexpr DWORD SRCAND = 0x008800C6;
inline constexpr DWORD SRCINVERT = 0x00660046;
inline constexpr DWORD SRCERASE = 0x00440328;
inline constexpr DWORD NOTSRCCOPY = 0x00330008;
inline constexpr DWORD NOTSRCERASE = 0x001100A6;
inline constexpr DWORD MERGECOPY = 0x00C000CA;
inline constexpr DWORD MERGEPAINT = 0x00BB0226;
inline constexpr DWORD PATCOPY = 0x00F00021;
inline constexpr DWORD PATPAINT = 0x00FB0A09;
inline constexpr DWORD PATINVERT = 0x005A0049;
inline constexpr DWORD DSTINVERT = 0x00550009;
inline constexpr DWORD BLACKNESS = 0x00000042;
inline constexpr DWORD WHITENESS = 0x00FF0062;

// Map modes.
inline constexpr int MM_TEXT = 1;
inline constexpr int MM_LOMETRIC = 2;
inline constexpr int MM_HIMETRIC = 3;
inline constexpr int MM_LOENGLISH = 4;
inline constexpr int MM_HIENGLISH = 5;
inline constexpr int MM_TWIPS = 6;

// Background modes and text alignment.
inline constexpr int TRANSPARENT = 1;
inline constexpr int OPAQUE = 2;
inline constexpr UINT TA_LEFT = 0;
inline constexpr UINT TA_TOP = 0;
inline constexpr UINT TA_RIGHT = 2;
inline constexpr UINT TA_CENTER = 6;
inline constexpr UINT TA_BOTTOM = 8;
inline constexpr UINT TA_BASELINE = 24;

// DrawTextExA.
inline constexpr UINT DT_TOP = 0x0;
inline constexpr UINT DT_LEFT = 0x0;
inline constexpr UINT DT_CENTER = 0x1;
inline constexpr UINT DT_RIGHT = 0x2;
inline constexpr UINT DT_VCENTER = 0x4;
inline constexpr UINT DT_BOTTOM = 0x8;
inline constexpr UINT DT_SINGLELINE = 0x20;
inline constexpr UINT DT_CALCRECT = 0x400;
inline constexpr UINT DT_NOPREFIX = 0x800;

struct DRAWTEXTPARAMS {
    UINT cbSize;
    int iTabLength;
    int iLeftMargin;
    int iRightMargin;
    UINT uiLengthDrawn;
};

// GetDeviceCaps.
inline constexpr int HORZSIZE = 4;
inline constexpr int VERTSIZE = 6;
inline constexpr int HORZRES = 8;
inline constexpr int VERTRES = 10;
inline constexpr int BITSPIXEL = 12;
inline constexpr int LOGPIXELSX = 88;
inline constexpr int LOGPIXELSY = 90;

// Enhanced metafiles: the records as stored, little-endian, every record a
// multiple of four bytes.
inline constexpr DWORD EMR_HEADER = 1;
inline constexpr DWORD EMR_EOF = 14;
inline constexpr DWORD EMR_SETMAPMODE = 17;
inline constexpr DWORD EMR_SETBKMODE = 18;
inline constexpr DWORD EMR_SETTEXTALIGN = 22;
inline constexpr DWORD EMR_SETTEXTCOLOR = 24;
inline constexpr DWORD EMR_SETBKCOLOR = 25;
inline constexpr DWORD EMR_MOVETOEX = 27;
inline constexpr DWORD EMR_SAVEDC = 33;
inline constexpr DWORD EMR_RESTOREDC = 34;
inline constexpr DWORD EMR_SELECTOBJECT = 37;
inline constexpr DWORD EMR_CREATEPEN = 38;
inline constexpr DWORD EMR_CREATEBRUSHINDIRECT = 39;
inline constexpr DWORD EMR_DELETEOBJECT = 40;
inline constexpr DWORD EMR_LINETO = 54;
inline constexpr DWORD EMR_BITBLT = 76;
inline constexpr DWORD EMR_EXTCREATEFONTINDIRECTW = 82;
inline constexpr DWORD EMR_EXTTEXTOUTW = 84;
inline constexpr DWORD ENHMETA_SIGNATURE = 0x464D4520;
// A stock object in an EMR_SELECTOBJECT record.
inline constexpr DWORD ENHMETA_STOCK_OBJECT = 0x80000000;

struct EMR {
    DWORD iType;
    DWORD nSize;
};

struct ENHMETARECORD {
    DWORD iType;
    DWORD nSize;
    DWORD dParm[1];
};

struct ENHMETAHEADER {
    DWORD iType;
    DWORD nSize;
    RECTL rclBounds;
    RECTL rclFrame;
    DWORD dSignature;
    DWORD nVersion;
    DWORD nBytes;
    DWORD nRecords;
    WORD nHandles;
    WORD sReserved;
    DWORD nDescription;
    DWORD offDescription;
    DWORD nPalEntries;
    SIZEL szlDevice;
    SIZEL szlMillimeters;
    DWORD cbPixelFormat;
    DWORD offPixelFormat;
    DWORD bOpenGL;
    SIZEL szlMicrometers;
};
static_assert(sizeof(ENHMETAHEADER) == 108);

struct EMRBITBLT {
    EMR emr;
    RECTL rclBounds;
    LONG xDest;
    LONG yDest;
    LONG cxDest;
    LONG cyDest;
    DWORD dwRop;
    LONG xSrc;
    LONG ySrc;
    XFORM xformSrc;
    COLORREF crBkColorSrc;
    DWORD iUsageSrc;
    DWORD offBmiSrc;
    DWORD cbBmiSrc;
    DWORD offBitsSrc;
    DWORD cbBitsSrc;
};
static_assert(sizeof(EMRBITBLT) == 100);

struct EMRTEXT {
    POINTL ptlReference;
    DWORD nChars;
    DWORD offString;
    DWORD fOptions;
    RECTL rcl;
    DWORD offDx;
};

struct EMREXTTEXTOUTW {
    EMR emr;
    RECTL rclBounds;
    DWORD iGraphicsMode;
    float exScale;
    float eyScale;
    EMRTEXT emrtext;
};
static_assert(sizeof(EMREXTTEXTOUTW) == 76);

struct EMREXTCREATEFONTINDIRECTW {
    EMR emr;
    DWORD ihFont;
    LOGFONTW elfw;
};
static_assert(sizeof(EMREXTCREATEFONTINDIRECTW) == 104);

struct EMRCREATEPEN {
    EMR emr;
    DWORD ihPen;
    LOGPEN lopn;
};
static_assert(sizeof(EMRCREATEPEN) == 28);

struct EMRCREATEBRUSHINDIRECT {
    EMR emr;
    DWORD ihBrush;
    LOGBRUSH32 lb;
};
static_assert(sizeof(EMRCREATEBRUSHINDIRECT) == 24);

// EMR_SELECTOBJECT, EMR_DELETEOBJECT, EMR_SETMAPMODE, EMR_SETBKMODE,
// EMR_SETTEXTALIGN, EMR_SETTEXTCOLOR, EMR_SETBKCOLOR, EMR_RESTOREDC: one value.
struct EMRONEVALUE {
    EMR emr;
    DWORD value;
};

// EMR_MOVETOEX, EMR_LINETO.
struct EMRPOINT {
    EMR emr;
    POINTL ptl;
};

struct EMREOF {
    EMR emr;
    DWORD nPalEntries;
    DWORD offPalEntries;
    DWORD nSizeLast;
};

struct HANDLETABLE {
    HGDIOBJ objectHandle[1];
};

using ENHMFENUMPROC = int (*)(HDC, HANDLETABLE*, const ENHMETARECORD*, int, LPARAM);

}  // namespace nvk::os
