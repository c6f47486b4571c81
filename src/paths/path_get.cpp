// The resolution of the well-known folders: the process's values, Paths.ini,
// the rules, then each identifier's default derivation.
#include "nvk/paths/special_nvk_path.h"
#include "nvk/services/app_identity.h"
#include "nvk/services/app_version.h"
#include "os/api/shell_folder.h"
#include "paths/backup_check.h"
#include "paths/path_stores.h"

namespace os = nvk::os;
using nvk::paths::Normalise;

namespace SpecialNVKPath {

namespace {

// Rules may name each other, and a rule set in which two keys define each
// other would recurse until the stack ends. No sane set of rules is this
// deep, so past this depth a key resolves to nothing: a bad rule set gives
// an empty folder instead of a crashed process.
constexpr int kMaxRuleDepth = 64;
thread_local int t_RuleDepth = 0;

struct RuleDepth {
    RuleDepth() { ++t_RuleDepth; }
    ~RuleDepth() { --t_RuleDepth; }
    RuleDepth(const RuleDepth&) = delete;
    RuleDepth& operator=(const RuleDepth&) = delete;
    bool TooDeep() const { return t_RuleDepth > kMaxRuleDepth; }
};

Chaine ValidFileName(const Chaine& name) {
    Chaine clean(name);
    return clean.MakeValidFileName(true);
}

// `parent` resolved with the caller's action, then `tail` joined to it;
// empty when the parent is.
Chaine Below(ID parent, const Chaine& tail, NotExistAction action) {
    const Chaine folder = Get(parent, action);
    return folder.IsEmpty() ? folder : PathJoin(folder, tail);
}

Chaine Normalised(const Chaine& path, NotExistAction action) {
    return path.IsEmpty() ? path : Normalise(path, action);
}

Chaine DocumentsRoot(NotExistAction action) {
    Chaine shared = nvk::paths::SpecialFolder(os::CSIDL_COMMON_DOCUMENTS);
    if (shared.IsEmpty()) {
        shared = "c:\\";
    }
    return Normalise(PathJoin(shared, ValidFileName(GetSocietyID())), action);
}

// Below a shell folder, or nothing when the shell doesn't know it.
Chaine BelowShellFolder(int csidl, const Chaine& tail, NotExistAction action) {
    const Chaine folder = nvk::paths::SpecialFolder(csidl);
    return folder.IsEmpty() ? folder : Normalise(PathJoin(folder, tail), action);
}

Chaine BackupsFolder(NotExistAction action) {
    Chaine candidate = Normalised(Below(DocumentsRootID, "Sauvegardes", action), action);
    if (!candidate.IsEmpty() && !nvk::paths::CanWriteIn(candidate)) {
        candidate.Empty();
    }
    if (candidate.IsEmpty()) {
        candidate = Normalised(nvk::paths::SpecialFolder(os::CSIDL_PERSONAL), action);
    }
    return candidate;
}

Chaine Default(ID id, NotExistAction action) {
    switch (id) {
        case AppParamsRoot:
        case Tools:
            return GetAppFolder();
        case AppParamsBaseVide:
            return Below(AppParamsRoot, "BaseVide", action);
        case AppParamsNewFolderParams:
            return Below(AppParamsRoot, "Param", action);
        case AppParamsLinksMenu:
            return Below(AppParamsRoot, "LinksMenu", action);
        case AppParamsSMSProviders:
            return Below(AppParamsRoot, "SMSProviders", action);
        case DocumentsRootID:
            return DocumentsRoot(action);
        case Share:
            return Normalised(Below(DocumentsRootID, "Partage", action), action);
        case Common:
            return Normalised(Below(Share, "Common", action), action);
        case FoldersDemo:
            return Normalised(Below(DocumentsRootID, "Demonstrations", action), action);
        case FoldersUser:
            return Normalised(Below(Share, "Dossiers", action), action);
        case ArchivesID:
            return Normalised(Below(DocumentsRootID, "Archives", action), action);
        case Backups:
            return BackupsFolder(action);
        case TemplatesRootSystem:
            return Normalised(Below(AppParamsRoot, "Modeles", action), action);
        case TemplatesRootShared:
            return Normalised(Below(ConfigRootShared, "Modeles", action), action);
        case TemplatesWinGenSystem:
            return Normalised(Below(TemplatesRootSystem, "WinGen", action), action);
        case TemplatesWinGenShared:
            return Normalised(Below(TemplatesRootShared, "WinGen", action), action);
        case ConfigRootSystem:
            return Get(AppParamsRoot, action);
        case ConfigRootShared:
            return Normalised(Below(Share, ValidFileName(GetAppName()), action), action);
        case ConfigFormatsSystem:
            return Normalised(Below(ConfigRootSystem, "Formats", action), action);
        case ConfigFormatsShared:
            return Normalised(Below(ConfigRootShared, "Formats", action), action);
        case ConfigImpExpSystem:
            return Normalised(Below(ConfigRootSystem, "ImpExp", action), action);
        case ConfigImpExpShared:
            return Normalised(Below(ConfigRootShared, "ImpExp", action), action);
        case ConfigInetShared:
            return Normalised(Below(Share, "Inet", action), action);
        case ConfigSMSShared:
            return Normalised(Below(Share, "SMS", action), action);
        case ConfigWatchShared:
        case ConfigServicePackagesShared:
            return Get(ConfigInetShared, action);
        case ConfigWelcome:
            return Normalised(Below(ConfigRootSystem, "Welcome", action), action);
        case UserData:
            return BelowShellFolder(os::CSIDL_APPDATA,
                                    PathJoin(GetSocietyID(), ValidFileName(GetAppName())), action);
        case UserDataCommon:
            return Normalised(Below(UserData, "Common", action), action);
        case UserDataByVersion:
            // Two numbers on an unpatched installation, the resource's text
            // on a patched one.
            return Normalised(
                Below(UserData,
                      GetThisAppVersion(kVersionNumeric | kVersionNoPatch | kVersionNoRelease),
                      action),
                action);
        case SocietyDataUser:
            return BelowShellFolder(os::CSIDL_APPDATA, GetSocietyID(), action);
        case SocietyDataShared:
            return BelowShellFolder(os::CSIDL_COMMON_APPDATA, GetSocietyID(), action);
    }
    return Chaine();
}

// Paths.ini, then the rules; `fromRule` tells which gave the answer.
Chaine Resolve(const Chaine& key, NotExistAction action, bool& fromRule) {
    fromRule = false;
    const Chaine value = nvk::paths::PathsIniValue("Paths", key);
    if (!value.IsEmpty()) {
        // Final: a line naming a folder that fails the check does not fall
        // through to the rules.
        return Normalise(value, action);
    }
    CSingleLock lock(&nvk::paths::Lock(), true);
    FDictionnaryNoCase<Rule>& rules = nvk::paths::Rules();
    const int index = rules.Find(key, FindExact);
    if (index == -1) {
        return Chaine();
    }
    const Rule rule = rules.GetValue(index);
    const RuleDepth depth;
    if (depth.TooDeep()) {
        return Chaine();
    }
    fromRule = true;
    const Chaine parent =
        rule.isID ? Get(static_cast<ID>(rule.parent.ToInt()), action) : Get(rule.parent, action);
    if (parent.IsEmpty()) {
        return parent;
    }
    return Normalise(PathJoin(parent, rule.subPath), action);
}

}  // namespace

Chaine Get(const Chaine& key, NotExistAction action) {
    bool fromRule = false;
    return Resolve(key, action, fromRule);
}

Chaine Get(ID id, NotExistAction action, Origin& origin) {
    const char* key = KeyOf(id);
    if (key == nullptr) {
        return Chaine();
    }
    {
        CSingleLock lock(&nvk::paths::Lock(), true);
        FDictionnaryNoCase<Chaine>& memory = nvk::paths::MemoryPaths();
        const int index = memory.Find(key, FindExact);
        if (index != -1) {
            origin = FromMemory;
            // Checked when it was stored, and not again.
            return memory.GetValue(index);
        }
    }
    bool fromRule = false;
    Chaine found = Resolve(key, action, fromRule);
    if (!found.IsEmpty()) {
        origin = fromRule ? FromRule : FromPathsIni;
        return found;
    }
    origin = FromDefault;
    return Default(id, action);
}

Chaine Get(ID id, NotExistAction action) {
    Origin origin = FromDefault;
    return Get(id, action, origin);
}

}  // namespace SpecialNVKPath
