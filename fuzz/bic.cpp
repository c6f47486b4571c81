// BIC text through both setters; a valid code reads back as itself.
#include <cstddef>
#include <cstdint>

#include "nvk/codes/bic.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Chaine text(data, static_cast<int>(size));
    EBIC bic(text, size > 0 && (data[0] & 1) != 0);
    if (bic.IsValid() && !(EBIC(bic.GetBIC()) == bic)) {
        __builtin_trap();
    }
    EBIC copy = bic;
    copy.Validate();
    EBIC parts;
    parts.SetBIC(text.Left(4), text.Mid(4, 2), text.Mid(6, 2), text.Mid(8));
    parts.IsValid();
    return 0;
}
