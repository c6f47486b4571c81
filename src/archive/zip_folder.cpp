#include "nvk/archive/zip_folder.h"

#include <cstdlib>
#include <cstring>

#include "nvk/archive/zip_cmd.h"
#include "nvk/config/ini_file.h"
#include "nvk/core/dictionnary.h"
#include "nvk/files/file_iterator.h"
#include "nvk/services/global_dico.h"
#include "os/api/profile.h"

namespace {

// Files that are never archived: locks, work files, backups, other archives.
constexpr char const* kExcluded[] = {"*.lck", "*.lkf",     "*.new",   "*.newtrad",    "*.zip",
                                     "*.old", "*.oldtrad", "*.bdg",   "*.nvkfilters", "*.ilk",
                                     "*.tmp", "*.bak",     "*.reorg", "`#pvcount`#"};

// What the rename procedure needs: the last component of the dossier
// folder, and each source path's path relative to the dossier folder.
struct RenameData {
    Chaine root;
    FDictionnaryNoCase<Chaine> relative;
};

// "Dossiers/<root>/<relative>", or "_NVK_.lst" for the empty relative path
// of the information file.
Chaine ArchiveName(Chaine const& root, Chaine const& relative) {
    if (relative.IsEmpty()) {
        return "_NVK_.lst";
    }
    std::string name = PathJoin(PathJoin("Dossiers", root), relative).c_str();
    for (char& c : name) {
        c = c == '\\' ? '/' : c;
    }
    return Chaine(name.data(), static_cast<int>(name.size()));
}

int Rename(ZIPRENAMEREC* record, void* userData) {
    RenameData& data = *static_cast<RenameData*>(userData);
    std::string source = record->szSourcePath;
    for (char& c : source) {
        c = c == '/' ? '\\' : c;
    }
    Chaine path(source.data(), static_cast<int>(source.size()));
    Chaine relative = data.relative.Exist(path) ? data.relative.Get(path) : Chaine();
    Chaine name = ArchiveName(data.root, relative);
    std::strncpy(record->szNewName, name, sizeof(record->szNewName) - 1);
    record->szNewName[sizeof(record->szNewName) - 1] = '\0';
    return 0;
}

void AddExclusions(FileIterator& iterator) {
    for (char const* pattern : kExcluded) {
        iterator.AddNameExclude(pattern);
    }
}

}  // namespace

EZipFolder::EZipFolder() : m_Exercice(-1), m_IsDemo(false), m_NVKKey(std::uint64_t{0}) {
    Clear();
}

void EZipFolder::SetRaisSoc(Chaine const& value) {
    m_RaisSoc = value;
    m_RaisSoc.TrimLeft().TrimRight();
}

void EZipFolder::SetShortName(Chaine const& value) {
    m_ShortName = value;
    m_ShortName.TrimLeft().TrimRight();
}

void EZipFolder::Clear() {
    if (ExistDicoValue(DicoKeys::AppShortName)) {
        m_ShortName = GetDicoValue(DicoKeys::AppShortName, "");
    }
    m_RaisSoc.Empty();
    m_MainFile.Empty();
    m_Exercice = -1;
    m_IsDemo = false;
    m_NVKKey = CNVKKey(std::uint64_t{0});
}

EZipFolder::eCheck EZipFolder::Check() const {
    if (m_ShortName.IsEmpty()) {
        return CheckNoShortName;
    }
    if (m_RaisSoc.IsEmpty()) {
        return CheckNoRaisSoc;
    }
    if (m_MainFile.IsEmpty() || !m_MainFile.FileExists()) {
        return CheckBadMainFile;
    }
    if (static_cast<std::uint64_t>(m_NVKKey) == 0) {
        // The dossier's own key is read and left unused: the caller sets the
        // key, and a zero key stays refused.
        char key[128] = {};
        nvk::os::GetPrivateProfileStringA("General", "NVKKey", "", key, sizeof(key), m_MainFile);
        return CheckNoKey;
    }
    return CheckOK;
}

int EZipFolder::Zip(Chaine const& archive, Chaine const& description) {
    switch (Check()) {
        case CheckOK:
            break;
        case CheckNoShortName:
            return -1;
        case CheckNoRaisSoc:
            return -2;
        case CheckBadMainFile:
            return -3;
        case CheckNoKey:
            return -4;
        default:
            return -5;
    }
    Chaine folder = m_MainFile.GetFolderSlash();

    Chaine dataFolder;
    if (m_Exercice >= 0) {
        Chaine number;
        number.FromInt(m_Exercice);
        dataFolder = PathJoin(folder, m_ShortName + "." + number);
    } else {
        // The highest name is normally the latest exercise.
        FileIterator exercises;
        exercises.DontRecurse();
        exercises.AddNameInclude(m_ShortName + ".*");
        exercises.IncludeFolders(true);
        FDictionnaryNoCase<Chaine> sorted;
        exercises.SetRoot(folder);
        PTableau<Chaine> found = exercises.GetFiles();
        for (int i = 0; i < found.Size(); ++i) {
            sorted.Get(found[i]);
        }
        if (sorted.Count() == 0) {
            return -6;
        }
        dataFolder = sorted.GetKey(sorted.Count() - 1);
    }
    if (!dataFolder.IsFolder()) {
        return -6;
    }

    // Source path to path below the dossier folder; the keys' order is the
    // order of the archive's items.
    RenameData rename;
    FileIterator top;
    top.DontRecurse();
    top.AddNameInclude(m_MainFile.GetFileName());
    top.AddNameInclude("infos.btr");
    top.AddNameInclude("*.nvk");
    AddExclusions(top);
    FileIterator data;
    data.AddNameInclude("*.*");
    AddExclusions(data);
    top.SetRoot(folder);
    data.SetRoot(dataFolder);
    for (PTableau<Chaine> files : {top.GetFiles(), data.GetFiles()}) {
        for (int i = 0; i < files.Size(); ++i) {
            rename.relative.Get(files[i]) = files[i].Mid(folder.Length());
        }
    }
    if (rename.relative.Count() == 0) {
        return -7;
    }
    rename.root = Chaine(folder).RemoveTrailingSlash().GetFileName();

    Chaine information;
    information.GetTempName("TMP");
    rename.relative.Get(information) = Chaine();
    Chaine section = "Folder:" + m_RaisSoc;
    Chaine number;
    Chaine exercise = dataFolder.GetExtension();
    EIniFile ini;
    ini.Open(information, false);
    ini.WritePrivateProfileStringA(section, "Type", "1", information);
    ini.WritePrivateProfileStringA(section, "Key", static_cast<Chaine>(m_NVKKey), information);
    ini.WritePrivateProfileStringA(section, "App", m_ShortName, information);
    ini.WritePrivateProfileStringA(section, "Demo", m_IsDemo ? "1" : "0", information);
    ini.WritePrivateProfileStringA(
        section, "Exercice",
        number.FromInt(std::atoi(exercise.c_str() + (exercise.c_str()[0] == '.' ? 1 : 0))),
        information);
    ini.WritePrivateProfileStringA(section, "Name", m_RaisSoc, information);
    Chaine text = description;
    if (text.IsEmpty()) {
        // The property, not the exercise found: -1 when the latest was asked.
        text = m_RaisSoc + " / " + number.FromInt(m_Exercice);
    }
    ini.WritePrivateProfileStringA(section, "Description", text, information);
    Chaine mainFile =
        rename.relative.Exist(m_MainFile) ? rename.relative.Get(m_MainFile) : Chaine();
    ini.WritePrivateProfileStringA(section, "MainFile", ArchiveName(rename.root, mainFile),
                                   information);
    for (int i = 0; i < rename.relative.Count(); ++i) {
        Chaine const& relative = rename.relative.GetValue(i);
        if (!relative.IsEmpty()) {
            ini.WritePrivateProfileStringA(section, "#" + ArchiveName(rename.root, relative),
                                           PathJoin("$(FOLDER)", relative), information);
        }
    }
    ini.Close();

    Chaine items;
    for (int i = 0; i < rename.relative.Count(); ++i) {
        items += (items.IsEmpty() ? "\"" : " \"") + rename.relative.GetKey(i) + "\"";
    }
    EZipCmd command(archive, items);
    command.lpMajorStatus = MajorStatus;
    command.lpMajorUserData = this;
    command.lpMinorStatus = MinorStatus;
    command.lpMinorUserData = this;
    command.lpRenameProc = Rename;
    command.lpRenameUserData = &rename;
    return command.dzip();
}

bool EZipFolder::OnMinorStatus(char*, long) {
    return false;
}
bool EZipFolder::OnMajorStatus(char*, long) {
    return false;
}

int EZipFolder::MinorStatus(char* text, unsigned long percent, void* self) {
    return static_cast<unsigned char>(
        static_cast<EZipFolder*>(self)->OnMinorStatus(text, static_cast<long>(percent)));
}

int EZipFolder::MajorStatus(char* text, unsigned long percent, void* self) {
    return static_cast<unsigned char>(
        static_cast<EZipFolder*>(self)->OnMajorStatus(text, static_cast<long>(percent)));
}
