// A bar-code library that notes what it is given. Its drawing is a black
// rectangle over the whole frame. Texts beginning "refuse" are refused with
// status 4, without a metafile; those beginning "late" get a metafile and
// status 9.
#include "barcode/spy/spy_engine.h"

#include <algorithm>
#include <cstring>

#include "barcode/frame.h"
#include "os/api/gdi.h"
#include "os/api/kernel_text.h"
#include "os/api/metafile.h"

namespace os = nvk::os;

namespace {

SpyCall g_call;

void Note(const char* entry, os::HMODULE module, const os::RECT* rect, const os::LOGFONTA* font,
          const BARCODERECORD* record, const char* options) {
    ++g_call.calls;
    std::strncpy(g_call.entry, entry, sizeof g_call.entry - 1);
    g_call.module = module;
    if (rect != nullptr) {
        g_call.rect = *rect;
    }
    if (font != nullptr) {
        g_call.font = *font;
    }
    if (options != nullptr) {
        std::strncpy(g_call.options, options, sizeof g_call.options - 1);
    }
    std::memset(g_call.record, 0xEE, sizeof g_call.record);
    // The record, and as much of a longer text as there is.
    std::size_t size = sizeof(BARCODERECORD);
    std::size_t text = std::strlen(record->text) + 1;
    if (offsetof(BARCODERECORD, text) + text > size) {
        size = std::min(sizeof g_call.record, offsetof(BARCODERECORD, text) + text);
    }
    std::memcpy(g_call.record, record, size);
}

}  // namespace

#define SPY_EXPORT extern "C" __attribute__((visibility("default")))

SPY_EXPORT SpyCall* SpyLastCall() {
    return &g_call;
}

SPY_EXPORT int BarCodeh(os::HDC, os::HMODULE module, os::RECT* rect, os::LOGFONTA* font,
                        BARCODERECORD* record, char* options) {
    Note("BarCodeh", module, rect, font, record, options);
    return record->status = 0;
}

SPY_EXPORT void* BarCodemx(os::HDC, os::HMODULE module, os::RECT* rect, os::LOGFONTA* font,
                           BARCODERECORD* record, os::HENHMETAFILE* metafile, char* options) {
    Note("BarCodemx", module, rect, font, record, options);
    *metafile = nullptr;
    if (std::strncmp(record->text, "refuse", 6) == 0) {
        record->status = 4;
        return nullptr;
    }
    os::RECT frame = dlsbar::ScreenFrame(*rect);
    os::HDC dc = os::CreateEnhMetaFileA(nullptr, nullptr, &frame, nullptr);
    os::SelectObject(dc, os::GetStockObject(os::BLACK_BRUSH));
    os::BitBlt(dc, rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top,
               nullptr, 0, 0, os::PATCOPY);
    *metafile = os::CloseEnhMetaFile(dc);
    record->status = std::strncmp(record->text, "late", 4) == 0 ? 9 : 0;
    return *metafile;
}

SPY_EXPORT int BarCodef(os::HMODULE module, os::RECT* rect, os::LOGFONTA* font,
                        BARCODERECORD* record, char* options) {
    Note("BarCodef", module, rect, font, record, options);
    return record->status = 0;
}

SPY_EXPORT int BarInfo(os::HMODULE module, int number, BARCODERECORD* record) {
    Note("BarInfo", module, nullptr, nullptr, record, nullptr);
    return record->status = number;
}
