// The full month names that dates print with.
#pragma once

#include "nvk/afx/cstring.h"

namespace nvk {

// The name of month 1-12 in the current language, in the ANSI code page;
// empty for any other number, which would index outside the table of names.
CString MonthName(unsigned month);

}  // namespace nvk
