// Four RIB fields, split at the first three zero bytes: a computed key
// passes the exact test.
#include <cstddef>
#include <cstdint>
#include <string>

#include "nvk/codes/rib.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string fields[4];
    std::size_t field = 0;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == 0 && field < 3) {
            ++field;
        } else {
            fields[field] += static_cast<char>(data[i]);
        }
    }
    const char* a = fields[0].c_str();
    const char* g = fields[1].c_str();
    const char* c = fields[2].c_str();
    const CString key = CRIB::ExpectedKey(a, g, c);
    if (!key.IsEmpty() && CRIB::TestRIBEx(a, g, c, key) != 1) {
        __builtin_trap();
    }
    CRIB::TestRIB(a, g, c, fields[3].c_str());
    CRIB::TestRIBEx(a, g, c, fields[3].c_str());
    return 0;
}
