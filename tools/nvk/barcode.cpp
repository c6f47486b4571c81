// nvk barcode: drawing bar codes into image and document files, and asking
// whether a type takes a text.
#include <iostream>
#include <string>

#include "cli.h"
#include "nvk/platform/bar_code.h"
#include "os/api/gdi.h"

namespace nvk::tool {
namespace {

int Draw(const Args& args);
int Check(const Args& args);

const Command kCommands[] = {
    {"draw",
     "TEXT --type ean13|ean8|upper|mixed9|mixed10|mixed18|auto|none [--show-text] "
     "[--check-digit] [--normalize] [--cross-out] [--colour RRGGBB] [--size WxH] "
     "[--escapement TENTHS] -o FILE.png|.svg|.pdf",
     "draws the bar code of TEXT into a new file", Draw,
     "answers: exit 0 when the bar code was drawn, 1 when the crossed frame that stands in for\n"
     "it was (no bar-code library, or a text the type refuses); the size is in pixels for PNG\n"
     "and in points for PDF and SVG (600x200 unless given); --escapement turns the code with\n"
     "the font, in tenths of a degree."},
    {"check", "TEXT --type T [--check-digit] [--normalize]",
     "says whether the bar-code library takes TEXT for the type", Check,
     "answers: valid (exit 0) or invalid (exit 1)."},
};

bool ParseType(const std::string& name, EBarCode::eType& type) {
    static const std::pair<const char*, EBarCode::eType> kTypes[] = {
        {"ean13", EBarCode::TypeEAN13},     {"ean8", EBarCode::TypeEAN8},
        {"upper", EBarCode::TypeUpper},     {"mixed9", EBarCode::TypeMixed9},
        {"mixed10", EBarCode::TypeMixed10}, {"mixed18", EBarCode::TypeMixed18},
        {"auto", EBarCode::TypeAuto},       {"none", EBarCode::TypeNone},
    };
    for (const auto& [text, value] : kTypes) {
        if (name == text) {
            type = value;
            return true;
        }
    }
    return false;
}

// The options that both commands take; what is wrong with them, or nothing.
std::string TakeTypeAndFlags(Args& args, EBarCode::eType& type, os::DWORD& flags) {
    std::string name = TakeOption(args, "--type");
    flags = 0;
    if (TakeFlag(args, "--check-digit")) {
        flags |= EBarCode::FlagCheckDigit;
    }
    if (TakeFlag(args, "--normalize")) {
        flags |= EBarCode::FlagNormalize;
    }
    if (name.empty()) {
        return "--type is expected";
    }
    if (!ParseType(name, type)) {
        return "unknown type " + name;
    }
    return {};
}

bool ParseSize(const std::string& text, int& width, int& height) {
    std::size_t x = text.find('x');
    long long w = 0, h = 0;
    if (x == std::string::npos || !ParseLong(text.substr(0, x), w) ||
        !ParseLong(text.substr(x + 1), h) || w <= 0 || h <= 0 || w > 20000 || h > 20000) {
        return false;
    }
    width = static_cast<int>(w);
    height = static_cast<int>(h);
    return true;
}

bool ParseColour(const std::string& text, os::COLORREF& colour) {
    if (text.size() != 6 || text.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        return false;
    }
    unsigned long rgb = std::stoul(text, nullptr, 16);
    colour = os::RGB(static_cast<os::BYTE>(rgb >> 16), static_cast<os::BYTE>(rgb >> 8),
                     static_cast<os::BYTE>(rgb));
    return true;
}

int Draw(const Args& given) {
    Args args = given;
    EBarCode::eType type = EBarCode::TypeNone;
    os::DWORD flags = 0;
    if (TakeFlag(args, "--show-text")) {
        flags |= EBarCode::FlagShowText;
    }
    if (TakeFlag(args, "--cross-out")) {
        flags |= EBarCode::FlagCrossOut;
    }
    std::string colourText = TakeOption(args, "--colour", "000000");
    std::string sizeText = TakeOption(args, "--size", "600x200");
    std::string escapementText = TakeOption(args, "--escapement", "0");
    std::string file = TakeOption(args, "-o");
    os::DWORD typeFlags = 0;
    std::string wrong = TakeTypeAndFlags(args, type, typeFlags);
    if (!Expect(args, 1, 1, kCommands[0])) {
        return kFailure;
    }
    if (!wrong.empty()) {
        return Fail(wrong);
    }
    flags |= typeFlags;
    os::COLORREF colour = 0;
    int width = 0, height = 0;
    long long escapement = 0;
    if (!ParseColour(colourText, colour)) {
        return Fail("a colour is six hexadecimal digits, RRGGBB");
    }
    if (!ParseSize(sizeText, width, height)) {
        return Fail("a size is WIDTHxHEIGHT, each from 1 to 20000");
    }
    if (!ParseLong(escapementText, escapement) || escapement < -36000 || escapement > 36000) {
        return Fail("an escapement is a number of tenths of a degree");
    }
    if (file.empty()) {
        return Fail("-o FILE is expected");
    }
    os::HDC dc = os::CreateFileDC(file.c_str(), width, height);
    if (dc == nullptr) {
        return Fail("can't draw into " + file + " (a .png, .svg or .pdf file is expected)");
    }
    os::LOGFONTA log{};
    log.lfHeight = -height / 8;
    log.lfEscapement = log.lfOrientation = static_cast<os::LONG>(escapement);
    os::HFONT font = os::CreateFontIndirectA(&log);
    os::HGDIOBJ oldFont = os::SelectObject(dc, font);
    os::RECT rect{0, 0, width, height};
    EBarCode barCode;
    bool drawn = barCode.DrawBarCode(dc, &rect, args[0].c_str(), type, flags, colour);
    os::SelectObject(dc, oldFont);
    os::DeleteObject(font);
    if (!os::DeleteDC(dc)) {
        return Fail("can't write " + file);
    }
    return drawn ? kOk : kNegative;
}

int Check(const Args& given) {
    Args args = given;
    EBarCode::eType type = EBarCode::TypeNone;
    os::DWORD flags = 0;
    std::string wrong = TakeTypeAndFlags(args, type, flags);
    if (!Expect(args, 1, 1, kCommands[1])) {
        return kFailure;
    }
    if (!wrong.empty()) {
        return Fail(wrong);
    }
    bool valid = EBarCode().IsValidText(args[0].c_str(), type, flags);
    std::cout << (valid ? "valid" : "invalid") << '\n';
    return valid ? kOk : kNegative;
}

const RegisterArea kArea({"barcode", "bar codes drawn into files", kCommands, nullptr, 110});

}  // namespace
}  // namespace nvk::tool
