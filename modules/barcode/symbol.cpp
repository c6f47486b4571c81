// The engine's checks come first: zint is lenient where the record's
// contract is not (it takes 8 digits for an EAN-13 and upper-cases Code 39).
#include "symbol.h"

#include <cstring>
#include <string_view>

namespace dlsbar {

namespace {

constexpr int kEan13 = 0;
constexpr int kEan8 = 1;
constexpr int kCode39 = 8;
constexpr int kCode39Ascii = 9;
constexpr int kCode93 = 10;
constexpr int kCode128 = 18;
constexpr int kAuto = -2;

constexpr std::string_view kCode39Characters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ -.$/+%";
// zint's own limits on the texts of the alphanumeric types.
constexpr std::size_t kMaxCode39 = 85;
constexpr std::size_t kMaxCode93 = 123;
constexpr std::size_t kMaxCode128 = 160;

bool AllDigits(std::string_view text) {
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool AllAscii(std::string_view text) {
    for (char c : text) {
        if (static_cast<unsigned char>(c) > 127) {
            return false;
        }
    }
    return true;
}

// The EAN check digit of the digits before it.
char EanCheckDigit(std::string_view digits) {
    int sum = 0;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        int weight = (digits.size() - i) % 2 == 1 ? 3 : 1;
        sum += (digits[i] - '0') * weight;
    }
    return static_cast<char>('0' + (10 - sum % 10) % 10);
}

// The EAN text without its check digit, once checked.
Status CheckEan(std::string_view& text, std::size_t digits, bool addCheckDigit) {
    if (!AllDigits(text)) {
        return kBadCharacter;
    }
    if (text.size() != (addCheckDigit ? digits : digits + 1)) {
        return kBadLength;
    }
    if (!addCheckDigit) {
        if (EanCheckDigit(text.substr(0, digits)) != text.back()) {
            return kBadCheckDigit;
        }
        text.remove_suffix(1);
    }
    return kDrawn;
}

int AutoType(std::string_view text, bool addCheckDigit) {
    std::size_t extra = addCheckDigit ? 0 : 1;
    if (AllDigits(text) && text.size() == 7 + extra) {
        return kEan8;
    }
    if (AllDigits(text) && text.size() == 12 + extra) {
        return kEan13;
    }
    return text.find_first_not_of(kCode39Characters) == std::string_view::npos ? kCode39 : kCode128;
}

}  // namespace

const char* TypeName(int type) {
    switch (type) {
        case kEan13:
            return "EAN-13";
        case kEan8:
            return "EAN-8";
        case kCode39:
            return "Code 39";
        case kCode39Ascii:
            return "Code 39 full ASCII";
        case kCode93:
            return "Code 93";
        case kCode128:
            return "Code 128";
        case kAuto:
            return "Auto";
        default:
            return nullptr;
    }
}

Symbol Encode(const BARCODERECORD& record, Status& status) {
    std::string_view text(record.text);
    bool addCheckDigit = record.checkDigit != 0;
    int type = record.type == kAuto ? AutoType(text, addCheckDigit) : record.type;
    Symbol symbol(ZBarcode_Create());
    status = kDrawn;
    if (text.empty()) {
        status = TypeName(type) == nullptr ? kUnknownType : kEmptyText;
    } else {
        switch (type) {
            case kEan13:
            case kEan8:
                status = CheckEan(text, type == kEan13 ? 12 : 7, addCheckDigit);
                symbol->symbology = BARCODE_EANX;
                break;
            case kCode39:
                status = text.find_first_not_of(kCode39Characters) != std::string_view::npos
                             ? kBadCharacter
                         : text.size() > kMaxCode39 ? kBadLength
                                                    : kDrawn;
                symbol->symbology = BARCODE_CODE39;
                symbol->option_2 = addCheckDigit ? 1 : 0;
                break;
            case kCode39Ascii:
            case kCode93:
            case kCode128: {
                std::size_t most = type == kCode39Ascii ? kMaxCode39
                                   : type == kCode93    ? kMaxCode93
                                                        : kMaxCode128;
                status = !AllAscii(text) ? kBadCharacter : text.size() > most ? kBadLength : kDrawn;
                symbol->symbology = type == kCode39Ascii ? BARCODE_EXCODE39
                                    : type == kCode93    ? BARCODE_CODE93
                                                         : BARCODE_CODE128;
                symbol->option_2 = type == kCode39Ascii && addCheckDigit ? 1 : 0;
                break;
            }
            default:
                status = kUnknownType;
                break;
        }
    }
    if (status != kDrawn) {
        return nullptr;
    }
    symbol->show_hrt = record.showText != 0 ? 1 : 0;
    symbol->output_options |= BARCODE_QUIET_ZONES;
    if (ZBarcode_Encode(symbol.get(), reinterpret_cast<const unsigned char*>(text.data()),
                        static_cast<int>(text.size())) >= ZINT_ERROR ||
        ZBarcode_Buffer_Vector(symbol.get(), 0) >= ZINT_ERROR) {
        status = kEncoderRefused;
        return nullptr;
    }
    return symbol;
}

}  // namespace dlsbar
