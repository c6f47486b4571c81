// What a recording device context writes: the records of an enhanced
// metafile, with the table of the objects they create.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "os/posix/gdi_dc.h"

namespace nvk::os::gdi {

struct Metafile : Object {
    Metafile() : Object(OBJ_ENHMETAFILE) {}
    // The records, header first and EMR_EOF last.
    std::vector<BYTE> m_bits;
    const ENHMETAHEADER& Header() const {
        return *reinterpret_cast<const ENHMETAHEADER*>(m_bits.data());
    }
};

class Recorder {
public:
    Recorder();
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    // A record of one or more 32-bit values.
    void Record(DWORD type, std::initializer_list<DWORD> values);
    // A whole record, its size set here from `size`, rounded up to 4 bytes.
    void Append(DWORD type, const void* record, std::size_t size);
    // Creates the object in the table on its first use, then selects it.
    void Select(Object* object);
    // Deletes the object in every metafile being recorded that uses it.
    static void ObjectDeleted(Object* object);
    // The reference device's size in pixels and in millimetres, which the
    // header gives to map the frame onto the drawing's pixels.
    void Device(SIZEL pixels, SIZEL millimetres) {
        m_device = pixels;
        m_millimetres = millimetres;
    }
    // Widens the bounds by a drawn rectangle in device units.
    void Bounds(double left, double top, double right, double bottom);

    std::vector<BYTE> Finish(const RECT* frame, const std::u16string& description);

private:
    std::vector<BYTE> m_records;
    DWORD m_count = 0;
    // Index 0 stands for the metafile itself, as on Windows.
    std::vector<Object*> m_objects{nullptr};
    std::size_t m_used = 1;
    bool m_drawn = false;
    SIZEL m_device{1920, 1080};
    SIZEL m_millimetres{508, 286};
    double m_bounds[4] = {0, 0, 0, 0};
};

}  // namespace nvk::os::gdi
