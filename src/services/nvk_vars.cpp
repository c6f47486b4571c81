#include "nvk/services/nvk_vars.h"

#include <string>

#include "nvk/context/loc.h"
#include "nvk/paths/special_nvk_path.h"
#include "os/api/process.h"
#include "os/api/profile.h"
#include "os/api/registry.h"

namespace os = nvk::os;

namespace {

constexpr os::REGSAM kKeyRead = 131097;

Chaine Joined(const PTableau<Chaine>& items) {
    Chaine text;
    return text.Join(',', items);
}

// "Tools" holds the tool as "NVKVars.exe", or on systems whose programs
// carry no extension, as "NVKVars".
Chaine ToolInTools() {
    const Chaine tools =
        SpecialNVKPath::Get(SpecialNVKPath::Tools, SpecialNVKPath::CreateIfMissing);
    for (const char* name : {"NVKVars.exe", "NVKVars"}) {
        if (Chaine path = PathJoin(tools, name); path.FileExists()) {
            return path;
        }
    }
    return Chaine();
}

void WriteKey(const char* section, const char* key, const Chaine& value, const Chaine& file) {
    os::WritePrivateProfileStringA(section, key, value, file);
}

void WriteFormats(const char* pattern, const FSortedMap<TypeCategorie, Chaine>& formats,
                  const Chaine& file) {
    for (int i = 0; i < formats.Count(); ++i) {
        Chaine key;
        key.Format(pattern, static_cast<int>(formats.GetKey(i)));
        WriteKey("Format", key, formats.GetValue(i), file);
    }
}

}  // namespace

ENVKVars::ENVKVars(const Chaine& dico) : Dico(dico), Country(ELoc::Get().GetCountry()) {}

void ENVKVars::SetRun(const Chaine& process, const Chaine& params, const Chaine& verb) {
    RunProcess = process;
    RunProcessParams = params;
    RunProcessVerb = verb;
}

Chaine ENVKVars::GetNVKVarsPath() {
    os::HKEY key = nullptr;
    if (os::RegCreateKeyExA(os::HKEY_LOCAL_MACHINE, "Software\\NVK\\Common\\Settings", 0, nullptr,
                            0, kKeyRead, nullptr, &key, nullptr) == os::ERROR_SUCCESS) {
        char text[260] = {};
        os::DWORD size = sizeof text - 1;
        const os::LSTATUS status = os::RegQueryValueExA(key, "NVKVars", nullptr, nullptr,
                                                        reinterpret_cast<os::LPBYTE>(text), &size);
        os::RegCloseKey(key);
        Chaine path(text);
        if (path.FindChar('%') != -1) {
            path.ExpandEnv();
        }
        if (status == os::ERROR_SUCCESS && !path.IsEmpty() && path.FileExists()) {
            return path;
        }
    }
    return ToolInTools();
}

Chaine ENVKVars::WriteExchangeFile() const {
    Chaine file;
    file = PathJoin(file.GetTempFolder(), "NVKVars.ini");
    WriteKey("Dictionnaire", "Chemin", Dico, file);
    if (Rubrics.Size() != 0) {
        // One line an entry, each ended by a zero, and a zero after the last.
        std::string lines;
        for (int i = 0; i < Rubrics.Size(); ++i) {
            lines.append(Rubrics[i].c_str(), static_cast<std::size_t>(Rubrics[i].Length()) + 1);
        }
        lines += '\0';
        os::WritePrivateProfileSectionA("Rubriques", lines.c_str(), file);
    }
    if (!Select.IsEmpty()) {
        WriteKey("Dictionnaire", "Selection", Select, file);
    }
    WriteKey("Config", "Notepad", Notepad ? "1" : "0", file);
    if (!Country.IsEmpty()) {
        WriteKey("Filters", "Country", Country, file);
    }
    if (Macros.Size() != 0) {
        WriteKey("Filters", "Macros", Joined(Macros), file);
    }
    if (!RunProcess.IsEmpty()) {
        WriteKey("Config", "RunProcessParams", RunProcessParams, file);
        WriteKey("Config", "RunProcess", RunProcess, file);
        WriteKey("Config", "RunProcessVerb", RunProcessVerb, file);
    }
    WriteKey("Config", "AutoDelete", "1", file);
    if (!DefFormat.IsEmpty()) {
        WriteKey("Format", "Default", DefFormat, file);
    }
    if (!DefRTFFormat.IsEmpty()) {
        WriteKey("Format", "DefaultRTF", DefRTFFormat, file);
    }
    WriteFormats("Type%d", Formats, file);
    WriteFormats("TypeRTF%d", RTFFormats, file);
    return file;
}

bool ENVKVars::Run() const {
    const Chaine exe = GetNVKVarsPath();
    if (exe.IsEmpty()) {
        return false;
    }
    Chaine target;
    Chaine arguments;
    if (Select.IsEmpty() && Rubrics.Size() == 0 && RunProcess.IsEmpty()) {
        target = Dico;
        if (Notepad) {
            arguments += " /Notepad";
        }
        if (!Country.IsEmpty()) {
            arguments += " /Country " + Country;
        }
        if (Macros.Size() != 0) {
            arguments += " /Macro " + Joined(Macros);
        }
    } else {
        target = WriteExchangeFile();
    }
    const Chaine line = "\"" + exe + "\" \"" + target + "\"" + arguments;
    return os::WinExec(line, os::SW_SHOWNORMAL) >= 31;
}
