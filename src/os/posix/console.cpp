#include "os/api/console.h"

#include <unistd.h>

namespace nvk::os {

BOOL IsConsoleStream(DWORD stream) {
    if (stream == STD_OUTPUT_HANDLE) {
        return isatty(STDOUT_FILENO) ? TRUE : FALSE;
    }
    if (stream == STD_ERROR_HANDLE) {
        return isatty(STDERR_FILENO) ? TRUE : FALSE;
    }
    return FALSE;
}

}  // namespace nvk::os
