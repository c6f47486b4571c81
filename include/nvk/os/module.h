// Modules loaded at run time. "x.dll" is looked for as x.dll, then libx.so, in
// the executable's folder, the library's folder, the engines' folder beside
// it, then the system's paths.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

HMODULE LoadLibraryA(LPCSTR fileName);
// A name decorated for __stdcall ("_name@12") is also found undecorated.
FARPROC GetProcAddress(HMODULE module, LPCSTR procName);
BOOL FreeLibrary(HMODULE module);
// A null module names the executable. The path is in drive form.
DWORD GetModuleFileNameA(HMODULE module, LPSTR fileName, DWORD size);
// A null name gives the executable's handle, which is null.
HMODULE GetModuleHandleA(LPCSTR moduleName);
// The module that holds an address: what a module asks to find itself.
HMODULE ModuleFromAddress(LPCVOID address);
// Keeps the module that holds `address` loaded until the process ends, even
// once every FreeLibrary has been called.
BOOL PinModule(LPCVOID address);

}  // namespace nvk::os
