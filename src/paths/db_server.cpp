#include "nvk/paths/special_nvk_path.h"
#include "paths/path_stores.h"

namespace SpecialNVKPath {

Chaine DBServer(ID id) {
    const char* key = KeyOf(id);
    if (key == nullptr) {
        return Chaine();
    }
    const Chaine server = nvk::paths::PathsIniValue("DBServers", key);
    if (!server.IsEmpty()) {
        return server;
    }
    // Deliberately CreateIfMissing: the folder of a dossier is made where
    // its server will look for it.
    return DBServerForPath(Get(id, CreateIfMissing));
}

Chaine DBServer(LegacyID id) {
    return DBServerForPath(Get(id));
}

Chaine DBServerForPath(const Chaine& path) {
    return path.GetServerName();
}

}  // namespace SpecialNVKPath
