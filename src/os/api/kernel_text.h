// The kernel's small text and arithmetic helpers that the library's callers
// were written against.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

// Copies at most `length` - 1 bytes of `source` into `destination` and always
// ends it with a zero when `length` is not 0. Returns `destination`.
LPSTR lstrcpynA(LPSTR destination, LPCSTR source, int length);

// Formats into `buffer` as the C library's printf does, but never writes more
// than 1024 bytes with the terminator, which is the room Windows promises the
// caller's buffer has. Returns the number of bytes stored, without the zero.
int wsprintfA(LPSTR buffer, LPCSTR format, ...);

// number * numerator / denominator in 64 bits, rounded half away from zero;
// -1 when the denominator is 0 or the result does not fit in an int.
int MulDiv(int number, int numerator, int denominator);

}  // namespace nvk::os
