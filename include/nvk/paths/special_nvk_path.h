// SpecialNVKPath: the family's well-known folders, asked for by identifier.
// A folder is found, in order, among the values set for the process, the
// installation's Paths.ini beside the application, the rules set in code,
// and its default derivation; an installation moves any folder without a
// rebuild. No operation raises: a folder that can't be found or made is the
// empty string.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"
#include "nvk/nvkutil_export.h"

namespace SpecialNVKPath {

// What happens to a resolved folder that does not exist.
enum NotExistAction : int {
    CreateIfMissing = 0,  // made with its parents; empty if that fails
    EmptyIfMissing = 1,   // any other value too: the empty string
};

// Where Set puts a value.
enum StoreType : int {
    StoreInFile = 0,    // the section "Paths" of Paths.ini, for the installation
    StoreInMemory = 1,  // any other value too: for this process only
};

// The well-known folders. The values are part of the interface, and each
// name is also the folder's text key in Paths.ini and in the stores.
enum ID : int {
    AppParamsRoot = 0,
    AppParamsBaseVide = 1,
    AppParamsNewFolderParams = 2,
    Share = 3,
    Common = 4,
    FoldersDemo = 5,
    FoldersUser = 6,
    TemplatesRootSystem = 7,
    TemplatesRootShared = 8,
    TemplatesWinGenSystem = 9,
    TemplatesWinGenShared = 10,
    ConfigRootSystem = 11,
    ConfigRootShared = 12,
    ConfigFormatsSystem = 13,
    ConfigFormatsShared = 14,
    ConfigImpExpSystem = 15,
    ConfigImpExpShared = 16,
    ConfigInetShared = 17,
    ConfigSMSShared = 18,
    ConfigWatchShared = 19,
    ConfigWelcome = 20,
    Backups = 21,
    Tools = 22,
    UserData = 24,
    UserDataCommon = 25,
    UserDataByVersion = 26,
    AppParamsLinksMenu = 27,
    AppParamsSMSProviders = 28,
    ConfigServicePackagesShared = 29,
    SocietyDataUser = 30,
    SocietyDataShared = 31,
    DocumentsRootID = 33,
    ArchivesID = 34,
};

// The older folders, found in the registry and well-known places. They
// share nothing with the IDs: neither stores, nor Paths.ini, nor rules.
enum LegacyID : int {
    LegacyCommonTables = 0,
    LegacyFoldersBase = 1,
    LegacyModeles = 2,
    LegacyAppFolder = 3,
    LegacyDossiersRoot = 4,
    LegacyDossiersDocuments = 5,
};

// A key defined below another: `parent` is a text key, or with `isID` the
// decimal text of an ID; `subPath` is joined to the parent's folder.
struct NVKUTIL_EXPORT Rule {
    bool isID = false;
    Chaine parent;
    Chaine subPath;
};

// The full resolution: the process's value, Paths.ini and the rules, then
// the default derivation.
NVKUTIL_EXPORT Chaine Get(ID id, NotExistAction action);
// Which source Get(ID) took its answer from, for the tools that show it.
enum Origin : int { FromMemory, FromPathsIni, FromRule, FromDefault };
NVKUTIL_EXPORT Chaine Get(ID id, NotExistAction action, Origin& origin);
// Paths.ini and the rules only: no process value, no default.
NVKUTIL_EXPORT Chaine Get(const Chaine& key, NotExistAction action);
// The registry and the well-known places; never creates a folder.
NVKUTIL_EXPORT Chaine Get(LegacyID id);

// Stores a folder, or with an empty value removes it (in the file the line
// stays, empty). The file keeps the caller's text, relative paths and
// environment references included. False when the folder fails the check
// or the file can't be written.
NVKUTIL_EXPORT bool Set(ID id, const Chaine& value, NotExistAction action, StoreType store);
NVKUTIL_EXPORT bool Set(const Chaine& key, const Chaine& value, NotExistAction action,
                        StoreType store);
// Stores a legacy folder that exists, or removes the entry; always true.
NVKUTIL_EXPORT bool Set(LegacyID id, const Chaine& value);

// Defines `key` below the text key `parent`; an empty parent removes the
// rule.
NVKUTIL_EXPORT void SetRule(const Chaine& key, const Chaine& parent, const Chaine& subPath);
NVKUTIL_EXPORT void SetRule(const Chaine& key, ID parent, const Chaine& subPath);

// The folder names below the program-files folder that the legacy
// look-ups try, in order; the text form separates them with '|'.
NVKUTIL_EXPORT void SetLegacyDefaultAppFolder(const PTableau<Chaine>& folders);
NVKUTIL_EXPORT void SetLegacyDefaultAppFolder(const Chaine& folders);

// The database server of a folder: its line in the section "DBServers" of
// Paths.ini, else the server its path lies on.
NVKUTIL_EXPORT Chaine DBServer(ID id);
NVKUTIL_EXPORT Chaine DBServer(LegacyID id);
// The server that a path points to; empty for a local path.
NVKUTIL_EXPORT Chaine DBServerForPath(const Chaine& path);

// The text key of an identifier; null for a value outside the table.
NVKUTIL_EXPORT const char* KeyOf(ID id);
// The identifier of a text key, without regard to case.
NVKUTIL_EXPORT bool FindID(const Chaine& key, ID& id);
// Every identifier, in the order of the table.
NVKUTIL_EXPORT const PTableau<ID>& AllIDs();

// The folder of Paths.ini and of relative values, that the defaults take as
// the application's: the executable's folder, unless a program that serves
// other installations (the command-line tool) names another. Empty goes
// back to the executable's.
NVKUTIL_EXPORT void SetAppFolder(const Chaine& folder);
NVKUTIL_EXPORT Chaine GetAppFolder();

}  // namespace SpecialNVKPath
