#include "os/api/shell_folder.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "os/api/path_map.h"
#include "os/posix/environment.h"
#include "os/posix/fs_support.h"
#include "os/posix/handle.h"

namespace nvk::os {

namespace {

// Where each special folder lies on POSIX:
//
//   CSIDL                      folder
//   0  desktop                 XDG user directory DESKTOP    ($HOME/Desktop)
//   5  documents               XDG user directory DOCUMENTS  ($HOME/Documents)
//   6  favourites              $XDG_DATA_HOME/Favorites      ($HOME/.local/share/Favorites)
//   26 application data        $XDG_DATA_HOME                ($HOME/.local/share)
//   35 common application data /var/lib, else $XDG_DATA_HOME
//   38 program files           /opt
//   46 common documents        /srv, else XDG user directory PUBLICSHARE ($HOME/Public)
//   4 printers, 17 computer, 18 network: no folder in the file system.
//
// The common folders are the ones every user writes to on Windows. Where the
// system's place is not writable by the user (any account but root on a
// fresh machine), the user's own place stands in for it, so that what the
// applications keep there can be made at all.
//
// An XDG user directory is taken from the environment variable of its name
// (XDG_DOCUMENTS_DIR), then from $XDG_CONFIG_HOME/user-dirs.dirs, then the
// default in brackets.
enum class Source { UserDirectory, DataHome, Fixed, Common, None };

struct SpecialFolder {
    int csidl;
    Source source;
    const char* name;      // XDG key, folder below the data home, or fixed path
    const char* fallback;  // below $HOME, for user directories; the user's
                           // place for a common folder
};

constexpr SpecialFolder kFolders[] = {
    {CSIDL_DESKTOP, Source::UserDirectory, "DESKTOP", "Desktop"},
    {CSIDL_PRINTERS, Source::None, "", ""},
    {CSIDL_PERSONAL, Source::UserDirectory, "DOCUMENTS", "Documents"},
    {CSIDL_FAVORITES, Source::DataHome, "Favorites", ""},
    {CSIDL_DRIVES, Source::None, "", ""},
    {CSIDL_NETWORK, Source::None, "", ""},
    {CSIDL_APPDATA, Source::DataHome, "", ""},
    {CSIDL_COMMON_APPDATA, Source::Common, "/var/lib", ""},
    {CSIDL_PROGRAM_FILES, Source::Fixed, "/opt", ""},
    {CSIDL_COMMON_DOCUMENTS, Source::Common, "/srv", "PUBLICSHARE"},
};

std::string Home() {
    std::string home = posix::EnvironmentValue("HOME");
    if (!home.empty() && home[0] == '/') {
        return home;
    }
    const passwd* entry = getpwuid(geteuid());
    return entry != nullptr && entry->pw_dir != nullptr ? entry->pw_dir : "/";
}

// An absolute native directory from a variable, or empty.
std::string AbsoluteFromEnvironment(const char* name) {
    std::string value = posix::EnvironmentValue(name);
    return !value.empty() && value[0] == '/' ? value : "";
}

std::string ConfigHome() {
    std::string config = AbsoluteFromEnvironment("XDG_CONFIG_HOME");
    return config.empty() ? Home() + "/.config" : config;
}

std::string DataHome() {
    std::string data = AbsoluteFromEnvironment("XDG_DATA_HOME");
    return data.empty() ? Home() + "/.local/share" : data;
}

// XDG_<key>_DIR="$HOME/Documents" lines of user-dirs.dirs.
std::string UserDirectory(const std::string& key, const char* fallback) {
    std::string variable = "XDG_" + key + "_DIR";
    std::string value = AbsoluteFromEnvironment(variable.c_str());
    if (!value.empty()) {
        return value;
    }
    std::ifstream file(ConfigHome() + "/user-dirs.dirs");
    std::string line;
    while (std::getline(file, line)) {
        if (!line.starts_with(variable + "=\"") || line.size() < variable.size() + 3 ||
            line.back() != '"') {
            continue;
        }
        value = line.substr(variable.size() + 2, line.size() - variable.size() - 3);
        if (value.starts_with("$HOME")) {
            value = Home() + value.substr(5);
        }
        if (!value.empty() && value[0] == '/') {
            return value;
        }
    }
    return Home() + "/" + fallback;
}

}  // namespace

HRESULT SHGetFolderPathA(HWND /*owner*/, int csidl, HANDLE /*token*/, DWORD /*flags*/, LPSTR path) {
    if (path == nullptr) {
        return E_INVALIDARG;
    }
    path[0] = '\0';
    bool create = (csidl & CSIDL_FLAG_CREATE) != 0;
    csidl &= ~CSIDL_FLAG_CREATE;
    const SpecialFolder* folder = nullptr;
    for (const SpecialFolder& entry : kFolders) {
        if (entry.csidl == csidl) {
            folder = &entry;
        }
    }
    if (folder == nullptr) {
        return E_INVALIDARG;
    }
    std::string native;
    switch (folder->source) {
        case Source::UserDirectory:
            native = UserDirectory(folder->name, folder->fallback);
            break;
        case Source::DataHome:
            native = DataHome();
            if (folder->name[0] != '\0') {
                native += std::string("/") + folder->name;
            }
            break;
        case Source::Fixed:
            native = folder->name;
            break;
        case Source::Common:
            if (access(folder->name, W_OK) == 0) {
                native = folder->name;
            } else if (folder->fallback[0] != '\0') {
                native = UserDirectory(folder->fallback, "Public");
            } else {
                native = DataHome();
            }
            break;
        case Source::None:
            return E_FAIL;
    }
    if (create) {
        std::error_code error;
        std::filesystem::create_directories(native, error);
        if (error) {
            return E_FAIL;
        }
    }
    std::string windows = ToWindowsPath(native.c_str());
    if (windows.empty() || windows.size() >= MAX_PATH) {
        return E_FAIL;
    }
    posix::CopyOut(windows, path, MAX_PATH);
    return S_OK;
}

}  // namespace nvk::os
