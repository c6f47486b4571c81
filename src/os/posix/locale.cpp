// Locale items by id: ids become ICU's locales in locale_ids, and ICU's data
// becomes the items in locale_items.
#include "os/api/locale.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "os/posix/handle.h"
#include "os/posix/locale_ids.h"
#include "os/posix/locale_items.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

// ICU's name of a locale id; empty for an id that ICU doesn't know. The
// invariant locale speaks English.
std::string IcuName(LCID lcid) {
    if (lcid == LOCALE_INVARIANT) {
        return "en_US_POSIX";
    }
    return posix::IcuLocaleOf(lcid).value_or(std::string());
}

// The text in the ANSI code page.
std::string ToAnsi(const std::u16string& text) {
    if (text.empty()) {
        return {};
    }
    auto size = static_cast<int>(text.size());
    int n = WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(std::max(n, 0)), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), size, bytes.data(), n, nullptr, nullptr);
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
    if (!value || (asNumber && !value->IsNumber)) {
        SetErrorCode(ERROR_INVALID_FLAGS);
        return 0;
    }
    if (asNumber) {
        auto number = static_cast<DWORD>(std::stoul(ToAnsi(value->Text)));
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
    std::string text = ToAnsi(value->Text);
    int needed = static_cast<int>(text.size()) + 1;
    if (size == 0) {
        return needed;
    }
    if (size < needed) {
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::memcpy(data, text.c_str(), static_cast<std::size_t>(needed));
    return needed;
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
