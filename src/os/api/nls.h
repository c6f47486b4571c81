// Code-page conversions and locale-aware comparison, as Win32 offers them.
// The ANSI code page (CP_ACP) is Windows-1252 and the OEM code page
// (CP_OEMCP) IBM-850 everywhere. Single-byte code pages use Windows' own
// tables; the others are those the platform's converters know by their
// Windows number, CP_UTF8 and CP_UTF7 among them. Calls that succeed leave
// the last error as it was; unknown flags fail with ERROR_INVALID_FLAGS.
#pragma once

#include "nvk/os/types.h"
#include "os/api/locale.h"

namespace nvk::os {

// A negative size takes the source up to and with its terminator. A destination
// size of 0 asks for the size needed. A destination that is too small takes
// the whole characters that fit, and the call fails with
// ERROR_INSUFFICIENT_BUFFER. With MB_ERR_INVALID_CHARS, invalid input fails
// with ERROR_NO_UNICODE_TRANSLATION; otherwise it becomes U+FFFD.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int sourceSize, LPWSTR dest,
                        int destSize);
// Characters without a form in the code page become `defaultChar` ("?" when
// null) and set *usedDefaultChar; CP_UTF8 and CP_UTF7 take neither. Near
// equivalents (best fit: "A" for U+0100) are used unless
// WC_NO_BEST_FIT_CHARS. WC_ERR_INVALID_CHARS makes UTF-8 refuse a lone
// surrogate with ERROR_NO_UNICODE_TRANSLATION.
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, int sourceSize, LPSTR dest,
                        int destSize, LPCSTR defaultChar, BOOL* usedDefaultChar);

// ANSI to OEM and back, up to the terminator; source and dest may be the
// same buffer.
BOOL CharToOemA(LPCSTR source, LPSTR dest);
BOOL OemToCharA(LPCSTR source, LPSTR dest);

// CSTR_LESS_THAN, CSTR_EQUAL or CSTR_GREATER_THAN by the collation of the
// locale, the texts read in the locale's own ANSI code page; 0 with
// ERROR_INVALID_PARAMETER for an unknown locale or a null text. Sizes of -1
// stop at the terminator. NORM_IGNORECASE, NORM_IGNORENONSPACE,
// NORM_IGNORESYMBOLS and SORT_STRINGSORT are honoured: without the last, the
// hyphen and the apostrophe weigh only where the texts are otherwise equal.
int CompareStringA(LCID locale, DWORD flags, LPCSTR text1, int size1, LPCSTR text2, int size2);

}  // namespace nvk::os
