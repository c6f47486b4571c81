// Version resources of executables and modules, read from the file without
// loading it: from a Windows PE file's resource section, or from the section
// ".nvkversion" of our own ELF modules, where the resource compiler puts the
// VERSIONINFO of their scripts. Both hold the same VS_VERSIONINFO tree.
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

struct VS_FIXEDFILEINFO {
    DWORD dwSignature;
    DWORD dwStrucVersion;
    DWORD dwFileVersionMS;
    DWORD dwFileVersionLS;
    DWORD dwProductVersionMS;
    DWORD dwProductVersionLS;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags;
    DWORD dwFileOS;
    DWORD dwFileType;
    DWORD dwFileSubtype;
    DWORD dwFileDateMS;
    DWORD dwFileDateLS;
};
static_assert(sizeof(VS_FIXEDFILEINFO) == 52);

inline constexpr DWORD VS_FFI_SIGNATURE = 0xFEEF04BD;
// The ELF section that carries a module's VS_VERSIONINFO.
inline constexpr const char* kVersionSectionName = ".nvkversion";

// The size of the buffer that GetFileVersionInfoA needs, 0 when the file has
// no version resource: ERROR_FILE_NOT_FOUND, ERROR_RESOURCE_DATA_NOT_FOUND for
// a file without resources (an image or not), ERROR_RESOURCE_TYPE_NOT_FOUND
// for one without a version.
// `handle`, when given, is set to 0.
DWORD GetFileVersionInfoSizeA(LPCSTR fileName, LPDWORD handle);
// Reads the version resource into `data`. A buffer smaller than the size
// asked for holds the part of the tree that fits.
BOOL GetFileVersionInfoA(LPCSTR fileName, DWORD handle, DWORD length, LPVOID data);
// Looks up a value of a block that GetFileVersionInfoA filled: "\" gives the
// VS_FIXEDFILEINFO, "\VarFileInfo\Translation" its binary value (length in
// bytes), "\StringFileInfo\040904e4\FileVersion" the text, in the ANSI code
// page, with its length in characters and its zero. Names are the same
// without regard to case. The text is converted into the spare part of the
// block, as on Windows, so the block must stay writable.
BOOL VerQueryValueA(LPCVOID block, LPCSTR subBlock, LPVOID* buffer, UINT* length);

}  // namespace nvk::os
