// EZipFolder: one zip archive of a dossier, the main file and its satellites
// with one exercise's data folder, below "Dossiers/<folder>/", and the
// information file "_NVK_.lst" that tells a restore what the archive holds.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"
#include "nvk/services/nvk_key.h"

class NVKUTIL_EXPORT EZipFolder {
public:
    enum eCheck {
        CheckOK = 0,
        CheckNoShortName = 1,
        CheckNoRaisSoc = 2,
        CheckBadMainFile = 3,
        CheckNoKey = 4,
    };

    EZipFolder();
    EZipFolder(EZipFolder const& other) = default;
    EZipFolder& operator=(EZipFolder const& other) = default;
    virtual ~EZipFolder() = default;

    Chaine RaisSoc() const { return m_RaisSoc; }
    void SetRaisSoc(Chaine const& value);
    Chaine MainFile() const { return m_MainFile; }
    void SetMainFile(Chaine const& value) { m_MainFile = value; }
    Chaine ShortName() const { return m_ShortName; }
    void SetShortName(Chaine const& value);
    // A negative exercise means the latest one.
    int Exercice() const { return m_Exercice; }
    void SetExercice(int value) { m_Exercice = value; }
    bool IsDemo() const { return m_IsDemo; }
    void SetIsDemo(bool value) { m_IsDemo = value; }
    CNVKKey NVKKey() const { return m_NVKKey; }
    void SetNVKKey(CNVKKey const& value) { m_NVKKey = value; }

    // Empties the properties; the short name comes from the process
    // dictionary when it has one.
    void Clear();
    eCheck Check() const;
    bool IsValid() const { return Check() == CheckOK; }

    // Makes `archive`: -1 to -4 for the failures of Check (-1 also when the
    // engine cannot be loaded), -6 without a data folder, -7 with nothing to
    // archive, otherwise the engine's return code. The information file's
    // temporary file stays behind.
    int Zip(Chaine const& archive, Chaine const& description);

protected:
    // The engine's progress; what a true result does is the engine's affair.
    virtual bool OnMinorStatus(char* text, long percent);
    virtual bool OnMajorStatus(char* text, long percent);

private:
    static int MinorStatus(char* text, unsigned long percent, void* self);
    static int MajorStatus(char* text, unsigned long percent, void* self);

    Chaine m_RaisSoc;
    Chaine m_MainFile;
    Chaine m_ShortName;
    int m_Exercice;
    bool m_IsDemo;
    CNVKKey m_NVKKey;
};
