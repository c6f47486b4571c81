// DelTree.
#include "nvk/files/file_operations.h"
#include "os/api/directory.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/find.h"

namespace os = nvk::os;

namespace {

void MakeWritable(const Chaine& path, os::DWORD attributes) {
    if (attributes != os::INVALID_FILE_ATTRIBUTES &&
        (attributes & os::FILE_ATTRIBUTE_READONLY) != 0) {
        os::SetFileAttributesA(path, attributes & ~os::FILE_ATTRIBUTE_READONLY);
    }
}

// A link goes as itself. Its attributes are its target's, which stays as it
// is: the read-only bit is left alone, and a link to a folder, which Windows
// removes as a folder and POSIX as a file, is never entered.
bool RemoveLink(const Chaine& path) {
    return os::RemoveDirectoryA(path) || os::DeleteFileA(path);
}

}  // namespace

int DelTree(const char* pathText, bool removeRoot) {
    Chaine path(pathText);
    if (path.IsEmpty()) {
        return 0;
    }
    if (path[path.Length() - 1] == '\\') {
        path = path.Left(path.Length() - 1);
    }
    MakeWritable(path, os::GetFileAttributesA(path));
    os::WIN32_FIND_DATAA data;
    os::HANDLE search = os::FindFirstFileA(path + "\\*.*", &data);
    if (search != os::INVALID_HANDLE_VALUE) {
        bool ok = true;
        do {
            const char* name = data.cFileName;
            if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) {
                continue;
            }
            const Chaine entry = path + '\\' + name;
            if ((data.dwFileAttributes & os::FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
                ok = RemoveLink(entry);
            } else if ((data.dwFileAttributes & os::FILE_ATTRIBUTE_DIRECTORY) != 0) {
                ok = DelTree(entry, true) != 0;
            } else {
                MakeWritable(entry, data.dwFileAttributes);
                ok = os::DeleteFileA(entry) != 0;
            }
        } while (ok && os::FindNextFileA(search, &data));
        os::FindClose(search);
        if (!ok) {
            return 0;
        }
    }
    return removeRoot ? os::RemoveDirectoryA(path) : 1;
}
