// The bar-code engine behind the entry points of the bar-code library. Each
// entry takes the library's module handle (unused here), and the record of
// nvk/platform/bar_code_record.h; the last text argument holds options, of
// which none is read.
//
// Types (the record's type):
//   0  EAN-13: 12 digits and the check digit added, or 13 with it given
//   1  EAN-8: 7 digits and the check digit added, or 8 with it given
//   8  Code 39, upper case: 0-9, A-Z, space and - . $ / + %; the flag adds
//      the modulo 43 check character
//   9  Code 39 full ASCII: characters 1 to 127; the flag adds the modulo 43
//      check character
//   10 Code 93: characters 1 to 127, with its two check characters always
//   18 Code 128: characters 1 to 127, with its check character always
//   -2 the first of EAN-8, EAN-13, Code 39 and Code 128 that takes the text
//
// Status (the record's status, and what the entries return):
//   0 drawn, 1 unknown type, 2 empty text, 3 length refused, 4 character
//   refused, 5 wrong check digit, 6 refused by the encoder, 7 empty rectangle
//
// The drawing fills the rectangle: the background, the bars as filled
// rectangles, the text under the bars, all turned by the record's rotation
// (0 upright, 2 a quarter counter-clockwise, -1 upside down, 1 a quarter
// clockwise). Text takes the font's face, weight and slant; its size
// follows the symbol.
#pragma once

#include "nvk/os/gdi_types.h"
#include "nvk/platform/bar_code_record.h"

namespace dlsbar {

enum Status {
    kDrawn = 0,
    kUnknownType = 1,
    kEmptyText = 2,
    kBadLength = 3,
    kBadCharacter = 4,
    kBadCheckDigit = 5,
    kEncoderRefused = 6,
    kEmptyRectangle = 7,
};

}  // namespace dlsbar

extern "C" {
using nvk::os::HDC;
using nvk::os::HENHMETAFILE;
using nvk::os::HMODULE;
using nvk::os::LOGFONTA;
using nvk::os::RECT;

// Draws on the device context in the rectangle; returns the status.
int BarCodeh(HDC dc, HMODULE module, RECT* rect, LOGFONTA* font, BARCODERECORD* record,
             char* options);
// Records the drawing of the rectangle into a new metafile, stored in
// *metafile and returned; null with the status set when the text is refused.
// Exported as "_BarCodemx@28".
void* BarCodemx(HDC dc, HMODULE module, RECT* rect, LOGFONTA* font, BARCODERECORD* record,
                HENHMETAFILE* metafile, char* options);
// Checks and encodes without drawing; on success the rectangle's right and
// bottom become its left and top plus the symbol's size at one unit a
// module. Returns the status. Exported as "_BarCodef@20".
int BarCodef(HMODULE module, RECT* rect, LOGFONTA* font, BARCODERECORD* record, char* options);
// The name of the type `number` in the record's text; returns the status.
int BarInfo(HMODULE module, int number, BARCODERECORD* record);
}
