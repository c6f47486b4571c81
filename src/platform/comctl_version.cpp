#include "nvk/platform/comctl_version.h"

#include "os/api/module.h"
#include "os/api/pointer_check.h"

using namespace nvk::os;

namespace {

struct DLLVERSIONINFO {
    DWORD cbSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformID;
};
static_assert(sizeof(DLLVERSIONINFO) == 20);

using DLLGETVERSIONPROC = HRESULT (*)(DLLVERSIONINFO*);

}  // namespace

HRESULT GetComCtlVersion(DWORD* major, DWORD* minor) {
    if (IsBadWritePtr(major, sizeof *major) || IsBadWritePtr(minor, sizeof *minor)) {
        return E_INVALIDARG;
    }
    HMODULE library = LoadLibraryA("comctl32.dll");
    if (library == nullptr) {
        return E_FAIL;
    }
    HRESULT result = S_OK;
    auto getVersion = reinterpret_cast<DLLGETVERSIONPROC>(GetProcAddress(library, "DllGetVersion"));
    if (getVersion == nullptr) {
        *major = 4;
        *minor = 0;
    } else {
        DLLVERSIONINFO info{};
        info.cbSize = sizeof info;
        if (getVersion(&info) < 0) {
            result = E_FAIL;
        } else {
            *major = info.dwMajorVersion;
            *minor = info.dwMinorVersion;
        }
    }
    FreeLibrary(library);
    return result;
}
