#include "nvk/services/library_handle.h"

#include "os/api/module.h"

LibraryHandle::LibraryHandle(const Chaine& path, bool prependExeFolder) {
    if (prependExeFolder) {
        Chaine folder;
        FileName = PathJoin(folder.GetExeFolder(), path.GetFileName());
    } else {
        FileName = path;
    }
}

LibraryHandle::~LibraryHandle() {
    if (Owned && Module != nullptr) {
        nvk::os::FreeLibrary(Module);
    }
}

void LibraryHandle::Load() {
    Module = nvk::os::LoadLibraryA(FileName);
    Owned = true;
}
