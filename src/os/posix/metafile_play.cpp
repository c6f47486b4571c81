// Playing enhanced metafiles: the frame is mapped onto the caller's
// rectangle through the world transform, and each record becomes the call it
// stands for, with the objects it creates kept in the handle table.
#include <cstring>
#include <vector>

#include "os/api/gdi.h"
#include "os/api/metafile.h"
#include "os/api/nls.h"
#include "os/posix/gdi_text.h"
#include "os/posix/handle.h"
#include "os/posix/metafile_recorder.h"

namespace nvk::os {

using posix::SetErrorCode;

namespace {

// A record of type T if the record is long enough to hold one.
template <class T>
const T* RecordAs(const ENHMETARECORD* record) {
    return record->nSize >= sizeof(T) ? reinterpret_cast<const T*>(record) : nullptr;
}

DWORD Value(const ENHMETARECORD* record) {
    const auto* one = RecordAs<EMRONEVALUE>(record);
    return one != nullptr ? one->value : 0;
}

// The handle table's slot named by a record, if within the table.
HGDIOBJ* Slot(HANDLETABLE* table, UINT handles, DWORD index) {
    return table != nullptr && index > 0 && index < handles ? &table->objectHandle[index] : nullptr;
}

void Store(HANDLETABLE* table, UINT handles, DWORD index, HGDIOBJ object) {
    HGDIOBJ* slot = Slot(table, handles, index);
    if (slot == nullptr) {
        DeleteObject(object);
        return;
    }
    if (*slot != nullptr) {
        DeleteObject(*slot);
    }
    *slot = object;
}

BOOL PlayText(HDC dc, const ENHMETARECORD* record) {
    const auto* text = RecordAs<EMREXTTEXTOUTW>(record);
    gdi::Dc* context = gdi::DcOf(dc);
    if (text == nullptr || context == nullptr) {
        return FALSE;
    }
    const EMRTEXT& part = text->emrtext;
    if (part.offString > record->nSize || part.nChars > (record->nSize - part.offString) / 2) {
        SetErrorCode(ERROR_INVALID_DATA);
        return FALSE;
    }
    std::u16string wide(part.nChars, u'\0');
    std::memcpy(wide.data(), reinterpret_cast<const BYTE*>(record) + part.offString,
                part.nChars * 2);
    int bytes = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), nullptr,
                                    0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(std::max(bytes, 0)), '\0');
    if (bytes > 0) {
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), utf8.data(),
                            bytes, nullptr, nullptr);
    }
    RECT rect{part.rcl.left, part.rcl.top, part.rcl.right, part.rcl.bottom};
    return gdi::DrawTextAt(*context, part.ptlReference.x, part.ptlReference.y, part.fOptions, &rect,
                           utf8, context->m_state.textAlign)
               ? TRUE
               : FALSE;
}

}  // namespace

BOOL PlayEnhMetaFileRecord(HDC dc, HANDLETABLE* table, const ENHMETARECORD* record, UINT handles) {
    if (record == nullptr || record->nSize < sizeof(EMR)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    switch (record->iType) {
        case EMR_SETBKMODE:
            return SetBkMode(dc, static_cast<int>(Value(record))) != 0;
        case EMR_SETTEXTALIGN:
            return SetTextAlign(dc, Value(record)) != 0xFFFFFFFF;
        case EMR_SETTEXTCOLOR:
            return SetTextColor(dc, Value(record)) != CLR_INVALID;
        case EMR_SETBKCOLOR:
            return SetBkColor(dc, Value(record)) != CLR_INVALID;
        case EMR_SAVEDC:
            return SaveDC(dc) != 0;
        case EMR_RESTOREDC:
            return RestoreDC(dc, static_cast<int>(Value(record)));
        case EMR_MOVETOEX:
        case EMR_LINETO: {
            const auto* point = RecordAs<EMRPOINT>(record);
            if (point == nullptr) {
                return FALSE;
            }
            return record->iType == EMR_LINETO ? LineTo(dc, point->ptl.x, point->ptl.y)
                                               : MoveToEx(dc, point->ptl.x, point->ptl.y, nullptr);
        }
        case EMR_CREATEPEN: {
            const auto* pen = RecordAs<EMRCREATEPEN>(record);
            if (pen == nullptr) {
                return FALSE;
            }
            Store(table, handles, pen->ihPen,
                  CreatePen(static_cast<int>(pen->lopn.lopnStyle), pen->lopn.lopnWidth.x,
                            pen->lopn.lopnColor));
            return TRUE;
        }
        case EMR_CREATEBRUSHINDIRECT: {
            const auto* brush = RecordAs<EMRCREATEBRUSHINDIRECT>(record);
            if (brush == nullptr) {
                return FALSE;
            }
            // The null brush is a stock object, which the table may hold too.
            Store(table, handles, brush->ihBrush,
                  brush->lb.lbStyle == BS_NULL ? GetStockObject(NULL_BRUSH)
                                               : CreateSolidBrush(brush->lb.lbColor));
            return TRUE;
        }
        case EMR_EXTCREATEFONTINDIRECTW: {
            const auto* font = RecordAs<EMREXTCREATEFONTINDIRECTW>(record);
            if (font == nullptr) {
                return FALSE;
            }
            LOGFONTA log{};
            std::memcpy(&log, &font->elfw, offsetof(LOGFONTA, lfFaceName));
            WCHAR face[LF_FACESIZE];
            std::memcpy(face, font->elfw.lfFaceName, sizeof face);
            face[LF_FACESIZE - 1] = 0;
            WideCharToMultiByte(CP_ACP, 0, face, -1, log.lfFaceName, LF_FACESIZE, nullptr, nullptr);
            Store(table, handles, font->ihFont, CreateFontIndirectA(&log));
            return TRUE;
        }
        case EMR_SELECTOBJECT: {
            DWORD index = Value(record);
            if ((index & ENHMETA_STOCK_OBJECT) != 0) {
                return SelectObject(dc, GetStockObject(static_cast<int>(index & 0x7FFFFFFF))) !=
                       nullptr;
            }
            HGDIOBJ* slot = Slot(table, handles, index);
            return slot != nullptr && *slot != nullptr && SelectObject(dc, *slot) != nullptr;
        }
        case EMR_DELETEOBJECT: {
            HGDIOBJ* slot = Slot(table, handles, Value(record));
            if (slot == nullptr || *slot == nullptr) {
                return FALSE;
            }
            // An object still selected stays in the table, and goes when
            // the play ends.
            if (DeleteObject(*slot)) {
                *slot = nullptr;
            }
            return TRUE;
        }
        case EMR_BITBLT: {
            const auto* blt = RecordAs<EMRBITBLT>(record);
            if (blt == nullptr) {
                return FALSE;
            }
            // Only the operations without a source bitmap are played.
            if (blt->cbBmiSrc != 0) {
                return TRUE;
            }
            return BitBlt(dc, blt->xDest, blt->yDest, blt->cxDest, blt->cyDest, nullptr, blt->xSrc,
                          blt->ySrc, blt->dwRop);
        }
        case EMR_EXTTEXTOUTW:
            return PlayText(dc, record);
        default:
            return TRUE;
    }
}

BOOL EnumEnhMetaFile(HDC dc, HENHMETAFILE metafile, ENHMFENUMPROC callback, LPVOID data,
                     const RECT* rect) {
    auto* found = gdi::As<gdi::Metafile>(metafile, OBJ_ENHMETAFILE);
    gdi::Dc* context = gdi::DcOf(dc);
    if (found == nullptr || context == nullptr || callback == nullptr || rect == nullptr) {
        SetErrorCode(found == nullptr || context == nullptr ? ERROR_INVALID_HANDLE
                                                            : ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    // Copied: the callback may delete the metafile.
    std::vector<BYTE> bits = found->m_bits;
    const auto& header = *reinterpret_cast<const ENHMETAHEADER*>(bits.data());
    UINT handles = std::max<UINT>(header.nHandles, 1);

    int level = SaveDC(dc);
    // The frame, in hundredths of a millimetre, is the reference device's
    // pixels that go onto the rectangle, ahead of what the caller's world does.
    double across =
        header.szlMillimeters.cx > 0 ? header.szlDevice.cx / (100.0 * header.szlMillimeters.cx) : 1;
    double down =
        header.szlMillimeters.cy > 0 ? header.szlDevice.cy / (100.0 * header.szlMillimeters.cy) : 1;
    double frameLeft = header.rclFrame.left * across;
    double frameTop = header.rclFrame.top * down;
    double frameWidth = (header.rclFrame.right - header.rclFrame.left) * across;
    double frameHeight = (header.rclFrame.bottom - header.rclFrame.top) * down;
    cairo_matrix_t play;
    cairo_matrix_init_translate(&play, rect->left, rect->top);
    cairo_matrix_scale(&play, frameWidth != 0 ? (rect->right - rect->left) / frameWidth : 1,
                       frameHeight != 0 ? (rect->bottom - rect->top) / frameHeight : 1);
    cairo_matrix_translate(&play, -frameLeft, -frameTop);
    cairo_matrix_t world;
    cairo_matrix_multiply(&world, &play, &context->m_state.world);
    context->m_state.world = world;

    std::vector<HGDIOBJ> table(handles, nullptr);
    auto* handleTable = reinterpret_cast<HANDLETABLE*>(table.data());
    table[0] = reinterpret_cast<HGDIOBJ>(metafile);
    BOOL completed = TRUE;
    for (std::size_t at = 0; at + sizeof(EMR) <= bits.size();) {
        const auto* record = reinterpret_cast<const ENHMETARECORD*>(bits.data() + at);
        if (callback(dc, handleTable, record, static_cast<int>(handles),
                     reinterpret_cast<LPARAM>(data)) == 0) {
            completed = FALSE;
            break;
        }
        if (record->iType == EMR_EOF) {
            break;
        }
        at += record->nSize;
    }
    RestoreDC(dc, level);
    for (std::size_t i = 1; i < table.size(); ++i) {
        if (table[i] != nullptr) {
            DeleteObject(table[i]);
        }
    }
    return completed;
}

BOOL PlayEnhMetaFile(HDC dc, HENHMETAFILE metafile, const RECT* rect) {
    return EnumEnhMetaFile(
        dc, metafile,
        [](HDC target, HANDLETABLE* table, const ENHMETARECORD* record, int handles, LPARAM) {
            PlayEnhMetaFileRecord(target, table, record, static_cast<UINT>(handles));
            return 1;
        },
        nullptr, rect);
}

}  // namespace nvk::os
