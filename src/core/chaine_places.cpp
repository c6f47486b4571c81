// The well-known places of the machine: current, executable and temporary
// folders, temporary files and the shell's special folders. The executable's
// path and folder and the temporary folder are kept in values that the
// module's init-object registry releases at its tear-down.
#include <atomic>
#include <cstring>
#include <mutex>

#include "nvk/context/init_registry.h"
#include "nvk/core/chaine.h"
#include "os/api/directory.h"
#include "os/api/module.h"
#include "os/api/shell_folder.h"
#include "os/api/temp_file.h"

namespace os = nvk::os;

namespace {

// The ids name this source and a line, as the registry's ids do.
constexpr int kTempFolderLine = 419;
constexpr int kExePathLine = 513;
constexpr int kExeFolderLine = 521;

// One cached place: the value, made on first use and registered with the
// module's init-object registry, and whether it holds something yet.
struct Place {
    Chaine* Value = nullptr;
    std::atomic<bool> Known{false};
    std::mutex Lock;
};

// Level 4 is the tear-down: the value goes, and a later call makes it anew.
bool ReleaseCache(int level, void* context) {
    if (level == 4) {
        auto* place = static_cast<Place*>(context);
        place->Known.store(false, std::memory_order_relaxed);
        delete place->Value;
        place->Value = nullptr;
    }
    return true;
}

// The value of `place`, filled by `fill` as long as it is empty. Nothing in
// an application makes sure that the first call comes before its threads
// compete, so the making, registering and filling happen once, under the
// place's lock; two first calls would otherwise both make and register the
// value, and one would read it half filled. Once the value is known it no
// longer changes, and is copied without the lock.
template <class Fill>
Chaine Cached(Place& place, int line, Fill fill) {
    if (place.Known.load(std::memory_order_acquire)) {
        return *place.Value;
    }
    std::lock_guard guard(place.Lock);
    if (place.Value == nullptr) {
        place.Value = new Chaine;
        nvk::InitRegistry::Module().Register(
            EInitInfos(ReleaseCache, &place, "ChaineFile", nullptr, line));
    }
    if (place.Value->IsEmpty()) {
        fill(*place.Value);
        place.Known.store(!place.Value->IsEmpty(), std::memory_order_release);
    }
    return *place.Value;
}

Place g_TempFolder;
Place g_ExePath;
Place g_ExeFolder;

// The text of a call that tells the size it needs, then fills: two passes.
template <class Call>
void FillTwoPasses(Chaine& value, Call call) {
    const os::DWORD size = call(0, nullptr);
    if (size == 0) {
        value.Empty();
        return;
    }
    char* text = value.SetLength(static_cast<int>(size));
    const os::DWORD length = call(size + 1, text);
    if (length == 0 || length > size) {
        value.Empty();
        return;
    }
    value.SetLength(static_cast<int>(length));
}

}  // namespace

Chaine& Chaine::GetCurrentFolder() {
    FillTwoPasses(
        *this, [](os::DWORD size, char* buffer) { return os::GetCurrentDirectoryA(size, buffer); });
    return *this;
}

Chaine& Chaine::GetModulePath(os::HMODULE module) {
    char path[261];
    const os::DWORD length = os::GetModuleFileNameA(module, path, sizeof path);
    return length == 0 || length >= sizeof path ? (Empty(), *this) : Assign(path);
}

Chaine& Chaine::GetExePath() {
    return Assign(
        Cached(g_ExePath, kExePathLine, [](Chaine& value) { value.GetModulePath(nullptr); }));
}

Chaine& Chaine::GetExeFolder() {
    return Assign(Cached(g_ExeFolder, kExeFolderLine, [](Chaine& value) {
        Chaine path;
        value = path.GetExePath().GetFolder();
    }));
}

Chaine& Chaine::GetTempFolder() {
    return Assign(Cached(g_TempFolder, kTempFolderLine, [](Chaine& value) {
        FillTwoPasses(value,
                      [](os::DWORD size, char* buffer) { return os::GetTempPathA(size, buffer); });
    }));
}

Chaine& Chaine::GetTempName(const char* prefix) {
    Chaine folder;
    folder.GetTempFolder();
    char name[261];
    if (folder.IsEmpty() || os::GetTempFileNameA(folder, prefix, 0, name) == 0) {
        Empty();
        return *this;
    }
    return Assign(name);
}

Chaine& Chaine::GetAppDataFolder() {
    return GetSpecialFolder(os::CSIDL_APPDATA);
}

Chaine& Chaine::GetDocumentsFolder() {
    return GetSpecialFolder(os::CSIDL_PERSONAL);
}

Chaine& Chaine::GetSpecialFolder(int csidl) {
    char path[262] = {};
    if (os::SHGetFolderPathA(nullptr, csidl, nullptr, 0, path) != os::S_OK) {
        path[0] = '\0';
    }
    Assign(path);
    if (!IsEmpty() || csidl != os::CSIDL_APPDATA) {
        return *this;
    }
    // The profile folder of old systems, from the system's drive.
    Chaine base;
    if (base.GetEnv("systemdrive").IsEmpty()) {
        base = base.GetEnv("windir").GetRoot();
    }
    if (base.IsEmpty()) {
        base = "c:\\";
    }
    Chaine user;
    return Assign(base / "Profiles" / user.GetUserName() / "Application Data");
}
