// ENVKVars: what the variable editor, a tool of its own ("NVKVars.exe"), is
// to show, and its launch. A dictionary alone goes on the tool's command
// line; anything more goes through the exchange file "NVKVars.ini" in the
// temporary folder. Nothing is read back: after the launch the two are
// independent.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/core/sorted_map.h"
#include "nvk/core/tableau_clefs.h"
#include "nvk/nvkutil_export.h"

// Categories of variables; the callers number them.
enum TypeCategorie : int {};

using ChaineClefsNC = PTableauClefs<PTableauClefsRootS<Chaine, StandardNCComp, const Chaine&>>;

class NVKUTIL_EXPORT ENVKVars {
public:
    // The dictionary; the country is the process's current one.
    explicit ENVKVars(const Chaine& dico);
    ENVKVars(const ENVKVars&) = default;
    ENVKVars& operator=(const ENVKVars&) = default;
    virtual ~ENVKVars() = default;

    void SetDico(const Chaine& dico) { Dico = dico; }
    void SetRubrics(const ChaineClefsNC& rubrics) { Rubrics = rubrics; }
    void SetSelect(const Chaine& select) { Select = select; }
    void SetNotepad(bool notepad) { Notepad = notepad; }
    void SetCountry(const Chaine& country) { Country = country; }
    void SetMacros(const ChaineClefsNC& macros) { Macros = macros; }
    void SetRun(const Chaine& process, const Chaine& params, const Chaine& verb);
    void SetDefFormat(const Chaine& format) { DefFormat = format; }
    void SetDefRTFFormat(const Chaine& format) { DefRTFFormat = format; }
    void SetFormat(TypeCategorie category, const Chaine& format) { Formats[category] = format; }
    // The same store as SetFormat, kept so: applications that only use
    // these two setters never write a rich-text line of a category.
    void SetRTFFormat(TypeCategorie category, const Chaine& format) { SetFormat(category, format); }

    // The tool's full path: the registry's "NVKVars" of the common settings
    // when that file exists, else the tool in the Tools folder; empty when
    // neither is there.
    static Chaine GetNVKVarsPath();

    // Starts the tool; true when it started.
    bool Run() const;

private:
    // The exchange file, written key by key into what an earlier launch
    // left, so that keys not written now keep their old values.
    Chaine WriteExchangeFile() const;

    Chaine Dico;
    ChaineClefsNC Rubrics;
    Chaine Select;
    bool Notepad = false;
    Chaine Country;
    ChaineClefsNC Macros;
    Chaine RunProcess;
    Chaine RunProcessParams;
    Chaine RunProcessVerb;
    Chaine DefFormat;
    Chaine DefRTFFormat;
    FSortedMap<TypeCategorie, Chaine> Formats;
    FSortedMap<TypeCategorie, Chaine> RTFFormats;
};
