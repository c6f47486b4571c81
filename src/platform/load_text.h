// String resources as the framework's string, for the interface helpers.
#pragma once

#include "nvk/afx/cstring.h"

namespace nvk {

// String resource `id` in the process's string language; empty when there is
// none.
CString LoadText(unsigned id);

}  // namespace nvk
