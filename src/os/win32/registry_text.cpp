// The registry's text form, which the registry editor of Windows reads and
// writes itself.
#include "os/win32/forward.h"

namespace nvk::os {

LSTATUS RegExportText(HKEY, LPCSTR, std::string&) {
    return ERROR_CALL_NOT_IMPLEMENTED;
}

LSTATUS RegImportText(std::string_view) {
    return ERROR_CALL_NOT_IMPLEMENTED;
}

}  // namespace nvk::os
