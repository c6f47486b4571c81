// Social-security text: a number read as valid keeps its key on display.
#include <cstddef>
#include <cstdint>

#include "nvk/codes/nir.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CNIR nir;
    const bool valid = nir.Set(Chaine(data, static_cast<int>(size)));
    if (valid != nir.IsValid()) {
        __builtin_trap();
    }
    const Chaine display = nir.GetDisplay('-');
    if (valid && display != nir.GetDisplay(0) + "-" + nir.szKey) {
        __builtin_trap();
    }
    nir.IsTemporary();
    return 0;
}
