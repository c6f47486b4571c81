// Storing folders and rules.
#include "nvk/config/ini_file.h"
#include "nvk/paths/special_nvk_path.h"
#include "paths/path_stores.h"

using nvk::paths::Normalise;

namespace SpecialNVKPath {

namespace {

bool SetInMemory(const Chaine& key, const Chaine& value, NotExistAction action) {
    if (value.IsEmpty()) {
        CSingleLock lock(&nvk::paths::Lock(), true);
        nvk::paths::MemoryPaths().Remove(key);
        return true;
    }
    const Chaine folder = Normalise(value, action);
    if (folder.IsEmpty()) {
        return false;
    }
    CSingleLock lock(&nvk::paths::Lock(), true);
    nvk::paths::MemoryPaths()[key] = folder;
    return true;
}

bool SetInFile(const Chaine& key, const Chaine& value, NotExistAction action) {
    // A folder that fails the check leaves the file as it was, not even
    // made when it is missing.
    if (!value.IsEmpty() && nvk::paths::Stripped(Normalise(value, action)).IsEmpty()) {
        return false;
    }
    EIniFile ini;
    if (!ini.Open(nvk::paths::PathsIniPath(), false)) {
        return false;
    }
    // The caller's text, not the checked one: relative paths and environment
    // references stay as they were written. An empty one keeps its line.
    ini["Paths"][key] = value;
    return ini.Close();
}

}  // namespace

bool Set(ID id, const Chaine& value, NotExistAction action, StoreType store) {
    const char* key = KeyOf(id);
    return key != nullptr && Set(Chaine(key), value, action, store);
}

bool Set(const Chaine& key, const Chaine& value, NotExistAction action, StoreType store) {
    return store == StoreInFile ? SetInFile(key, value, action) : SetInMemory(key, value, action);
}

bool Set(LegacyID id, const Chaine& value) {
    const Chaine folder = value.IsEmpty() ? value : Normalise(value, EmptyIfMissing);
    CSingleLock lock(&nvk::paths::Lock(), true);
    if (folder.IsEmpty()) {
        nvk::paths::Legacies().Remove(id);
    } else {
        nvk::paths::Legacies()[id] = folder;
    }
    return true;
}

void SetRule(const Chaine& key, const Chaine& parent, const Chaine& subPath) {
    CSingleLock lock(&nvk::paths::Lock(), true);
    if (parent.IsEmpty()) {
        nvk::paths::Rules().Remove(key);
    } else {
        nvk::paths::Rules()[key] = Rule{false, parent, subPath};
    }
}

void SetRule(const Chaine& key, ID parent, const Chaine& subPath) {
    Chaine number;
    number.FromInt(parent);
    CSingleLock lock(&nvk::paths::Lock(), true);
    nvk::paths::Rules()[key] = Rule{true, number, subPath};
}

void SetLegacyDefaultAppFolder(const PTableau<Chaine>& folders) {
    CSingleLock lock(&nvk::paths::Lock(), true);
    nvk::paths::LegacyDefs() = folders;
}

void SetLegacyDefaultAppFolder(const Chaine& folders) {
    PTableau<Chaine> list;
    folders.SplitSimple(list, '|');
    SetLegacyDefaultAppFolder(list);
}

}  // namespace SpecialNVKPath
