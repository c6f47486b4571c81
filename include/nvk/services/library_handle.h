// LibraryHandle: a module loaded on demand, freed with the handle when this
// handle loaded it.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

class NVKUTIL_EXPORT LibraryHandle {
public:
    // With `prependExeFolder` the module is the file-name part of `path` in
    // the application's folder; otherwise `path` as it stands.
    LibraryHandle(const Chaine& path, bool prependExeFolder);
    ~LibraryHandle();
    LibraryHandle(const LibraryHandle&) = delete;
    LibraryHandle& operator=(const LibraryHandle&) = delete;

    // Loads FileName and keeps the handle, also a null one: Owned tells
    // that a load was tried, so that a failed one is not tried again.
    void Load();

    Chaine FileName;
    nvk::os::HMODULE Module = nullptr;
    bool Owned = false;
};
