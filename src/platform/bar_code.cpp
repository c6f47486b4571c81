#include "nvk/platform/bar_code.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <vector>

#include "nvk/platform/bar_code_record.h"
#include "os/api/gdi.h"
#include "os/api/kernel_text.h"
#include "os/api/metafile.h"
#include "os/api/module.h"
#include "platform/bar_code_rotation.h"

namespace os = nvk::os;

CCriticalSection EBarCode::m_csDll;

namespace {

constexpr int kLibraryNone = -1;
constexpr int kLibraryAuto = -2;
constexpr std::size_t kTextLimit = 48;
constexpr os::COLORREF kWhite = 0xFFFFFF;
constexpr os::COLORREF kYellow = 0x00FFFF;
constexpr os::UINT kFallbackText =
    os::DT_CENTER | os::DT_VCENTER | os::DT_SINGLELINE | os::DT_NOPREFIX;

using BarCodehProc = int (*)(os::HDC, os::HMODULE, os::RECT*, os::LOGFONTA*, void*, char*);
using BarCodemxProc = void* (*)(os::HDC, os::HMODULE, os::RECT*, os::LOGFONTA*, void*,
                                os::HENHMETAFILE*, char*);
using BarCodefProc = int (*)(os::HMODULE, os::RECT*, os::LOGFONTA*, void*, char*);
using BarInfoProc = int (*)(os::HMODULE, int, void*);

os::LOGFONTA FontOf(os::HDC dc) {
    os::LOGFONTA font;
    std::memset(&font, 0, sizeof font);
    os::GetObjectA(os::GetCurrentObject(dc, os::OBJ_FONT), sizeof font, &font);
    return font;
}

// The font as the library takes it.
void AdjustFont(os::LOGFONTA& font) {
    font.lfHeight = -font.lfHeight;
    font.lfWidth = -font.lfWidth;
    font.lfEscapement = 0;
    font.lfOrientation = 0;
}

os::RECT WorkRect(const os::RECT& rect) {
    return os::RECT{0, 0, os::MulDiv(1270, rect.right - rect.left, 72),
                    os::MulDiv(1270, rect.bottom - rect.top, 72)};
}

// Plays a record; EMR_BITBLT is done here, with no source device context.
int PlayRecord(os::HDC dc, os::HANDLETABLE* table, const os::ENHMETARECORD* record, int handles,
               os::LPARAM) {
    if (record->iType == os::EMR_BITBLT) {
        const auto* blt = reinterpret_cast<const os::EMRBITBLT*>(record);
        os::BitBlt(dc, blt->xDest, blt->yDest, blt->cxDest, blt->cyDest, nullptr, blt->xSrc,
                   blt->ySrc, blt->dwRop);
    } else {
        os::PlayEnhMetaFileRecord(dc, table, record, static_cast<os::UINT>(handles));
    }
    return 1;
}

// Two lines from corner to corner, each end `inset` inward; the current
// position and the pen are put back, and the new pen is left to the system.
void CrossLines(os::HDC dc, const os::RECT& rect, int width, os::COLORREF colour, int inset) {
    os::HPEN pen = os::CreatePen(os::PS_SOLID, width, colour);
    os::HGDIOBJ oldPen = os::SelectObject(dc, pen);
    os::POINT position{0, 0};
    os::MoveToEx(dc, rect.left + inset, rect.top + inset, &position);
    os::LineTo(dc, rect.right - inset, rect.bottom - inset);
    os::MoveToEx(dc, rect.right - inset, rect.top + inset, nullptr);
    os::LineTo(dc, rect.left + inset, rect.bottom - inset);
    os::MoveToEx(dc, position.x, position.y, nullptr);
    os::SelectObject(dc, oldPen);
}

void CrossOut(os::HDC dc, const os::RECT& rect) {
    int width = std::max(1, static_cast<int>(rect.bottom - rect.top) / 10);
    int inset = std::max(1, width / 2);
    int mapMode = os::SetMapMode(dc, os::MM_TEXT);
    CrossLines(dc, rect, width, kYellow, inset);
    os::SetMapMode(dc, mapMode);
}

void Fallback(os::HDC dc, const os::RECT& rect, const CString& text, os::DWORD flags,
              os::DWORD colour) {
    CrossLines(dc, rect, 1, colour, 0);
    if ((flags & EBarCode::FlagShowText) != 0) {
        CString shown = text;
        os::RECT area = rect;
        std::string buffer(shown.GetString());
        os::DrawTextExA(dc, buffer.data(), static_cast<int>(buffer.size()), &area, kFallbackText,
                        nullptr);
    }
}

const char* SampleText(EBarCode::eType type) {
    switch (type) {
        case EBarCode::TypeAuto:
            return "Auto";
        case EBarCode::TypeEAN8:
            return "1234567";
        case EBarCode::TypeEAN13:
            return "123456789012";
        case EBarCode::TypeUpper:
            return "ABCD1234Z";
        case EBarCode::TypeMixed18:
        case EBarCode::TypeMixed9:
        case EBarCode::TypeMixed10:
            return "AbCd1234z";
        default:
            return nullptr;
    }
}

}  // namespace

EBarCode::EBarCode() : m_hDll(os::LoadLibraryA("Dlsbar32.dll")) {
    if (m_hDll != nullptr) {
        m_load.reset(m_hDll,
                     [](void* module) { os::FreeLibrary(static_cast<os::HMODULE>(module)); });
    }
}

// Copies take the handle without loading again. They share the one load,
// freed by the last of them: freeing it once for each copy would unload the
// library under the others.
EBarCode::EBarCode(const EBarCode& other) : m_hDll(other.m_hDll), m_load(other.m_load) {}

EBarCode& EBarCode::operator=(const EBarCode& other) {
    m_hDll = other.m_hDll;
    m_load = other.m_load;
    return *this;
}

EBarCode::~EBarCode() = default;

int EBarCode::GetType(eType type, os::DWORD /*flags*/) {
    switch (type) {
        case TypeAuto:
            return kLibraryAuto;
        case TypeEAN8:
            return 1;
        case TypeEAN13:
            return 0;
        case TypeUpper:
            return 8;
        case TypeMixed18:
            return 18;
        case TypeMixed9:
            return 9;
        case TypeMixed10:
            return 10;
        default:
            return kLibraryNone;
    }
}

void EBarCode::PrepareText(CString& text, eType type, os::DWORD flags) {
    if ((flags & FlagNormalize) == 0 || (type != TypeEAN8 && type != TypeEAN13)) {
        return;
    }
    int digits = 0;
    while (digits < text.GetLength() && std::isdigit(static_cast<unsigned char>(text[digits]))) {
        ++digits;
    }
    text = text.Left(digits);
    bool added = (flags & FlagCheckDigit) != 0;
    int length = type == TypeEAN8 ? (added ? 7 : 8) : (added ? 12 : 13);
    while (text.GetLength() < length) {
        text = CString("0") + text;
    }
}

int EBarCode::BarCodeh(os::HDC dc, os::RECT* rect, os::LOGFONTA* font, void* record,
                       char* options) {
    auto* status = &static_cast<BARCODERECORD*>(record)->status;
    CSingleLock lock(&m_csDll, true);
    if (m_hDll == nullptr) {
        return *status = -1;
    }
    auto proc = reinterpret_cast<BarCodehProc>(os::GetProcAddress(m_hDll, "BarCodeh"));
    if (proc == nullptr) {
        return *status = -2;
    }
    return proc(dc, m_hDll, rect, font, record, options);
}

void* EBarCode::BarCodemx(os::HDC dc, os::RECT* rect, os::LOGFONTA* font, void* record,
                          os::HENHMETAFILE* metafile, char* options) {
    auto* status = &static_cast<BARCODERECORD*>(record)->status;
    CSingleLock lock(&m_csDll, true);
    if (m_hDll == nullptr) {
        *status = -1;
        return nullptr;
    }
    auto proc = reinterpret_cast<BarCodemxProc>(os::GetProcAddress(m_hDll, "_BarCodemx@28"));
    if (proc == nullptr) {
        *status = -2;
        return nullptr;
    }
    return proc(dc, m_hDll, rect, font, record, metafile, options);
}

int EBarCode::BarCodef(os::RECT* rect, os::LOGFONTA* font, void* record, char* options) {
    auto* status = &static_cast<BARCODERECORD*>(record)->status;
    CSingleLock lock(&m_csDll, true);
    if (m_hDll == nullptr) {
        return *status = -1;
    }
    auto proc = reinterpret_cast<BarCodefProc>(os::GetProcAddress(m_hDll, "_BarCodef@20"));
    if (proc == nullptr) {
        return *status = -2;
    }
    return proc(m_hDll, rect, font, record, options);
}

int EBarCode::BarInfo(int number, void* record) {
    auto* status = &static_cast<BARCODERECORD*>(record)->status;
    CSingleLock lock(&m_csDll, true);
    if (m_hDll == nullptr) {
        return *status = -1;
    }
    auto proc = reinterpret_cast<BarInfoProc>(os::GetProcAddress(m_hDll, "BarInfo"));
    if (proc == nullptr) {
        return *status = -2;
    }
    return proc(m_hDll, number, record);
}

bool EBarCode::DrawBarCode(os::HDC dc, const os::RECT* rect, const char* text, eType type,
                           os::DWORD flags, os::DWORD colour) {
    os::LOGFONTA font = FontOf(dc);
    CString prepared(text);
    PrepareText(prepared, type, flags);

    BARCODERECORD record;
    std::memset(&record, 0, sizeof record);
    record.type = GetType(type, flags);
    if (record.type == kLibraryNone) {
        return false;
    }
    record.showText = (flags & FlagShowText) != 0 ? 1 : 0;
    record.checkDigit = (flags & FlagCheckDigit) != 0 ? 1 : 0;
    record.zero = 0;
    record.barColour = colour;
    record.backgroundColour = kWhite;
    // The terminator goes with the text if it fits; the record's next bytes
    // are zero either way.
    std::size_t length = static_cast<std::size_t>(prepared.GetLength()) + 1;
    std::memcpy(record.text, prepared.GetString(), std::min(length, kTextLimit));
    record.constant = 4;
    record.rotation = nvk::DrawingRotation(font.lfEscapement, font.lfOrientation);
    AdjustFont(font);
    os::RECT work = WorkRect(*rect);
    char options[] = "000";

    os::HENHMETAFILE metafile = nullptr;
    if (type != TypeAuto) {
        BarCodemx(dc, &work, &font, &record, &metafile, options);
    }
    if (metafile != nullptr && record.status == 0) {
        os::SaveDC(dc);
        os::EnumEnhMetaFile(dc, metafile, PlayRecord, nullptr, rect);
        os::DeleteEnhMetaFile(metafile);
        os::RestoreDC(dc, -1);
        if ((flags & FlagCrossOut) != 0) {
            CrossOut(dc, *rect);
        }
        return true;
    }
    if (metafile != nullptr) {
        os::DeleteEnhMetaFile(metafile);
    }
    Fallback(dc, *rect, prepared, flags, colour);
    return false;
}

bool EBarCode::DrawBarCode(CDC* dc, CRect& rect, const char* text, eType type, os::DWORD flags,
                           os::DWORD colour) {
    return DrawBarCode(dc != nullptr ? dc->m_hDC : nullptr, &rect, text, type, flags, colour);
}

bool EBarCode::DrawSampleBarCode(os::HDC dc, const os::RECT* rect, eType type, os::DWORD flags,
                                 os::DWORD colour) {
    const char* sample = SampleText(type);
    if (sample == nullptr) {
        return false;
    }
    return DrawBarCode(dc, rect, sample, type, flags | FlagCheckDigit, colour);
}

bool EBarCode::DrawSampleBarCode(CDC* dc, CRect& rect, eType type, os::DWORD flags,
                                 os::DWORD colour) {
    return DrawSampleBarCode(dc != nullptr ? dc->m_hDC : nullptr, &rect, type, flags, colour);
}

bool EBarCode::IsValidText(const char* text, eType type, os::DWORD flags) {
    CClientDC screen(nullptr);
    os::LOGFONTA font = FontOf(screen.m_hDC);
    CString prepared(text);
    PrepareText(prepared, type, flags);

    // The text goes whole into the record, however long: the record is
    // lengthened to hold it rather than written past its end.
    std::size_t length = static_cast<std::size_t>(prepared.GetLength()) + 1;
    std::size_t size = std::max(sizeof(BARCODERECORD), offsetof(BARCODERECORD, text) + length);
    std::vector<std::uint8_t> buffer(size, 0);
    auto* record = reinterpret_cast<BARCODERECORD*>(buffer.data());
    record->type = GetType(type, flags);
    if (record->type == kLibraryNone) {
        return false;
    }
    record->showText = (flags & FlagShowText) != 0 ? 1 : 0;
    record->checkDigit = (flags & FlagCheckDigit) != 0 ? 1 : 0;
    record->barColour = 0;
    record->backgroundColour = kWhite;
    record->constant = 4;
    std::memcpy(buffer.data() + offsetof(BARCODERECORD, text), prepared.GetString(), length);
    record->rotation = nvk::CheckingRotation(font.lfOrientation);
    AdjustFont(font);
    os::RECT fixed{0, 0, 200, 80};
    os::RECT work = WorkRect(fixed);
    char options[] = "000";

    os::HENHMETAFILE metafile = nullptr;
    BarCodemx(screen.m_hDC, &work, &font, record, &metafile, options);
    if (metafile == nullptr) {
        return false;
    }
    os::DeleteEnhMetaFile(metafile);
    return record->status == 0;
}
