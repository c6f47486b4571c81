#include "os/api/console_code_page.h"

#include <unicode/ucnv.h>

#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

#include "os/api/nls.h"
#include "os/posix/environment.h"

namespace nvk::os {

namespace {

constexpr UINT kLatin1 = 28591;
constexpr UINT kAscii = 20127;

// The charset part of a locale name: "UTF-8" in "fr_FR.UTF-8@euro".
std::string_view Charset(std::string_view locale) {
    const std::size_t dot = locale.find('.');
    if (dot == std::string_view::npos) {
        return {};
    }
    locale.remove_prefix(dot + 1);
    return locale.substr(0, locale.find('@'));
}

UINT CodePageOfCharset(const std::string& charset) {
    UErrorCode status = U_ZERO_ERROR;
    const char* windows = ucnv_getStandardName(charset.c_str(), "WINDOWS", &status);
    UINT number = 0;
    if (U_SUCCESS(status) && windows != nullptr && std::strncmp(windows, "windows-", 8) == 0) {
        const char* digits = windows + 8;
        const char* end = digits + std::strlen(digits);
        if (std::from_chars(digits, end, number).ptr == end && number != 0) {
            return number;
        }
    }
    // The converters know Latin-1 under its own names only.
    status = U_ZERO_ERROR;
    const char* name = ucnv_getAlias(charset.c_str(), 0, &status);
    if (U_SUCCESS(status) && name != nullptr && std::strcmp(name, "ISO-8859-1") == 0) {
        return kLatin1;
    }
    return kAscii;
}

UINT TerminalCodePage() {
    std::string locale;
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        locale = posix::EnvironmentValue(name);
        if (!locale.empty()) {
            break;
        }
    }
    const std::string_view charset = Charset(locale);
    return charset.empty() ? CP_UTF8 : CodePageOfCharset(std::string(charset));
}

}  // namespace

UINT GetConsoleCP() {
    return TerminalCodePage();
}

UINT GetConsoleOutputCP() {
    return TerminalCodePage();
}

}  // namespace nvk::os
