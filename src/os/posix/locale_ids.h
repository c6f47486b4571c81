// Locale ids (LCID) and the platform's locale names: the one place where the
// two meet.
#pragma once

#include <optional>
#include <string>

#include "nvk/os/types.h"

namespace nvk::os::posix {

// The ICU locale of an id, after LOCALE_USER_DEFAULT, LOCALE_SYSTEM_DEFAULT
// and 0 are resolved to the environment's; none for an unknown id.
std::optional<std::string> IcuLocaleOf(LCID locale);
// The id of a POSIX locale name such as "fr_CH.UTF-8@euro". A language alone,
// or a country the id table doesn't know, gives the language's main id; "C",
// "POSIX", empty and unknown names give 1033.
LCID LcidOfPosixName(const std::string& name);
// The environment's locale: LC_ALL, then LC_MESSAGES, then LANG.
LCID EnvironmentLcid();

}  // namespace nvk::os::posix
