#include "nvk/services/app_identity.h"

#include "nvk/context/string_load.h"
#include "nvk/services/global_dico.h"
#include "nvk/services/library_handle.h"
#include "os/api/environment.h"

bool HasShortName() {
    return ExistDicoValue(DicoKeys::AppShortName);
}

const Chaine& GetShortName() {
    static Chaine CachedShortName;
    // An empty answer is not kept: an application may fill the dictionary
    // after a first reader came by.
    if (CachedShortName.IsEmpty()) {
        CachedShortName = GetDicoValue(DicoKeys::AppShortName, Chaine());
    }
    return CachedShortName;
}

Chaine GetAppName() {
    if (ExistDicoValue(DicoKeys::AppName)) {
        return GetDicoValue(DicoKeys::AppName, Chaine());
    }
    Chaine name;
    name.LoadString(kAppNameString, nullptr);
    return name;
}

const Chaine& GetSocietyID() {
    static Chaine CachedSociety;
    if (!CachedSociety.IsEmpty()) {
        return CachedSociety;
    }
    if (nvk::os::HMODULE skin = GetSkinModule(); skin != nullptr) {
        nvk::LoadString(CachedSociety, 1, skin);
    }
    if (CachedSociety.IsEmpty()) {
        CachedSociety = GetDicoValue(DicoKeys::AppSocietyID, kDefaultSocietyID);
    }
    return CachedSociety;
}

Chaine GetSkinFolder() {
    Chaine folder;
    if (!folder.GetEnv(kSkinVariable).IsEmpty()) {
        return folder;
    }
    folder.GetExeFolder();
    if (PathJoin(folder, kSkinFileName).FileExists()) {
        SetEnvironment(folder, kSkinVariable);
    }
    return folder;
}

nvk::os::HMODULE GetSkinModule() {
    static LibraryHandle skin(PathJoin(GetSkinFolder(), kSkinFileName), false);
    if (!skin.Owned) {
        skin.Load();
    }
    return skin.Module;
}

bool SetEnvironment(const Chaine& value, const Chaine& name) {
    return nvk::os::SetEnvironmentVariableA(name, value.IsEmpty() ? nullptr : value.c_str()) != 0;
}
