// The process-wide stores of the path service, shared by every module of the
// process, and the helpers that all its operations use.
#pragma once

#include "nvk/afx/sync_objects.h"
#include "nvk/core/chaine.h"
#include "nvk/core/dictionnary.h"
#include "nvk/core/sorted_map.h"
#include "nvk/core/tableau.h"
#include "nvk/paths/special_nvk_path.h"

namespace nvk::paths {

// The one lock of the service, recursive: a rule's resolution holds it
// through the resolution of its parent.
CCriticalSection& Lock();
// Values set with StoreInMemory, already normalised.
FDictionnaryNoCase<Chaine>& MemoryPaths();
FDictionnaryNoCase<SpecialNVKPath::Rule>& Rules();
// Folder names below program files that the legacy look-ups try.
PTableau<Chaine>& LegacyDefs();
// Legacy folders set for the process, already normalised.
FSortedMap<SpecialNVKPath::LegacyID, Chaine>& Legacies();

// The blanks stripped from both ends of every value from outside.
inline constexpr const char* kBlanks = " \t\r\n";
Chaine Stripped(const Chaine& value);

// Paths.ini in the application folder.
Chaine PathsIniPath();
// The value of `key` in `section` of Paths.ini, stripped; empty when the
// file, the section or the line is missing.
Chaine PathsIniValue(const char* section, const Chaine& key);

// The check of every value from outside: blanks, environment references,
// relative to the application folder, then tested on the disk, and made
// with CreateIfMissing.
Chaine Normalise(const Chaine& value, SpecialNVKPath::NotExistAction action);

// A special folder of the shell by its CSIDL number.
Chaine SpecialFolder(int csidl);

}  // namespace nvk::paths
