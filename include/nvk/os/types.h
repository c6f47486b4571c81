// The Win32 types and constants that the library's code is written in. The OS
// layer (nvk::os) takes and returns these on every platform.
//
// On Windows the numbers, characters and handles are the very types of the
// system's headers, so that a program holding values of <windows.h> passes
// them to the library as they are (this header does not include it: its
// macros would rename the library's own functions). Elsewhere they keep
// Windows' sizes. The structs are the library's own everywhere, laid out as
// Windows lays out its own.
#pragma once

#include <cstddef>
#include <cstdint>

// Each handle points to an incomplete tag of the global namespace, as
// Windows declares its handles.
struct HINSTANCE__;
struct HWND__;
struct HKEY__;

// A literal of WCHAR text: NVK_WIDE("\u00E9t\u00E9").
#ifdef _WIN32
#define NVK_WIDE(text) L##text
#else
#define NVK_WIDE(text) u##text
#endif

namespace nvk::os {

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
#ifdef _WIN32
using DWORD = unsigned long;
using LONG = long;
using ULONG = unsigned long;
using WCHAR = wchar_t;
#else
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
// UTF-16 code units, as Windows stores them in files and resources.
using WCHAR = char16_t;
#endif
using UINT = unsigned int;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using SIZE_T = std::size_t;
using ULONG_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using LPVOID = void*;
using LPCVOID = const void*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPDWORD = DWORD*;
using PLONG = LONG*;
using LCID = DWORD;
using LANGID = WORD;

using HANDLE = void*;
using HINSTANCE = ::HINSTANCE__*;
using HMODULE = HINSTANCE;
using FARPROC = void (*)();

inline constexpr BOOL TRUE = 1;
inline constexpr BOOL FALSE = 0;
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1));
inline constexpr DWORD MAX_PATH = 260;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;

// Error codes of GetLastError.
inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_INVALID_FUNCTION = 1;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_BAD_FORMAT = 11;
inline constexpr DWORD ERROR_INVALID_DATA = 13;
inline constexpr DWORD ERROR_OUTOFMEMORY = 14;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;
inline constexpr DWORD ERROR_NOT_READY = 21;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_LOCK_VIOLATION = 33;
inline constexpr DWORD ERROR_HANDLE_EOF = 38;
inline constexpr DWORD ERROR_HANDLE_DISK_FULL = 39;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_BAD_NETPATH = 53;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_BROKEN_PIPE = 109;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_INVALID_LOCK_RANGE = 307;
inline constexpr DWORD ERROR_NOACCESS = 998;
inline constexpr DWORD ERROR_INVALID_USER_BUFFER = 1784;
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
inline constexpr DWORD ERROR_NOT_LOCKED = 158;
inline constexpr DWORD ERROR_BAD_PATHNAME = 161;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_DIRECTORY = 267;
inline constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;
inline constexpr DWORD ERROR_ENVVAR_NOT_FOUND = 203;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr DWORD ERROR_NO_MORE_ITEMS = 259;
inline constexpr DWORD ERROR_NOT_OWNER = 288;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr DWORD ERROR_INVALID_ADDRESS = 487;
inline constexpr DWORD ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
inline constexpr DWORD ERROR_RESOURCE_TYPE_NOT_FOUND = 1813;
inline constexpr DWORD ERROR_RESOURCE_NAME_NOT_FOUND = 1814;
inline constexpr DWORD ERROR_RESOURCE_LANG_NOT_FOUND = 1815;
inline constexpr DWORD ERROR_BAD_DEVICE = 1200;
inline constexpr DWORD ERROR_NOT_CONNECTED = 2250;

// Memory.
inline constexpr DWORD MEM_COMMIT = 0x1000;
inline constexpr DWORD MEM_RESERVE = 0x2000;
inline constexpr DWORD MEM_DECOMMIT = 0x4000;
inline constexpr DWORD MEM_RELEASE = 0x8000;
inline constexpr DWORD MEM_TOP_DOWN = 0x100000;
inline constexpr DWORD PAGE_NOACCESS = 0x01;
inline constexpr DWORD PAGE_READONLY = 0x02;
inline constexpr DWORD PAGE_READWRITE = 0x04;
inline constexpr DWORD SEC_COMMIT = 0x8000000;
inline constexpr DWORD FILE_MAP_WRITE = 0x0002;
inline constexpr DWORD FILE_MAP_READ = 0x0004;
inline constexpr DWORD FILE_MAP_ALL_ACCESS = 0xF001F;
inline constexpr DWORD FILE_MAP_COPY = 0x0001;
inline constexpr DWORD SEC_RESERVE = 0x4000000;
inline constexpr DWORD ERROR_FILE_INVALID = 1006;
inline constexpr DWORD ERROR_MAPPED_ALIGNMENT = 1132;
inline constexpr DWORD ERROR_COMMITMENT_LIMIT = 1455;

// Waits.
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_ABANDONED = 0x80;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline constexpr DWORD SYNCHRONIZE = 0x00100000;
inline constexpr DWORD MUTEX_MODIFY_STATE = 0x0001;
inline constexpr DWORD MUTEX_ALL_ACCESS = 0x1F0001;

// Files.
inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD GENERIC_EXECUTE = 0x20000000;
inline constexpr DWORD GENERIC_ALL = 0x10000000;
inline constexpr DWORD DELETE = 0x00010000;
inline constexpr DWORD FILE_SHARE_READ = 0x1;
inline constexpr DWORD FILE_SHARE_WRITE = 0x2;
inline constexpr DWORD FILE_SHARE_DELETE = 0x4;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD TRUNCATE_EXISTING = 5;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x2;
inline constexpr DWORD FILE_ATTRIBUTE_SYSTEM = 0x4;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x100;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;
inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr DWORD FILE_FLAG_WRITE_THROUGH = 0x80000000;
inline constexpr DWORD FILE_FLAG_RANDOM_ACCESS = 0x10000000;
inline constexpr DWORD FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000;
inline constexpr DWORD FILE_FLAG_DELETE_ON_CLOSE = 0x04000000;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD MOVEFILE_REPLACE_EXISTING = 0x1;
inline constexpr DWORD MOVEFILE_COPY_ALLOWED = 0x2;
inline constexpr DWORD MOVEFILE_WRITE_THROUGH = 0x8;

// Drives and volumes.
inline constexpr UINT DRIVE_UNKNOWN = 0;
inline constexpr UINT DRIVE_NO_ROOT_DIR = 1;
inline constexpr UINT DRIVE_REMOVABLE = 2;
inline constexpr UINT DRIVE_FIXED = 3;
inline constexpr UINT DRIVE_REMOTE = 4;
inline constexpr UINT DRIVE_CDROM = 5;
inline constexpr UINT DRIVE_RAMDISK = 6;
inline constexpr DWORD FILE_CASE_SENSITIVE_SEARCH = 0x1;
inline constexpr DWORD FILE_CASE_PRESERVED_NAMES = 0x2;

// Shell folders: HRESULT codes and CSIDL values.
using HRESULT = LONG;
inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr int CSIDL_DESKTOP = 0;
inline constexpr int CSIDL_PRINTERS = 4;
inline constexpr int CSIDL_PERSONAL = 5;
inline constexpr int CSIDL_FAVORITES = 6;
inline constexpr int CSIDL_DRIVES = 17;
inline constexpr int CSIDL_NETWORK = 18;
inline constexpr int CSIDL_APPDATA = 26;
inline constexpr int CSIDL_COMMON_APPDATA = 35;
inline constexpr int CSIDL_PROGRAM_FILES = 38;
inline constexpr int CSIDL_COMMON_DOCUMENTS = 46;
inline constexpr int CSIDL_FLAG_CREATE = 0x8000;
using HWND = ::HWND__*;

struct SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

struct WIN32_FIND_DATAA {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    char cFileName[MAX_PATH];
    // The short 8.3 name of systems that keep one; always empty on POSIX.
    char cAlternateFileName[14];
};
using LPWIN32_FIND_DATAA = WIN32_FIND_DATAA*;

struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

struct POINT {
    LONG x;
    LONG y;
};

union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
};

union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
};
using PULARGE_INTEGER = ULARGE_INTEGER*;

// The registry.
using HKEY = ::HKEY__*;
using PHKEY = HKEY*;
using REGSAM = DWORD;
using LPBYTE = BYTE*;
using LSTATUS = LONG;
// The predefined keys, sign-extended as Windows' own on 64 bits.
inline const HKEY HKEY_CLASSES_ROOT =
    reinterpret_cast<HKEY>(static_cast<LONG_PTR>(LONG(0x80000000)));
inline const HKEY HKEY_CURRENT_USER =
    reinterpret_cast<HKEY>(static_cast<LONG_PTR>(LONG(0x80000001)));
inline const HKEY HKEY_LOCAL_MACHINE =
    reinterpret_cast<HKEY>(static_cast<LONG_PTR>(LONG(0x80000002)));
inline const HKEY HKEY_USERS = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(LONG(0x80000003)));
inline const HKEY HKEY_CURRENT_CONFIG =
    reinterpret_cast<HKEY>(static_cast<LONG_PTR>(LONG(0x80000005)));
inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_QWORD = 11;
inline constexpr DWORD REG_OPTION_NON_VOLATILE = 0;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1;
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;
inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_SET_VALUE = 0x0002;
inline constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_NOTIFY = 0x0010;
inline constexpr REGSAM KEY_READ = 0x20019;
inline constexpr REGSAM KEY_WRITE = 0x20006;
inline constexpr REGSAM KEY_ALL_ACCESS = 0xF003F;
inline constexpr DWORD ERROR_BADDB = 1009;
inline constexpr DWORD ERROR_BADKEY = 1010;
inline constexpr DWORD ERROR_CANTOPEN = 1011;
inline constexpr DWORD ERROR_CANTWRITE = 1013;
inline constexpr DWORD ERROR_KEY_DELETED = 1018;

// Processes.
inline constexpr DWORD STILL_ACTIVE = 259;
inline constexpr UINT SW_HIDE = 0;
inline constexpr UINT SW_SHOWNORMAL = 1;

struct STARTUPINFOA {
    DWORD cb;
    LPSTR lpReserved;
    LPSTR lpDesktop;
    LPSTR lpTitle;
    DWORD dwX;
    DWORD dwY;
    DWORD dwXSize;
    DWORD dwYSize;
    DWORD dwXCountChars;
    DWORD dwYCountChars;
    DWORD dwFillAttribute;
    DWORD dwFlags;
    WORD wShowWindow;
    WORD cbReserved2;
    BYTE* lpReserved2;
    HANDLE hStdInput;
    HANDLE hStdOutput;
    HANDLE hStdError;
};
using LPSTARTUPINFOA = STARTUPINFOA*;

struct PROCESS_INFORMATION {
    HANDLE hProcess;
    HANDLE hThread;
    DWORD dwProcessId;
    DWORD dwThreadId;
};
using LPPROCESS_INFORMATION = PROCESS_INFORMATION*;

// Code pages, conversions and locales.
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_OEMCP = 1;
inline constexpr UINT CP_UTF7 = 65000;
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD MB_PRECOMPOSED = 0x1;
inline constexpr DWORD MB_COMPOSITE = 0x2;
inline constexpr DWORD MB_USEGLYPHCHARS = 0x4;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x8;
inline constexpr DWORD WC_DISCARDNS = 0x10;
inline constexpr DWORD WC_SEPCHARS = 0x20;
inline constexpr DWORD WC_DEFAULTCHAR = 0x40;
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;
inline constexpr DWORD WC_COMPOSITECHECK = 0x200;
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x400;
inline constexpr DWORD NORM_IGNORECASE = 0x1;
inline constexpr DWORD NORM_IGNORENONSPACE = 0x2;
inline constexpr DWORD NORM_IGNORESYMBOLS = 0x4;
inline constexpr DWORD SORT_STRINGSORT = 0x1000;
inline constexpr int CSTR_LESS_THAN = 1;
inline constexpr int CSTR_EQUAL = 2;
inline constexpr int CSTR_GREATER_THAN = 3;

// An opaque critical section. Its storage is large enough for the POSIX
// backend's recursive mutex on every supported platform.
struct CRITICAL_SECTION {
    alignas(16) unsigned char opaque[64];
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

}  // namespace nvk::os
