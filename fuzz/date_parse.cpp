// Reads dates and times from untrusted text: any text gives a date or no date
// and a time or no time, never a fault. A date that reads as valid prints in
// the numeric form and reads back as itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "nvk/afx/cstring.h"
#include "nvk/calendar/cbdate.h"
#include "nvk/calendar/cbtime.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 4096) {
        return 0;
    }
    const CString text(reinterpret_cast<const char*>(data), static_cast<int>(size));
    const CBDate date(text);
    const CString printed = date.AsString();
    if (date.IsValid() && date.Year() <= 9999 && CBDate(printed) != date) {
        std::abort();
    }
    const CBTime time(text);
    if (time.AsString().GetLength() < 5) {
        std::abort();
    }
    time.ToBtrTime();
    return 0;
}
