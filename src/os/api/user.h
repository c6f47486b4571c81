// The account the process runs under.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// The user's login name. *size holds the room of `buffer` and receives the
// length with the terminator; a buffer that is too small fails with
// ERROR_INSUFFICIENT_BUFFER and *size set to the room needed.
BOOL GetUserNameA(LPSTR buffer, LPDWORD size);

}  // namespace nvk::os
