// Who the running application is, read from the process dictionary, and its
// skin: the module "Editor.skn", whose string 1 names the society that
// issued this copy.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/os/types.h"

// The skin's file name, and the environment variable that names its folder
// for the process and its children.
inline constexpr const char* kSkinFileName = "Editor.skn";
inline constexpr const char* kSkinVariable = "cdSkin";
// The society when neither the skin nor the dictionary names one.
inline constexpr const char* kDefaultSocietyID = "NVK-TARO";
// The application's name in its own string table.
inline constexpr nvk::os::UINT kAppNameString = 57344;

bool HasShortName();
// Kept once known; while the dictionary has no short name it is asked again.
const Chaine& GetShortName();
Chaine GetAppName();
// The skin's string 1, else the dictionary's "App.SocietyID", else
// "NVK-TARO"; kept once known.
const Chaine& GetSocietyID();
// "cdSkin", else the application's folder, which is then written to
// "cdSkin" when the skin is there.
Chaine GetSkinFolder();
// The skin, loaded at the first call; null when there is none.
nvk::os::HMODULE GetSkinModule();
// Sets the environment variable `name`; an empty value removes it.
bool SetEnvironment(const Chaine& value, const Chaine& name);
