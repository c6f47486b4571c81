// Loads values from untrusted archive bytes: every string prefix, number and
// short ending must end in a CArchiveException, never in a fault or a huge
// allocation. The first byte picks the order of the reads.
#include <cstddef>
#include <cstdint>

#include "nvk/afx/archive.h"
#include "nvk/afx/cstring.h"
#include "nvk/afx/exceptions.h"
#include "nvk/afx/mem_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 1u << 20) {
        return 0;
    }
    const std::uint8_t plan = data[0];
    CMemFile file(const_cast<std::uint8_t*>(data + 1), static_cast<unsigned>(size - 1));
    CArchive ar(&file, CArchive::load, 16 + plan % 64);
    try {
        for (unsigned step = 0;; ++step) {
            switch ((plan >> (step % 4 * 2)) & 3) {
                case 0: {
                    CString text;
                    ar >> text;
                    break;
                }
                case 1: {
                    std::uint16_t word;
                    ar >> word;
                    break;
                }
                case 2: {
                    double value;
                    ar >> value;
                    break;
                }
                default: {
                    std::uint8_t bytes[300];
                    if (ar.Read(bytes, plan) < plan) {
                        return 0;
                    }
                    break;
                }
            }
        }
    } catch (CException* e) {
        e->Delete();
    }
    return 0;
}
