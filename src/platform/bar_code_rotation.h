// The rotation code that EBarCode puts in the library's record, from the
// angles of the device context's font in tenths of a degree: 0 upright, 2 a
// quarter counter-clockwise, -1 upside down, 1 a quarter clockwise.
#pragma once

#include "nvk/os/types.h"

namespace nvk {

// DrawBarCode's: the first range that either angle falls into, from 1 to
// 449, 450 to 1349, 1350 to 2249, 2250 to 3149; 0 otherwise.
int DrawingRotation(os::LONG escapement, os::LONG orientation);
// IsValidText's: from the orientation alone, from 0, and with the quarter
// turns the other way round. Kept as the applications have always had it.
int CheckingRotation(os::LONG orientation);

}  // namespace nvk
