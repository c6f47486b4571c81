// The record that EBarCode and the bar-code library exchange: 192 bytes,
// zeroed before use, little-endian 32-bit fields and the text.
#pragma once

#include <cstddef>
#include <cstdint>

struct BARCODERECORD {
    std::int32_t type;  // the library's type number
    std::uint8_t reserved4[12];
    std::int32_t showText;    // 1: the text under the bars
    std::int32_t checkDigit;  // 1: the text has no check digit, the library adds it
    // 0 upright, 2 turned a quarter counter-clockwise, -1 upside down, 1 a
    // quarter clockwise.
    std::int32_t rotation;
    std::uint8_t reserved28[4];
    std::int32_t zero;  // always 0
    std::uint8_t reserved36[8];
    std::uint32_t barColour;         // COLORREF
    std::uint32_t backgroundColour;  // COLORREF
    std::int32_t status;             // set by the library, 0 when drawn
    char text[72];                   // zero-terminated
    std::int32_t constant;           // always 4
    std::uint8_t reserved132[60];
};
static_assert(sizeof(BARCODERECORD) == 192);
static_assert(offsetof(BARCODERECORD, showText) == 16);
static_assert(offsetof(BARCODERECORD, checkDigit) == 20);
static_assert(offsetof(BARCODERECORD, rotation) == 24);
static_assert(offsetof(BARCODERECORD, zero) == 32);
static_assert(offsetof(BARCODERECORD, barColour) == 44);
static_assert(offsetof(BARCODERECORD, backgroundColour) == 48);
static_assert(offsetof(BARCODERECORD, status) == 52);
static_assert(offsetof(BARCODERECORD, text) == 56);
static_assert(offsetof(BARCODERECORD, constant) == 128);
