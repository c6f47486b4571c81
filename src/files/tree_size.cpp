// GetDirectorySize and GetDirectoryMaxNamesSize.
#include "nvk/files/file_operations.h"
#include "os/api/find.h"
#include "os/api/volume.h"

namespace os = nvk::os;

unsigned int GetDirectorySize(const Chaine& path) {
    os::WIN32_FIND_DATAA data;
    os::HANDLE search = os::FindFirstFileA(PathJoin(path, "*.*"), &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return 0;
    }
    unsigned int size = 0;
    do {
        const char* name = data.cFileName;
        if ((data.dwFileAttributes & os::FILE_ATTRIBUTE_DIRECTORY) == 0) {
            size += data.nFileSizeLow;
        } else if ((data.dwFileAttributes & os::FILE_ATTRIBUTE_REPARSE_POINT) == 0 &&
                   !(name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')))) {
            // Links to folders are not counted: what they reach is not below.
            size += GetDirectorySize(PathJoin(path, name));
        }
    } while (os::FindNextFileA(search, &data));
    os::FindClose(search);
    return size;
}

unsigned long GetDirectoryMaxNamesSize(const char* pathText) {
    const Chaine path(pathText);
    Chaine root;
    const char* rootText = nullptr;
    if (path.Length() >= 2 && path[0] == '\\' && path[1] == '\\') {
        // The share root "\\server\share\": what remains when the components after the
        // share are cut.
        int separators = 0;
        int end = 2;
        while (end < path.Length() && !(path[end] == '\\' && ++separators == 2)) {
            ++end;
        }
        root = path.Left(end) + '\\';
        rootText = root;
    } else if (path.Length() >= 2 && path[1] == ':') {
        root = path.Left(2) + '\\';
        rootText = root;
    }
    os::DWORD length = 0;
    if (!os::GetVolumeInformationA(rootText, nullptr, 0, nullptr, &length, nullptr, nullptr, 0) ||
        length == 0) {
        return 8;
    }
    return length;
}
