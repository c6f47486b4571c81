// Locales by id (LCID) and what they say: names of months and days, date and
// number formats, language and country names. The thread's, the user's and
// the system's locale come from the environment (LC_ALL, LC_MESSAGES, LANG;
// "C" and "POSIX" are English (United States)).
#pragma once

#include "nvk/os/types.h"

namespace nvk::os {

using LCTYPE = DWORD;

inline constexpr LCID LOCALE_NEUTRAL = 0x0000;
inline constexpr LCID LOCALE_INVARIANT = 0x007F;
inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;
inline constexpr LCID LOCALE_SYSTEM_DEFAULT = 0x0800;

inline constexpr DWORD ERROR_INVALID_FLAGS = 1004;

// Flags of a locale item.
inline constexpr LCTYPE LOCALE_NOUSEROVERRIDE = 0x80000000;
inline constexpr LCTYPE LOCALE_USE_CP_ACP = 0x40000000;
inline constexpr LCTYPE LOCALE_RETURN_NUMBER = 0x20000000;

// Locale items.
inline constexpr LCTYPE LOCALE_ILANGUAGE = 0x0001;
inline constexpr LCTYPE LOCALE_SLANGUAGE = 0x0002;
inline constexpr LCTYPE LOCALE_SABBREVLANGNAME = 0x0003;
inline constexpr LCTYPE LOCALE_SNATIVELANGNAME = 0x0004;
inline constexpr LCTYPE LOCALE_SCOUNTRY = 0x0006;
inline constexpr LCTYPE LOCALE_SABBREVCTRYNAME = 0x0007;
inline constexpr LCTYPE LOCALE_SNATIVECTRYNAME = 0x0008;
inline constexpr LCTYPE LOCALE_IDEFAULTCODEPAGE = 0x000B;
inline constexpr LCTYPE LOCALE_SLIST = 0x000C;
inline constexpr LCTYPE LOCALE_IMEASURE = 0x000D;
inline constexpr LCTYPE LOCALE_SDECIMAL = 0x000E;
inline constexpr LCTYPE LOCALE_STHOUSAND = 0x000F;
inline constexpr LCTYPE LOCALE_IDIGITS = 0x0011;
inline constexpr LCTYPE LOCALE_ILZERO = 0x0012;
inline constexpr LCTYPE LOCALE_SCURRENCY = 0x0014;
inline constexpr LCTYPE LOCALE_SINTLSYMBOL = 0x0015;
inline constexpr LCTYPE LOCALE_ICURRDIGITS = 0x0019;
inline constexpr LCTYPE LOCALE_SDATE = 0x001D;
inline constexpr LCTYPE LOCALE_STIME = 0x001E;
inline constexpr LCTYPE LOCALE_SSHORTDATE = 0x001F;
inline constexpr LCTYPE LOCALE_SLONGDATE = 0x0020;
inline constexpr LCTYPE LOCALE_IDATE = 0x0021;
inline constexpr LCTYPE LOCALE_ICENTURY = 0x0024;
inline constexpr LCTYPE LOCALE_IDAYLZERO = 0x0026;
inline constexpr LCTYPE LOCALE_IMONLZERO = 0x0027;
inline constexpr LCTYPE LOCALE_S1159 = 0x0028;
inline constexpr LCTYPE LOCALE_S2359 = 0x0029;
inline constexpr LCTYPE LOCALE_SDAYNAME1 = 0x002A;  // Monday; to 0x0030, Sunday
inline constexpr LCTYPE LOCALE_SABBREVDAYNAME1 = 0x0031;
inline constexpr LCTYPE LOCALE_SMONTHNAME1 = 0x0038;  // January; to 0x0043
inline constexpr LCTYPE LOCALE_SABBREVMONTHNAME1 = 0x0044;
inline constexpr LCTYPE LOCALE_SPOSITIVESIGN = 0x0050;
inline constexpr LCTYPE LOCALE_SNEGATIVESIGN = 0x0051;
inline constexpr LCTYPE LOCALE_SISO639LANGNAME = 0x0059;
inline constexpr LCTYPE LOCALE_SISO3166CTRYNAME = 0x005A;
inline constexpr LCTYPE LOCALE_SNAME = 0x005C;
inline constexpr LCTYPE LOCALE_SENGLANGUAGE = 0x1001;
inline constexpr LCTYPE LOCALE_SENGCOUNTRY = 0x1002;
inline constexpr LCTYPE LOCALE_STIMEFORMAT = 0x1003;
inline constexpr LCTYPE LOCALE_IDEFAULTANSICODEPAGE = 0x1004;
inline constexpr LCTYPE LOCALE_ICALENDARTYPE = 0x1009;
inline constexpr LCTYPE LOCALE_IFIRSTDAYOFWEEK = 0x100C;
inline constexpr LCTYPE LOCALE_IFIRSTWEEKOFYEAR = 0x100D;
inline constexpr LCTYPE LOCALE_SMONTHNAME13 = 0x100E;

// The item's text in the locale's ANSI code page (CP_ACP with
// LOCALE_USE_CP_ACP or for a locale without one), with its terminator; its
// length when `size` is 0. With LOCALE_RETURN_NUMBER a numeric item is
// written as a DWORD. 0 on failure: ERROR_INVALID_PARAMETER for an unknown
// locale, ERROR_INVALID_FLAGS for an unknown item, ERROR_INSUFFICIENT_BUFFER
// after writing what fits.
int GetLocaleInfoA(LCID locale, LCTYPE type, LPSTR data, int size);

// The environment's locale as it stands now, for the thread, the user and
// the system alike.
LCID GetThreadLocale();
LCID GetUserDefaultLCID();
LCID GetSystemDefaultLCID();
LANGID GetUserDefaultLangID();
LANGID GetSystemDefaultLangID();
// The user and system defaults become their locales, neutral is the user's,
// and a neutral sublanguage becomes the language's default one.
LCID ConvertDefaultLocale(LCID locale);
// Whether the locale is one that GetLocaleInfoA knows.
BOOL IsValidLocale(LCID locale, DWORD flags);

}  // namespace nvk::os
