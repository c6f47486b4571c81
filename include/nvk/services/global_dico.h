// GlobalDico: the process dictionary, in which the application states once
// who it is (its short name, name, society), for every module of the process
// to read. Keys are compared without regard to case. The library only reads
// it: the entries come from the application, through SetValue.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/core/dictionnary.h"
#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

// The keys that the family uses, side by side. The library reads the three
// marked so; the others are the applications' own.
struct DicoKeys {
    static constexpr const char* AppShortName = "App.ShortName";  // read
    static constexpr const char* AppPackageGuid = "App.PackageGuid";
    static constexpr const char* AppWebShortName = "App.WebShortName";
    static constexpr const char* AppName = "App.Name";  // read
    static constexpr const char* AppCountryCode = "App.CountryCode";
    static constexpr const char* ProductLineName = "ProductLine.Name";
    static constexpr const char* AppSocietyID = "App.SocietyID";  // read
    static constexpr const char* AppSocietyName = "App.SocietyName";
    static constexpr const char* AppSocietyNameAbrev = "App.SocietyNameAbrev";
    static constexpr const char* SiteName = "Site.Name";
    static constexpr const char* FolderSociety = "Folder.Society";
};

class NVKUTIL_EXPORT GlobalDico : public FDictionnaryNoCase<Chaine> {
public:
    GlobalDico();
    ~GlobalDico() override;
    GlobalDico(const GlobalDico&) = delete;
    GlobalDico& operator=(const GlobalDico&) = delete;

    // The process's dictionary, under the key "ProcessDico".
    static GlobalDico& Get();
    using FDictionnaryNoCase<Chaine>::Get;

    // The dictionary's own lock, recursive, for a caller that reads or
    // writes several entries as one.
    void Enter();
    void Leave();

    // Writes one entry under the lock; an application fills the dictionary
    // so.
    void SetValue(const Chaine& key, const Chaine& value);
    bool RemoveValue(const Chaine& key);

private:
    nvk::os::CRITICAL_SECTION m_Section;
};

// The value of `key`, or `defaultValue` when the dictionary has none.
NVKUTIL_EXPORT Chaine GetDicoValue(const Chaine& key, const Chaine& defaultValue);
NVKUTIL_EXPORT bool ExistDicoValue(const Chaine& key);
