// The entry points of the bar-code library.
#include "dlsbar.h"

#include <cstring>

#include "os/api/metafile.h"
#include "render.h"

namespace {

using namespace dlsbar;

// The symbol of a record for a rectangle, the status set in the record.
Symbol Prepare(const RECT* rect, BARCODERECORD* record) {
    Status status = kDrawn;
    Symbol symbol;
    if (rect == nullptr || rect->right <= rect->left || rect->bottom <= rect->top) {
        status = kEmptyRectangle;
    } else {
        symbol = Encode(*record, status);
    }
    record->status = status;
    return symbol;
}

LOGFONTA FontOf(const LOGFONTA* font) {
    LOGFONTA log{};
    if (font != nullptr) {
        log = *font;
    }
    return log;
}

}  // namespace

#define DLSBAR_EXPORT __attribute__((visibility("default")))

extern "C" {

DLSBAR_EXPORT int BarCodeh(HDC dc, HMODULE, RECT* rect, LOGFONTA* font, BARCODERECORD* record,
                           char*) {
    if (record == nullptr) {
        return kUnknownType;
    }
    Symbol symbol = Prepare(rect, record);
    if (symbol != nullptr) {
        HENHMETAFILE metafile = Render(*symbol, *rect, FontOf(font), *record);
        nvk::os::PlayEnhMetaFile(dc, metafile, rect);
        nvk::os::DeleteEnhMetaFile(metafile);
    }
    return record->status;
}

DLSBAR_EXPORT void* BarCodemx(HDC, HMODULE, RECT* rect, LOGFONTA* font, BARCODERECORD* record,
                              HENHMETAFILE* metafile, char*) {
    if (record == nullptr || metafile == nullptr) {
        return nullptr;
    }
    *metafile = nullptr;
    Symbol symbol = Prepare(rect, record);
    if (symbol != nullptr) {
        *metafile = Render(*symbol, *rect, FontOf(font), *record);
    }
    return *metafile;
}

DLSBAR_EXPORT int BarCodef(HMODULE, RECT* rect, LOGFONTA*, BARCODERECORD* record, char*) {
    if (record == nullptr) {
        return kUnknownType;
    }
    Symbol symbol = Prepare(rect, record);
    if (symbol != nullptr) {
        rect->right = rect->left + static_cast<nvk::os::LONG>(symbol->vector->width);
        rect->bottom = rect->top + static_cast<nvk::os::LONG>(symbol->vector->height);
    }
    return record->status;
}

DLSBAR_EXPORT int BarInfo(HMODULE, int number, BARCODERECORD* record) {
    if (record == nullptr) {
        return kUnknownType;
    }
    const char* name = TypeName(number);
    std::memset(record->text, 0, sizeof record->text);
    if (name != nullptr) {
        std::strcpy(record->text, name);
    }
    record->status = name != nullptr ? kDrawn : kUnknownType;
    return record->status;
}
}
