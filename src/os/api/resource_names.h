// The names of a module's resources of one type.
#pragma once

#include "os/api/resource.h"

namespace nvk::os {

inline const LPCSTR RT_ICON = MAKEINTRESOURCEA(3);
inline const LPCSTR RT_GROUP_ICON = MAKEINTRESOURCEA(14);

inline constexpr DWORD ERROR_RESOURCE_ENUM_USER_STOP = 15106;

using ENUMRESNAMEPROCA = BOOL (*)(HMODULE module, LPCSTR type, LPSTR name, LONG_PTR param);

// Calls `callback` once for each name of the type, in the order of an
// executable's resource directory: texts first, in upper case and in order,
// then numbers (as MAKEINTRESOURCEA) in ascending order. A callback that
// returns FALSE stops the walk, and the result is then FALSE with
// ERROR_RESOURCE_ENUM_USER_STOP.
BOOL EnumResourceNamesA(HMODULE module, LPCSTR type, ENUMRESNAMEPROCA callback, LONG_PTR param);

}  // namespace nvk::os
