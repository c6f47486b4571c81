// CopyDirectory and CopyFiles.
#include "nvk/files/file_operations.h"
#include "os/api/directory.h"
#include "os/api/file_copy.h"
#include "os/api/file_copy_ex.h"
#include "os/api/find.h"

namespace os = nvk::os;

namespace {

bool IsDots(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

Chaine WithSlash(const Chaine& folder) {
    return folder.IsEmpty() || folder[folder.Length() - 1] == '\\' ? folder : folder + '\\';
}

// The folders of version control that travel with no copy of a tree.
bool IsVaultFolder(const os::WIN32_FIND_DATAA& data) {
    const Chaine name(data.cFileName);
    return (data.dwFileAttributes & os::FILE_ATTRIBUTE_HIDDEN) != 0 &&
           (name.CompareNoCase("_sgvault") == 0 || name.CompareNoCase("_sgbak") == 0);
}

}  // namespace

int CopyDirectory(const Chaine& fromFolder, const Chaine& toFolder, int failIfExists) {
    if (fromFolder.IsEmpty() || toFolder.IsEmpty()) {
        return 0;
    }
    const Chaine from = WithSlash(fromFolder);
    const Chaine to = WithSlash(toFolder);
    os::WIN32_FIND_DATAA data;
    os::HANDLE search = os::FindFirstFileA(from + "*.*", &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return 0;
    }
    int result = 1;
    do {
        if (IsDots(data.cFileName)) {
            continue;
        }
        const Chaine source = from + data.cFileName;
        const Chaine target = to + data.cFileName;
        const bool folder = (data.dwFileAttributes & os::FILE_ATTRIBUTE_DIRECTORY) != 0;
        // A link, to a file or a folder, is copied as a link: its target may
        // lie outside the tree, or hold the tree itself.
        if (!folder || (data.dwFileAttributes & os::FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
            const os::DWORD flags =
                os::COPY_FILE_COPY_SYMLINK | (failIfExists != 0 ? os::COPY_FILE_FAIL_IF_EXISTS : 0);
            result = os::CopyFileExA(source, target, nullptr, nullptr, nullptr, flags) ? 1 : 0;
        } else if (!IsVaultFolder(data)) {
            result = os::CreateDirectoryA(target, nullptr) && CopyDirectory(source, target, 0);
        }
    } while (result != 0 && os::FindNextFileA(search, &data));
    os::FindClose(search);
    return result;
}

int CopyFiles(const char* pattern, const char* fromFolder, const char* toFolder) {
    const Chaine from = WithSlash(fromFolder);
    const Chaine to = WithSlash(toFolder);
    if ((from.IsEmpty() && to.IsEmpty()) || pattern == nullptr || pattern[0] == '\0') {
        return 0;
    }
    os::WIN32_FIND_DATAA data;
    os::HANDLE search = os::FindFirstFileA(from + pattern, &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return 1;
    }
    int result = 1;
    do {
        if (!IsDots(data.cFileName)) {
            result = os::CopyFileA(from + data.cFileName, to + data.cFileName, os::FALSE) ? 1 : 0;
        }
    } while (result != 0 && os::FindNextFileA(search, &data));
    os::FindClose(search);
    return result;
}
