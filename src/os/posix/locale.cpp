// Locale ids and ICU's locales meet through ICU's own table of Windows ids.
// The thread's locale is the environment's as it stands, so that a process
// sees a changed environment as a new user would.
#include "os/api/locale.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "os/api/environment.h"
#include "os/api/error.h"
#include "os/api/nls.h"
#include "os/posix/handle.h"
#include "os/posix/locale_items.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

constexpr LCID kEnglishUS = 0x0409;

// The locale the environment names, the first of LC_ALL, LC_MESSAGES and
// LANG that is set and not empty.
// Reading it leaves the last error as it was.
std::string EnvironmentLocale() {
    const DWORD lastError = GetLastError();
    std::string locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        char value[256];
        DWORD n = GetEnvironmentVariableA(name, value, sizeof value);
        if (n > 0 && n < sizeof value) {
            locale = value;
            break;
        }
    }
    SetErrorCode(lastError);
    return locale;
}

// "fr_CH.UTF-8@euro" is fr_CH; an unknown country falls back to the
// language, and an unknown language to English (United States).
LCID LcidOfPosixName(std::string name) {
    name = name.substr(0, name.find_first_of(".@"));
    if (name.empty() || name == "C" || name == "POSIX") {
        return kEnglishUS;
    }
    LCID lcid = uloc_getLCID(name.c_str());
    if (lcid == 0) {
        lcid = uloc_getLCID(name.substr(0, name.find('_')).c_str());
    }
    if (lcid == 0) {
        return kEnglishUS;
    }
    return ConvertDefaultLocale(lcid);
}

LCID EnvironmentLcid() {
    return LcidOfPosixName(EnvironmentLocale());
}

// ICU's name of a locale id; empty for an id that ICU doesn't know.
std::string IcuName(LCID lcid) {
    if (lcid == LOCALE_INVARIANT) {
        return "en_US_POSIX";
    }
    char name[ULOC_FULLNAME_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    int32_t n = uloc_getLocaleForLCID(lcid, name, sizeof name, &status);
    if (U_FAILURE(status) || n <= 0) {
        return {};
    }
    return std::string(name, static_cast<std::size_t>(n));
}

// The text in an ANSI code page.
std::string ToAnsi(const std::u16string& text, UINT codePage) {
    if (text.empty()) {
        return {};
    }
    auto size = static_cast<int>(text.size());
    int n = WideCharToMultiByte(codePage, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(std::max(n, 0)), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), size, bytes.data(), n, nullptr, nullptr);
    return bytes;
}

}  // namespace

int GetLocaleInfoA(LCID locale, LCTYPE type, LPSTR data, int size) {
    if (size < 0 || (size > 0 && data == nullptr)) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    LCID lcid = ConvertDefaultLocale(locale);
    std::string name = IcuName(lcid);
    if (name.empty()) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return 0;
    }
    bool asNumber = (type & LOCALE_RETURN_NUMBER) != 0;
    LCTYPE item = type & ~(LOCALE_NOUSEROVERRIDE | LOCALE_USE_CP_ACP | LOCALE_RETURN_NUMBER);
    // Localised names are told in the user's language.
    std::string display = IcuName(GetUserDefaultLCID());
    std::optional<posix::LocaleItem> value =
        posix::LocaleItemOf(name.c_str(), lcid, item, display.c_str());
    // The language id is a number told in hexadecimal.
    const bool hexadecimal = item == LOCALE_ILANGUAGE;
    if (!value || (asNumber && !value->IsNumber && !hexadecimal)) {
        SetErrorCode(ERROR_INVALID_FLAGS);
        return 0;
    }
    if (asNumber) {
        auto number = static_cast<DWORD>(
            std::stoul(ToAnsi(value->Text, CP_ACP), nullptr, hexadecimal ? 16 : 10));
        if (size == 0) {
            return sizeof number;
        }
        if (size < static_cast<int>(sizeof number)) {
            SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        }
        std::memcpy(data, &number, sizeof number);
        return sizeof number;
    }
    // Texts are in the locale's own code page unless LOCALE_USE_CP_ACP.
    const UINT codePage = posix::AnsiCodePageOf(lcid);
    std::string text =
        ToAnsi(value->Text, (type & LOCALE_USE_CP_ACP) != 0 || codePage == 0 ? CP_ACP : codePage);
    int needed = static_cast<int>(text.size()) + 1;
    if (size == 0) {
        return needed;
    }
    if (size < needed) {
        // What fits is written, as Windows writes it, and the call fails.
        std::memcpy(data, text.data(), static_cast<std::size_t>(size));
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::memcpy(data, text.c_str(), static_cast<std::size_t>(needed));
    return needed;
}

LCID GetThreadLocale() {
    return EnvironmentLcid();
}

LCID GetUserDefaultLCID() {
    return EnvironmentLcid();
}

LCID GetSystemDefaultLCID() {
    return EnvironmentLcid();
}

LANGID GetUserDefaultLangID() {
    return static_cast<LANGID>(GetUserDefaultLCID() & 0xFFFF);
}

LANGID GetSystemDefaultLangID() {
    return static_cast<LANGID>(GetSystemDefaultLCID() & 0xFFFF);
}

LCID ConvertDefaultLocale(LCID locale) {
    if (locale == LOCALE_SYSTEM_DEFAULT) {
        return GetSystemDefaultLCID();
    }
    if (locale == LOCALE_USER_DEFAULT || locale == LOCALE_NEUTRAL) {
        return GetUserDefaultLCID();
    }
    if (locale == LOCALE_INVARIANT) {
        return locale;
    }
    // A neutral sublanguage becomes the language's default one.
    if (((locale >> 10) & 0x3F) == 0) {
        locale = (locale & 0xFFFF0000u) | (1u << 10) | (locale & 0x3FF);
    }
    return locale;
}

BOOL IsValidLocale(LCID locale, DWORD /*flags*/) {
    return IcuName(locale).empty() ? FALSE : TRUE;
}

}  // namespace nvk::os
