#include "os/posix/locale_ids.h"

#include <unicode/uloc.h>

#include <cstdlib>

namespace nvk::os::posix {

namespace {

constexpr LCID kEnglishUs = 1033;
// The sub-language "default" of a primary language id.
constexpr LCID kDefaultSublanguage = 0x0400;

}  // namespace

LCID LcidOfPosixName(const std::string& name) {
    std::string base = name.substr(0, name.find_first_of(".@"));
    if (base.empty() || base == "C" || base == "POSIX") {
        return kEnglishUs;
    }
    // A country ICU doesn't know gives a neutral id (no sub-language).
    if (const LCID exact = uloc_getLCID(base.c_str()); exact >= kDefaultSublanguage) {
        return exact;
    }
    const std::string language = base.substr(0, base.find_first_of("_-"));
    if (const LCID primary = uloc_getLCID(language.c_str()) & 0x3FF; primary != 0) {
        return primary | kDefaultSublanguage;
    }
    return kEnglishUs;
}

LCID EnvironmentLcid() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value != nullptr && value[0] != '\0') {
            return LcidOfPosixName(value);
        }
    }
    return kEnglishUs;
}

std::optional<std::string> IcuLocaleOf(LCID locale) {
    if (locale == 0 || locale == LOCALE_USER_DEFAULT || locale == LOCALE_SYSTEM_DEFAULT) {
        locale = EnvironmentLcid();
    }
    if (locale == LOCALE_INVARIANT) {
        return std::string();  // the root locale
    }
    char name[ULOC_FULLNAME_CAPACITY];
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = uloc_getLocaleForLCID(locale, name, sizeof name, &status);
    if (U_FAILURE(status) || length <= 0) {
        return std::nullopt;
    }
    return std::string(name, static_cast<std::size_t>(length));
}

}  // namespace nvk::os::posix
