// The version of the system's common controls library.
#pragma once

#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

// E_INVALIDARG when either pointer cannot be written, E_FAIL when the
// library cannot be loaded or does not tell its version; S_OK otherwise. A
// library without a version entry is the earliest one, 4.0.
NVKUTIL_EXPORT nvk::os::HRESULT GetComCtlVersion(nvk::os::DWORD* major, nvk::os::DWORD* minor);
