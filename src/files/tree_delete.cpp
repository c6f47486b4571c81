// DelTree.
#include "os/api/tree_delete.h"
#include "nvk/files/file_operations.h"
#include "os/api/directory.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"

namespace os = nvk::os;

int DelTree(const char* pathText, bool removeRoot) {
    Chaine path(pathText);
    if (path.IsEmpty()) {
        return 0;
    }
    if (path[path.Length() - 1] == '\\') {
        path = path.Left(path.Length() - 1);
    }
    const os::DWORD attributes = os::GetFileAttributesA(path);
    if (attributes == os::INVALID_FILE_ATTRIBUTES ||
        (attributes & os::FILE_ATTRIBUTE_DIRECTORY) == 0) {
        // Nothing to empty: a missing folder is no failure when it stays.
        return removeRoot ? os::RemoveDirectoryA(path) : 1;
    }
    // A link goes as itself: what it points to stays as it is, read-only bit
    // included, and a link to a folder, which Windows removes as a folder
    // and POSIX as a file, is never entered.
    if ((attributes & os::FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        return !removeRoot || os::RemoveDirectoryA(path) || os::DeleteFileA(path);
    }
    if ((attributes & os::FILE_ATTRIBUTE_READONLY) != 0) {
        os::SetFileAttributesA(path, attributes & ~os::FILE_ATTRIBUTE_READONLY);
    }
    // The layer empties the tree relative to the folders it has open, which
    // spares finding each entry from the drive down; it deletes read-only
    // files and removes links as themselves, as the entry-by-entry walk did.
    if (!os::EmptyFolderA(path)) {
        return 0;
    }
    return removeRoot ? os::RemoveDirectoryA(path) : 1;
}
