// Recording device contexts and the metafiles they make.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <mutex>

#include "os/api/gdi.h"
#include "os/api/metafile.h"
#include "os/api/nls.h"
#include "os/api/path_map.h"
#include "os/common/metafile_bits.h"
#include "os/posix/handle.h"
#include "os/posix/metafile_recorder.h"

namespace nvk::os {

namespace gdi {

namespace {

std::mutex& RecordersLock() {
    static std::mutex lock;
    return lock;
}

std::vector<Recorder*>& Recorders() {
    static std::vector<Recorder*> recorders;
    return recorders;
}

}  // namespace

Recorder::Recorder() {
    std::lock_guard<std::mutex> guard(RecordersLock());
    Recorders().push_back(this);
}

Recorder::~Recorder() {
    std::lock_guard<std::mutex> guard(RecordersLock());
    std::erase(Recorders(), this);
}

void Recorder::Append(DWORD type, const void* record, std::size_t size) {
    std::size_t padded = (size + 3) / 4 * 4;
    std::size_t at = m_records.size();
    m_records.resize(at + padded);
    std::memcpy(m_records.data() + at, record, size);
    EMR header{type, static_cast<DWORD>(padded)};
    std::memcpy(m_records.data() + at, &header, sizeof header);
    ++m_count;
}

void Recorder::Record(DWORD type, std::initializer_list<DWORD> values) {
    std::vector<DWORD> record(2 + values.size());
    std::copy(values.begin(), values.end(), record.begin() + 2);
    Append(type, record.data(), record.size() * sizeof(DWORD));
}

void Recorder::Select(Object* object) {
    int stock = StockId(object);
    if (stock >= 0) {
        Record(EMR_SELECTOBJECT, {ENHMETA_STOCK_OBJECT | static_cast<DWORD>(stock)});
        return;
    }
    auto found = std::find(m_objects.begin() + 1, m_objects.end(), object);
    DWORD index = static_cast<DWORD>(found - m_objects.begin());
    if (found == m_objects.end()) {
        auto free =
            std::find(m_objects.begin() + 1, m_objects.end(), static_cast<Object*>(nullptr));
        index = static_cast<DWORD>(free - m_objects.begin());
        if (free == m_objects.end()) {
            m_objects.push_back(object);
        } else {
            *free = object;
        }
        m_used = std::max(m_used, m_objects.size());
        if (object->Type() == OBJ_PEN) {
            EMRCREATEPEN pen{{}, index, static_cast<Pen*>(object)->m_log};
            Append(EMR_CREATEPEN, &pen, sizeof pen);
        } else if (object->Type() == OBJ_BRUSH) {
            const LOGBRUSH& log = static_cast<Brush*>(object)->m_log;
            EMRCREATEBRUSHINDIRECT brush{
                {}, index, {log.lbStyle, log.lbColor, static_cast<ULONG>(log.lbHatch)}};
            Append(EMR_CREATEBRUSHINDIRECT, &brush, sizeof brush);
        } else {
            const LOGFONTA& log = static_cast<Font*>(object)->m_log;
            EMREXTCREATEFONTINDIRECTW font{};
            font.ihFont = index;
            std::memcpy(&font.elfw, &log, offsetof(LOGFONTA, lfFaceName));
            MultiByteToWideChar(CP_ACP, 0, log.lfFaceName, -1, font.elfw.lfFaceName, LF_FACESIZE);
            font.elfw.lfFaceName[LF_FACESIZE - 1] = 0;
            Append(EMR_EXTCREATEFONTINDIRECTW, &font, sizeof font);
        }
    }
    Record(EMR_SELECTOBJECT, {index});
}

void Recorder::ObjectDeleted(Object* object) {
    std::lock_guard<std::mutex> guard(RecordersLock());
    for (Recorder* recorder : Recorders()) {
        auto found = std::find(recorder->m_objects.begin() + 1, recorder->m_objects.end(), object);
        if (found != recorder->m_objects.end()) {
            *found = nullptr;
            recorder->Record(EMR_DELETEOBJECT,
                             {static_cast<DWORD>(found - recorder->m_objects.begin())});
        }
    }
}

void Recorder::Bounds(double left, double top, double right, double bottom) {
    if (left > right) {
        std::swap(left, right);
    }
    if (top > bottom) {
        std::swap(top, bottom);
    }
    if (!m_drawn) {
        m_bounds[0] = left;
        m_bounds[1] = top;
        m_bounds[2] = right;
        m_bounds[3] = bottom;
        m_drawn = true;
        return;
    }
    m_bounds[0] = std::min(m_bounds[0], left);
    m_bounds[1] = std::min(m_bounds[1], top);
    m_bounds[2] = std::max(m_bounds[2], right);
    m_bounds[3] = std::max(m_bounds[3], bottom);
}

std::vector<BYTE> Recorder::Finish(const RECT* frame, const std::u16string& description) {
    EMREOF eof{{}, 0, sizeof(EMREOF) - sizeof(DWORD), sizeof(EMREOF)};
    Append(EMR_EOF, &eof, sizeof eof);

    ENHMETAHEADER header{};
    header.iType = EMR_HEADER;
    std::size_t descriptionBytes = (description.size() * 2 + 3) / 4 * 4;
    header.nSize = static_cast<DWORD>(sizeof header + descriptionBytes);
    // Inclusive device units, as Windows gives them; empty bounds are
    // 0, 0, -1, -1.
    header.rclBounds = m_drawn ? RECTL{static_cast<LONG>(std::floor(m_bounds[0])),
                                       static_cast<LONG>(std::floor(m_bounds[1])),
                                       static_cast<LONG>(std::ceil(m_bounds[2])) - 1,
                                       static_cast<LONG>(std::ceil(m_bounds[3])) - 1}
                               : RECTL{0, 0, -1, -1};
    // Without a frame, the bounds' pixels in hundredths of a millimetre.
    auto across = [&](LONG pixels) {
        return static_cast<LONG>(std::lround(pixels * 100.0 * m_millimetres.cx / m_device.cx));
    };
    auto down = [&](LONG pixels) {
        return static_cast<LONG>(std::lround(pixels * 100.0 * m_millimetres.cy / m_device.cy));
    };
    const RECTL& bounds = header.rclBounds;
    header.rclFrame = frame != nullptr ? RECTL{frame->left, frame->top, frame->right, frame->bottom}
                                       : RECTL{across(bounds.left), down(bounds.top),
                                               across(bounds.right), down(bounds.bottom)};
    header.dSignature = ENHMETA_SIGNATURE;
    header.nVersion = 0x10000;
    header.nBytes = static_cast<DWORD>(header.nSize + m_records.size());
    header.nRecords = m_count + 1;
    header.nHandles = static_cast<WORD>(m_used);
    header.nDescription = static_cast<DWORD>(description.size());
    header.offDescription = description.empty() ? 0 : sizeof header;
    header.szlMillimeters = m_millimetres;
    header.szlDevice = m_device;
    header.szlMicrometers = SIZEL{m_millimetres.cx * 1000, m_millimetres.cy * 1000};

    std::vector<BYTE> bits(header.nBytes);
    std::memcpy(bits.data(), &header, sizeof header);
    std::memcpy(bits.data() + sizeof header, description.data(), description.size() * 2);
    std::memcpy(bits.data() + header.nSize, m_records.data(), m_records.size());
    return bits;
}

}  // namespace gdi

using gdi::Dc;
using posix::SetErrorCode;

HDC CreateEnhMetaFileA(HDC reference, LPCSTR fileName, const RECT* frame, LPCSTR description) {
    if (reference != nullptr && gdi::DcOf(reference) == nullptr) {
        return nullptr;
    }
    std::string native;
    if (fileName != nullptr) {
        native = ToNativePath(fileName);
        if (native.empty()) {
            SetErrorCode(ERROR_PATH_NOT_FOUND);
            return nullptr;
        }
    }
    auto* dc = new Dc(Dc::Kind::Record, OBJ_ENHMETADC);
    dc->m_recorder = new gdi::Recorder;
    dc->m_file = native;
    // Drawn in the pixels of the reference device, the screen when none.
    HDC device = reference != nullptr ? reference : GetDC(nullptr);
    dc->m_dpi = GetDeviceCaps(device, LOGPIXELSX);
    dc->m_width = GetDeviceCaps(device, HORZRES);
    dc->m_height = GetDeviceCaps(device, VERTRES);
    dc->m_recorder->Device(SIZEL{dc->m_width, dc->m_height},
                           SIZEL{GetDeviceCaps(device, HORZSIZE), GetDeviceCaps(device, VERTSIZE)});
    if (reference == nullptr) {
        ReleaseDC(nullptr, device);
    }
    if (frame != nullptr) {
        dc->m_frame = *frame;
        dc->m_hasFrame = true;
    }
    // The description is two texts, each with its zero, and a final zero.
    if (description != nullptr) {
        std::size_t length = 0;
        while (description[length] != '\0' || description[length + 1] != '\0') {
            ++length;
        }
        for (std::size_t i = 0; i <= length + 1; ++i) {
            dc->m_description.push_back(static_cast<unsigned char>(description[i]));
        }
    }
    return reinterpret_cast<HDC>(gdi::Register(dc));
}

HENHMETAFILE CloseEnhMetaFile(HDC dc) {
    Dc* context = gdi::DcOf(dc);
    if (context == nullptr || context->m_kind != Dc::Kind::Record) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto* metafile = new gdi::Metafile;
    metafile->m_bits = context->m_recorder->Finish(
        context->m_hasFrame ? &context->m_frame : nullptr, context->m_description);
    std::string file = context->m_file;
    gdi::Unregister(context);
    delete context;
    if (!file.empty()) {
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(metafile->m_bits.data()),
                  static_cast<std::streamsize>(metafile->m_bits.size()));
        if (!out.flush()) {
            delete metafile;
            SetErrorCode(ERROR_CANTWRITE);
            return nullptr;
        }
    }
    return reinterpret_cast<HENHMETAFILE>(gdi::Register(metafile));
}

BOOL DeleteEnhMetaFile(HENHMETAFILE metafile) {
    auto* found = gdi::As<gdi::Metafile>(metafile, OBJ_ENHMETAFILE);
    if (found == nullptr) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    gdi::Unregister(found);
    delete found;
    return TRUE;
}

UINT GetEnhMetaFileBits(HENHMETAFILE metafile, UINT size, LPBYTE buffer) {
    auto* found = gdi::As<gdi::Metafile>(metafile, OBJ_ENHMETAFILE);
    if (found == nullptr) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return 0;
    }
    UINT total = static_cast<UINT>(found->m_bits.size());
    if (buffer == nullptr) {
        return total;
    }
    if (size < total) {
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::memcpy(buffer, found->m_bits.data(), total);
    return total;
}

HENHMETAFILE SetEnhMetaFileBits(UINT size, const BYTE* data) {
    if (!EnhMetaFileBitsValid(size, data)) {
        SetErrorCode(ERROR_INVALID_DATA);
        return nullptr;
    }
    auto* metafile = new gdi::Metafile;
    metafile->m_bits.assign(data, data + size);
    return reinterpret_cast<HENHMETAFILE>(gdi::Register(metafile));
}

}  // namespace nvk::os
