// The locale items that GetLocaleInfoA answers, worked out from ICU's data
// for a locale.
#pragma once

#include <optional>
#include <string>

#include "os/api/locale.h"

namespace nvk::os::posix {

struct LocaleItem {
    std::u16string Text;
    bool IsNumber = false;  // a numeric item: Text holds its decimal digits
};

// The item of the locale named `icuName`; nothing for an item we don't know.
// `displayName` is the locale in whose language the localised names are told.
std::optional<LocaleItem> LocaleItemOf(const char* icuName, LCID lcid, LCTYPE type,
                                       const char* displayName);

// The locale's own ANSI code page; 0 for a language written in Unicode only.
UINT AnsiCodePageOf(LCID lcid);

}  // namespace nvk::os::posix
