// The layer's own tree calls, over the system's search and deletion: Windows
// gives no cheaper listing than its search, and deletes by full paths.
#include <string>

#include "os/api/directory.h"
#include "os/api/error.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/find.h"
#include "os/api/find_names.h"
#include "os/api/tree_delete.h"

namespace nvk::os {

HANDLE FindFirstNameA(LPCSTR fileName, LPWIN32_FIND_DATAA findData) {
    return FindFirstFileA(fileName, findData);
}

namespace {

bool IsDots(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Deletes what `folder` holds; a link to a folder is removed as itself.
bool Empty(const std::string& folder) {
    WIN32_FIND_DATAA entry;
    HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return false;
    }
    bool done = true;
    do {
        if (IsDots(entry.cFileName)) {
            continue;
        }
        const std::string path = folder + "\\" + entry.cFileName;
        const DWORD attributes = entry.dwFileAttributes;
        if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) {
            SetFileAttributesA(path.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY);
        }
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            done = DeleteFileA(path.c_str()) != FALSE;
        } else if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
            done = RemoveDirectoryA(path.c_str()) != FALSE;
        } else {
            done = Empty(path) && RemoveDirectoryA(path.c_str()) != FALSE;
        }
    } while (done && FindNextFileA(search, &entry));
    const DWORD error = GetLastError();
    FindClose(search);
    SetLastError(done ? ERROR_SUCCESS : error);
    return done;
}

}  // namespace

BOOL EmptyFolderA(LPCSTR pathName) {
    const DWORD attributes = GetFileAttributesA(pathName);
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return FALSE;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 ||
        (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        SetLastError(ERROR_DIRECTORY);
        return FALSE;
    }
    return Empty(pathName) ? TRUE : FALSE;
}

}  // namespace nvk::os
