// An HMODULE is the handle of the dynamic loader itself, so that FreeLibrary
// counts references as the loader does, and a module loaded twice is one
// handle. The executable's handle is null. Handles that the loader does not
// know are refused rather than followed.
#include "os/api/module.h"

#include <dlfcn.h>
#include <link.h>

#include <cstring>

#include "os/api/path_map.h"
#include "os/posix/handle.h"
#include "os/posix/module_names.h"
#include "os/posix/names.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

std::string Folder(const std::string& path) {
    std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

bool HasFolder(std::string_view name) {
    return name.find_first_of("\\/:") != std::string_view::npos;
}

// The native files to try for a module name, in order; dlopen looks for the
// names without a folder in the system's paths.
std::vector<std::string> Candidates(std::string_view name) {
    std::vector<std::string> files;
    if (HasFolder(name)) {
        std::string native = ToNativePath(std::string(name).c_str());
        if (native.empty()) {
            return files;
        }
        std::string folder = Folder(native);
        for (const std::string& file : posix::ModuleFileNames(native.substr(folder.size()))) {
            files.push_back(folder + file);
        }
        return files;
    }
    std::vector<std::string> names = posix::ModuleFileNames(name);
    std::string layer = Folder(posix::LayerPath());
    // An installed tree keeps the engines in a folder of their own beside the
    // library; a build tree has them beside it.
    std::string folders[] = {Folder(posix::ExecutablePath()), layer,
                             layer.empty() ? layer : layer + NVK_ENGINE_FOLDER "/"};
    for (const std::string& folder : folders) {
        if (folder.empty() || (&folder != &folders[0] && folder == folders[0])) {
            continue;
        }
        for (const std::string& file : names) {
            files.push_back(folder + file);
        }
    }
    files.insert(files.end(), names.begin(), names.end());
    return files;
}

link_map* MainLinkMap() {
    void* self = dlopen(nullptr, RTLD_LAZY);
    link_map* map = nullptr;
    if (self != nullptr) {
        dlinfo(self, RTLD_DI_LINKMAP, &map);
        dlclose(self);
    }
    return map;
}

// The loader's handle of a loaded object, without keeping a reference.
void* HandleOf(const char* file) {
    void* handle = dlopen(file, RTLD_LAZY | RTLD_NOLOAD);
    if (handle != nullptr) {
        dlclose(handle);
    }
    return handle;
}

// Whether the loader knows the handle; a stray pointer is never given to it.
bool IsLoaded(HMODULE module) {
    link_map* first = MainLinkMap();
    // The GNU loader's handle of an object is its entry in this list: that
    // is found without a lookup by name of every loaded object.
    for (link_map* map = first; map != nullptr; map = map->l_next) {
        if (static_cast<void*>(map) == static_cast<void*>(module) && map->l_name != nullptr &&
            map->l_name[0] != '\0') {
            return true;
        }
    }
    // The next entry is read first: HandleOf's dlclose unloads an object whose
    // unloading was put off (a thread-local destructor pending at its last
    // FreeLibrary), and its entry goes with it.
    for (link_map *map = first, *next = nullptr; map != nullptr; map = next) {
        next = map->l_next;
        if (map->l_name != nullptr && map->l_name[0] != '\0' &&
            HandleOf(map->l_name) == static_cast<void*>(module)) {
            return true;
        }
    }
    return false;
}

// A name as the 32-bit Windows compilers decorate a __stdcall function,
// "_name@bytes", is "name" here: this system's calling convention has no
// decoration, and its linker reads '@' in a name as a symbol version.
std::string UndecoratedName(std::string_view name) {
    std::size_t at = name.rfind('@');
    if (name.size() < 4 || name[0] != '_' || at == std::string_view::npos || at < 2 ||
        at + 1 == name.size() ||
        name.find_first_not_of("0123456789", at + 1) != std::string_view::npos) {
        return {};
    }
    return std::string(name.substr(1, at - 1));
}

// The loaded object that holds `address`; null, with ERROR_MOD_NOT_FOUND, for
// an address outside every one.
link_map* LinkMapOf(LPCVOID address) {
    Dl_info info;
    link_map* map = nullptr;
    if (dladdr1(address, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 ||
        map == nullptr) {
        SetErrorCode(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    return map;
}

}  // namespace

HMODULE LoadLibraryA(LPCSTR fileName) {
    if (fileName != nullptr && fileName[0] != '\0') {
        for (std::string file : Candidates(fileName)) {
            // A file in a folder is also found by its name without case.
            void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
            if (handle == nullptr && file.starts_with('/') && posix::ResolveCase(file)) {
                handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
            }
            if (handle != nullptr) {
                SetErrorCode(ERROR_SUCCESS);
                return static_cast<HMODULE>(handle);
            }
        }
    }
    SetErrorCode(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR procName) {
    // Ordinals (values below 0x10000) have no meaning here.
    if (procName == nullptr || reinterpret_cast<ULONG_PTR>(procName) < 0x10000) {
        SetErrorCode(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    if (module != nullptr && !IsLoaded(module)) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    void* handle = module != nullptr ? static_cast<void*>(module) : dlopen(nullptr, RTLD_LAZY);
    void* symbol = dlsym(handle, procName);
    if (symbol == nullptr) {
        symbol = dlsym(handle, UndecoratedName(procName).c_str());
    }
    if (module == nullptr && handle != nullptr) {
        dlclose(handle);
    }
    if (symbol == nullptr) {
        SetErrorCode(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    return reinterpret_cast<FARPROC>(symbol);
}

BOOL FreeLibrary(HMODULE module) {
    if (module == nullptr || !IsLoaded(module)) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    dlclose(module);
    return TRUE;
}

DWORD GetModuleFileNameA(HMODULE module, LPSTR fileName, DWORD size) {
    std::string native;
    if (module == nullptr) {
        native = posix::ExecutablePath();
    } else if (IsLoaded(module)) {
        link_map* map = nullptr;
        if (dlinfo(module, RTLD_DI_LINKMAP, &map) == 0 && map != nullptr) {
            native = map->l_name;
        }
    }
    std::string path = ToWindowsPath(native.c_str());
    if (path.empty()) {
        SetErrorCode(ERROR_MOD_NOT_FOUND);
        return 0;
    }
    if (fileName == nullptr || size == 0) {
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    // Too small a buffer gets what fits, terminated, and the error.
    if (path.size() >= size) {
        std::memcpy(fileName, path.data(), size - 1);
        fileName[size - 1] = '\0';
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return size;
    }
    std::memcpy(fileName, path.c_str(), path.size() + 1);
    SetErrorCode(ERROR_SUCCESS);
    return static_cast<DWORD>(path.size());
}

HMODULE GetModuleHandleA(LPCSTR moduleName) {
    if (moduleName == nullptr) {
        SetErrorCode(ERROR_SUCCESS);
        return nullptr;
    }
    for (const std::string& file : Candidates(moduleName)) {
        if (void* handle = HandleOf(file.c_str())) {
            SetErrorCode(ERROR_SUCCESS);
            return static_cast<HMODULE>(handle);
        }
    }
    SetErrorCode(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

HMODULE ModuleFromAddress(LPCVOID address) {
    link_map* map = LinkMapOf(address);
    if (map == nullptr) {
        return nullptr;
    }
    SetErrorCode(ERROR_SUCCESS);
    if (map == MainLinkMap()) {
        return nullptr;
    }
    return static_cast<HMODULE>(HandleOf(map->l_name));
}

BOOL PinModule(LPCVOID address) {
    link_map* map = LinkMapOf(address);
    if (map == nullptr) {
        return FALSE;
    }
    // The program itself never unloads. A module opened again with
    // RTLD_NODELETE stays for good; the reference taken goes back at once.
    if (map != MainLinkMap()) {
        void* handle = dlopen(map->l_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
        if (handle == nullptr) {
            SetErrorCode(ERROR_MOD_NOT_FOUND);
            return FALSE;
        }
        dlclose(handle);
    }
    SetErrorCode(ERROR_SUCCESS);
    return TRUE;
}

}  // namespace nvk::os
