// The older folders: the registry of the machine and of the user's virtual
// store, then well-known places.
#include "nvk/afx/win_app.h"
#include "nvk/paths/special_nvk_path.h"
#include "nvk/services/app_identity.h"
#include "nvk/services/global_dico.h"
#include "os/api/account.h"
#include "os/api/registry.h"
#include "os/api/shell_folder.h"
#include "os/api/system_info.h"
#include "os/api/user.h"
#include "paths/path_stores.h"

namespace os = nvk::os;
using nvk::paths::Normalise;

namespace SpecialNVKPath {

namespace {

// The registry key of the application object, and its section: the profile
// name when it has a registry key, else its name. Both empty without an
// application object.
void ApplicationKeys(Chaine& registryKey, Chaine& section) {
    registryKey.Empty();
    section.Empty();
    if (const CWinApp* application = AfxGetApp(); application != nullptr) {
        registryKey = Chaine(application->m_pszRegistryKey);
        section = Chaine(registryKey.IsEmpty() ? application->m_pszAppName
                                               : application->m_pszProfileName);
    }
}

// "S-1-5-21-...", or empty when the account can't be told.
Chaine UserSidText() {
    Chaine user;
    char name[128];
    os::DWORD nameSize = sizeof name;
    if (!os::GetUserNameA(name, &nameSize)) {
        return user;
    }
    os::BYTE sid[267];
    os::DWORD sidSize = sizeof sid;
    char domain[255];
    os::DWORD domainSize = sizeof domain;
    os::SID_NAME_USE use = os::SidTypeUser;
    char* text = nullptr;
    if (os::LookupAccountNameA(nullptr, name, sid, &sidSize, domain, &domainSize, &use) &&
        os::ConvertSidToStringSidA(sid, &text)) {
        user = text;
        os::LocalFree(text);
    }
    return user;
}

struct Root {
    os::HKEY Key;
    Chaine Text;
};

Root VirtualStoreRoot() {
    const Chaine sid = UserSidText();
    // Without a SID, a key under HKEY_USERS that never opens: the look-up
    // falls to the next root.
    return {os::HKEY_USERS,
            sid.IsEmpty() ? Chaine("Software") : sid + "_Classes\\VirtualStore\\Machine\\Software"};
}

Root MachineRoot() {
    return {os::HKEY_LOCAL_MACHINE, "Software"};
}

bool HasVirtualStore() {
    os::OSVERSIONINFOA info = {};
    info.dwOSVersionInfoSize = sizeof info;
    return os::GetVersionExA(&info) && info.dwPlatformId == os::VER_PLATFORM_WIN32_NT &&
           info.dwMajorVersion >= 6;
}

PTableau<Root> Roots() {
    PTableau<Root> roots;
    if (HasVirtualStore()) {
        roots.Add(VirtualStoreRoot());
    }
    roots.Add(MachineRoot());
    return roots;
}

// Reads a text value into a buffer of `room` bytes (at most 276); false when the key or
// the value can't be read. `size` receives the size the registry gave.
bool ReadValue(const Root& root, const Chaine& subKey, const char* name, os::DWORD room,
               Chaine& value, os::DWORD& size) {
    const Chaine path = root.Text + "\\" + subKey;
    os::HKEY key = nullptr;
    if (os::RegOpenKeyExA(root.Key, path, 0, os::KEY_QUERY_VALUE, &key) != os::ERROR_SUCCESS) {
        return false;
    }
    char text[277] = {};
    size = room;
    const os::LSTATUS status = os::RegQueryValueExA(key, name, nullptr, nullptr,
                                                    reinterpret_cast<os::LPBYTE>(text), &size);
    os::RegCloseKey(key);
    if (status != os::ERROR_SUCCESS) {
        return false;
    }
    value = text;
    return true;
}

Chaine CommonSettings(const char* valueName) {
    Chaine registryKey;
    Chaine section;
    ApplicationKeys(registryKey, section);
    const Chaine subKey = registryKey + "\\Common\\Settings";
    const PTableau<Root> roots = Roots();
    for (int i = 0; i < roots.Size(); ++i) {
        Chaine value;
        os::DWORD size = 0;
        if (ReadValue(roots[i], subKey, valueName, 260, value, size)) {
            // The first root that answers is final, also with nothing.
            return Normalise(value, EmptyIfMissing);
        }
    }
    return Chaine();
}

Chaine FirstDefault(const Chaine& base, const Chaine& tail) {
    CSingleLock lock(&nvk::paths::Lock(), true);
    const PTableau<Chaine>& defs = nvk::paths::LegacyDefs();
    for (int i = 0; i < defs.Size(); ++i) {
        const Chaine found = Normalise(PathJoin(PathJoin(base, defs[i]), tail), EmptyIfMissing);
        if (!found.IsEmpty()) {
            return found;
        }
    }
    return Chaine();
}

Chaine Modeles() {
    Chaine registryKey;
    Chaine section;
    ApplicationKeys(registryKey, section);
    const Chaine subKey = registryKey + "\\" + section + "\\Settings";
    const PTableau<Root> roots = Roots();
    for (int i = 0; i < roots.Size(); ++i) {
        Chaine value;
        os::DWORD size = 0;
        if (ReadValue(roots[i], subKey, "ModelesPath", 260, value, size)) {
            if (Chaine found = Normalise(value, EmptyIfMissing); !found.IsEmpty()) {
                return found;
            }
        }
    }
    const Chaine& society = GetSocietyID();
    if (const Chaine shared = nvk::paths::SpecialFolder(os::CSIDL_COMMON_APPDATA);
        !shared.IsEmpty()) {
        const Chaine found = Normalise(
            PathJoin(PathJoin(PathJoin(shared, society), GetAppName()), "Modeles"), EmptyIfMissing);
        if (!found.IsEmpty()) {
            return found;
        }
    }
    const Chaine programs = nvk::paths::SpecialFolder(os::CSIDL_PROGRAM_FILES);
    return FirstDefault(PathJoin(programs, society), "Modeles");
}

// The folder of the executable that the installation recorded under `root`.
Chaine InstalledFolder(const Root& root) {
    Chaine value;
    os::DWORD size = 0;
    const Chaine subKey = "NVK\\InstalledApps\\" + GetDicoValue(DicoKeys::AppShortName, Chaine());
    if (ReadValue(root, subKey, "Path", 276, value, size) && size > 1) {
        return value.GetFolder();
    }
    return Chaine();
}

Chaine AppFolder() {
    Chaine folder;
    if (HasVirtualStore()) {
        folder = InstalledFolder(VirtualStoreRoot());
    }
    if (folder.IsEmpty()) {
        folder = InstalledFolder(MachineRoot());
    }
    if (folder.FindChar('%') != -1) {
        folder.ExpandEnv();
    }
    if (folder.IsEmpty() || !folder.IsFolder()) {
        const Chaine programs = nvk::paths::SpecialFolder(os::CSIDL_PROGRAM_FILES);
        CSingleLock lock(&nvk::paths::Lock(), true);
        const PTableau<Chaine>& defs = nvk::paths::LegacyDefs();
        for (int i = 0; i < defs.Size(); ++i) {
            folder = PathJoin(programs, defs[i]);
            if (folder.IsFolder()) {
                break;
            }
        }
    }
    if (folder.IsEmpty() || !folder.IsFolder()) {
        folder = GetAppFolder();
    }
    return folder;
}

Chaine DossiersDocuments() {
    const Chaine shared = nvk::paths::SpecialFolder(os::CSIDL_COMMON_DOCUMENTS);
    if (shared.IsEmpty()) {
        return shared;
    }
    return Normalise(PathJoin(PathJoin(shared, GetSocietyID()), "Dossiers"), EmptyIfMissing);
}

}  // namespace

Chaine Get(LegacyID id) {
    {
        CSingleLock lock(&nvk::paths::Lock(), true);
        FSortedMap<LegacyID, Chaine>& legacies = nvk::paths::Legacies();
        const int index = legacies.Find(id, FindExact);
        if (index != -1) {
            return legacies.GetValue(index);
        }
    }
    switch (id) {
        case LegacyCommonTables:
            return CommonSettings("CommonTablesPath");
        case LegacyFoldersBase:
            return CommonSettings("FoldersBase");
        case LegacyModeles:
            return Modeles();
        case LegacyAppFolder:
            return AppFolder();
        case LegacyDossiersRoot:
            return Normalise(PathJoin(PathJoin("C:\\", GetSocietyID()), "Dossiers"),
                             EmptyIfMissing);
        case LegacyDossiersDocuments:
            return DossiersDocuments();
    }
    return Chaine();
}

}  // namespace SpecialNVKPath
