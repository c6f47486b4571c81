#include "nvk/config/ini_file.h"
#include "nvk/paths/special_nvk_path.h"
#include "paths/path_stores.h"

namespace {

// Set by a program that serves another installation than its own.
Chaine& AppFolderOverride() {
    static Chaine folder;
    return folder;
}

}  // namespace

namespace SpecialNVKPath {

void SetAppFolder(const Chaine& folder) {
    CSingleLock lock(&nvk::paths::Lock(), true);
    AppFolderOverride() = folder;
}

Chaine GetAppFolder() {
    {
        CSingleLock lock(&nvk::paths::Lock(), true);
        if (!AppFolderOverride().IsEmpty()) {
            return AppFolderOverride();
        }
    }
    Chaine folder;
    return folder.GetExeFolder();
}

}  // namespace SpecialNVKPath

namespace nvk::paths {

Chaine Stripped(const Chaine& value) {
    Chaine text(value);
    return text.TrimLeft(kBlanks).TrimRight(kBlanks);
}

Chaine PathsIniPath() {
    return PathJoin(SpecialNVKPath::GetAppFolder(), "Paths.ini");
}

Chaine PathsIniValue(const char* section, const Chaine& key) {
    // Read afresh on every call, so that a change of the file shows at once;
    // a missing file reads as an empty one.
    EIniFile ini;
    ini.Open(PathsIniPath(), true);
    const EIniFile& file = ini;
    if (!file.SectionExist(section)) {
        return Chaine();
    }
    return Stripped(file[section][key]);
}

}  // namespace nvk::paths
