// The version and patch of an application, as the family shows them: from
// the version resource of its executable, and from the side file that a
// patch installs beside it (the executable's name with "ptc" in place of
// "exe", section "NVKPatch": "Build", "Patch", "Date").
#pragma once

#include <cstdint>

#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"
#include "nvk/services/patch_value.h"

// Flags of the version functions; only kVersionProduct counts for values.
inline constexpr unsigned long kVersionNumeric = 1;    // numbers, unless patched
inline constexpr unsigned long kVersionNoPatch = 2;    // without the patch
inline constexpr unsigned long kVersionNoRelease = 4;  // numbers without the release
inline constexpr unsigned long kVersionProduct = 8;    // the product's, not the file's

// "***" for a missing file, "Alpha" for one without a version text; the
// patch follows as " - Patch 3 (05/11/9)", its year modulo 100 unpadded.
NVKUTIL_EXPORT Chaine GetAppVersion(char const* file, unsigned long flags);
// Major, minor, release and build from the top, 16 bits each; 0 without a
// version resource.
NVKUTIL_EXPORT std::uint64_t GetAppVersionValue(char const* file, unsigned long flags);
// Empty unless `file` ends in ".exe" and its side file names its build, a
// patch of 1 to 255 and a date.
NVKUTIL_EXPORT PATCHVALUE GetNVKAppPatchValue(char const* file);

// The same for the application's own executable.
NVKUTIL_EXPORT Chaine GetThisAppVersion(unsigned long flags);
NVKUTIL_EXPORT std::uint64_t GetThisAppVersionValue(unsigned long flags);
NVKUTIL_EXPORT PATCHVALUE GetThisNVKAppPatchValue();
