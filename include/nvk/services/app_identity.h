// Who the running application is, read from the process dictionary, and its
// skin: the module "Editor.skn", whose string 1 names the society that
// issued this copy.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

// The skin's file name, and the environment variable that names its folder
// for the process and its children.
inline constexpr const char* kSkinFileName = "Editor.skn";
inline constexpr const char* kSkinVariable = "cdSkin";
// The society when neither the skin nor the dictionary names one.
inline constexpr const char* kDefaultSocietyID = "NVK-TARO";
// The application's name in its own string table.
inline constexpr nvk::os::UINT kAppNameString = 57344;

NVKUTIL_EXPORT bool HasShortName();
// Kept once known; while the dictionary has no short name it is asked again.
NVKUTIL_EXPORT const Chaine& GetShortName();
NVKUTIL_EXPORT Chaine GetAppName();
// The skin's string 1, else the dictionary's "App.SocietyID", else
// "NVK-TARO"; kept once known.
NVKUTIL_EXPORT const Chaine& GetSocietyID();
// "cdSkin", else the application's folder, which is then written to
// "cdSkin" when the skin is there.
NVKUTIL_EXPORT Chaine GetSkinFolder();
// The skin, loaded at the first call; null when there is none.
NVKUTIL_EXPORT nvk::os::HMODULE GetSkinModule();
// Sets the environment variable `name`; an empty value removes it.
NVKUTIL_EXPORT bool SetEnvironment(const Chaine& value, const Chaine& name);
