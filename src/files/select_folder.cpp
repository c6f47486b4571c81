// SelectFolder: the shell's folder browser, with a start folder and an OK
// button that can wait for a folder holding a given file.
#include <iterator>

#include "nvk/files/file_operations.h"
#include "os/api/find.h"
#include "os/api/shell.h"

namespace os = nvk::os;

namespace {

// The browser's root, by SpeFolder: desktop, application data, favourites,
// computer, network, printers.
constexpr int kRoots[] = {0, 26, 6, 17, 18, 4};
constexpr int kNetwork = 4;

struct CallbackData {
    Chaine startFolder;
    Chaine requiredFile;
};

bool HoldsFile(const Chaine& folder, const Chaine& file) {
    Chaine path = folder;
    if (path[path.Length() - 1] != '\\') {
        path += '\\';
    }
    os::WIN32_FIND_DATAA data;
    os::HANDLE search = os::FindFirstFileA(path + file, &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return false;
    }
    os::FindClose(search);
    return true;
}

int BrowseCallback(os::HWND window, os::UINT message, os::LPARAM param, os::LPARAM data) {
    const auto& context = *reinterpret_cast<const CallbackData*>(data);
    if (message == os::BFFM_INITIALIZED) {
        os::SendMessageA(window, os::BFFM_SETSELECTIONA, 1,
                         reinterpret_cast<os::LPARAM>(context.startFolder.c_str()));
    } else if (message == os::BFFM_SELCHANGED) {
        char path[os::MAX_PATH];
        bool enable = true;
        // A selection without a file-system path (a place of the network or
        // the like) may be chosen; an empty path can hold no file.
        if (os::SHGetPathFromIDListA(reinterpret_cast<os::LPCITEMIDLIST>(param), path)) {
            enable = path[0] != '\0' &&
                     (context.requiredFile.IsEmpty() || HoldsFile(path, context.requiredFile));
        }
        os::SendMessageA(window, os::BFFM_ENABLEOK, 0, enable ? 1 : 0);
    }
    return 0;
}

}  // namespace

Chaine SelectFolder(const CString& title, const CString& startFolder, int flags, SpeFolder root,
                    const CString& requiredFile) {
    os::IMalloc* allocator = nullptr;
    if (os::SHGetMalloc(&allocator) != os::S_OK || allocator == nullptr) {
        return Chaine();
    }
    os::UINT browseFlags = os::BIF_RETURNONLYFSDIRS;
    switch (flags & 7) {
        case 1:
            browseFlags = os::BIF_BROWSEFORCOMPUTER;
            root = kNetwork;
            break;
        case 2:
            browseFlags = os::BIF_BROWSEFORPRINTER;
            root = root == 0 ? 0 : kNetwork;
            break;
        default:
            break;
    }
    if ((flags & 8) != 0) {
        browseFlags |= os::BIF_BROWSEINCLUDEFILES;
    }
    os::LPITEMIDLIST rootList = nullptr;
    if (root < 0 || root >= static_cast<int>(std::size(kRoots)) ||
        os::SHGetSpecialFolderLocation(nullptr, kRoots[root], &rootList) != os::S_OK) {
        rootList = nullptr;
    }
    CallbackData context{Chaine(startFolder), Chaine(requiredFile)};
    if (!context.startFolder.IsEmpty() &&
        context.startFolder[context.startFolder.Length() - 1] == '\\') {
        context.startFolder = context.startFolder.Left(context.startFolder.Length() - 1);
    }
    char displayName[os::MAX_PATH] = {};
    os::BROWSEINFOA info{};
    info.pidlRoot = rootList;
    info.pszDisplayName = displayName;
    info.lpszTitle = title;
    info.ulFlags = browseFlags;
    info.lpfn = BrowseCallback;
    info.lParam = reinterpret_cast<os::LPARAM>(&context);
    Chaine chosen;
    if (os::LPITEMIDLIST list = os::SHBrowseForFolderA(&info)) {
        char path[os::MAX_PATH];
        if (os::SHGetPathFromIDListA(list, path)) {
            chosen = path;
        }
        allocator->Free(list);
    }
    if (rootList != nullptr) {
        allocator->Free(rootList);
    }
    allocator->Release();
    return chosen;
}
