#include <cstddef>

#include "nvk/paths/special_nvk_path.h"

namespace SpecialNVKPath {

namespace {

struct KeyRow {
    ID id;
    const char* key;
};

// In the order of the families: parameters, documents, templates,
// configuration, tools, user data.
constexpr KeyRow kKeys[] = {
    {AppParamsRoot, "AppParamsRoot"},
    {AppParamsBaseVide, "AppParamsBaseVide"},
    {AppParamsNewFolderParams, "AppParamsNewFolderParams"},
    {AppParamsLinksMenu, "AppParamsLinksMenu"},
    {AppParamsSMSProviders, "AppParamsSMSProviders"},
    {DocumentsRootID, "DocumentsRootID"},
    {Share, "Share"},
    {Common, "Common"},
    {FoldersDemo, "FoldersDemo"},
    {FoldersUser, "FoldersUser"},
    {ArchivesID, "ArchivesID"},
    {Backups, "Backups"},
    {TemplatesRootSystem, "TemplatesRootSystem"},
    {TemplatesRootShared, "TemplatesRootShared"},
    {TemplatesWinGenSystem, "TemplatesWinGenSystem"},
    {TemplatesWinGenShared, "TemplatesWinGenShared"},
    {ConfigRootSystem, "ConfigRootSystem"},
    {ConfigRootShared, "ConfigRootShared"},
    {ConfigFormatsSystem, "ConfigFormatsSystem"},
    {ConfigFormatsShared, "ConfigFormatsShared"},
    {ConfigImpExpSystem, "ConfigImpExpSystem"},
    {ConfigImpExpShared, "ConfigImpExpShared"},
    {ConfigInetShared, "ConfigInetShared"},
    {ConfigSMSShared, "ConfigSMSShared"},
    {ConfigWatchShared, "ConfigWatchShared"},
    {ConfigServicePackagesShared, "ConfigServicePackagesShared"},
    {ConfigWelcome, "ConfigWelcome"},
    {Tools, "Tools"},
    {UserData, "UserData"},
    {UserDataCommon, "UserDataCommon"},
    {UserDataByVersion, "UserDataByVersion"},
    {SocietyDataUser, "SocietyDataUser"},
    {SocietyDataShared, "SocietyDataShared"},
};

}  // namespace

const char* KeyOf(ID id) {
    for (const KeyRow& row : kKeys) {
        if (row.id == id) {
            return row.key;
        }
    }
    return nullptr;
}

bool FindID(const Chaine& key, ID& id) {
    for (const KeyRow& row : kKeys) {
        if (key.CompareNoCase(row.key) == 0) {
            id = row.id;
            return true;
        }
    }
    return false;
}

const PTableau<ID>& AllIDs() {
    static const PTableau<ID> ids = [] {
        PTableau<ID> all;
        for (const KeyRow& row : kKeys) {
            all.Add(row.id);
        }
        return all;
    }();
    return ids;
}

}  // namespace SpecialNVKPath
