// ICON statements: `name ICON "file.ico"`. The icon file's images become
// RT_ICON resources, numbered on from the highest one the script has, and
// `name` an RT_GROUP_ICON resource that lists them, as executables hold
// icons.
#pragma once

#include <cstdint>
#include <string>

#include "rc_model.h"

namespace nvk::rc {

inline constexpr std::uint16_t kIconType = 3;
inline constexpr std::uint16_t kGroupIconType = 14;

// Reads `iconFile`, relative to the folder of `scriptFile` unless absolute;
// throws RcError for a file that is missing or not an icon file.
void AddIcon(Script& script, const ResourceId& name, std::uint16_t language,
             const std::string& iconFile, const std::string& scriptFile, int line);

}  // namespace nvk::rc
