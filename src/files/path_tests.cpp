// Names, sizes and the existence tests of paths.
#include <cstring>

#include "nvk/files/file_operations.h"
#include "os/api/error_mode.h"
#include "os/api/file.h"
#include "os/api/find.h"
#include "os/api/kernel_text.h"
#include "os/api/sync.h"
#include "os/api/volume.h"

namespace os = nvk::os;

namespace {

// Where the name begins: behind the last "\", "/" or ":".
const char* NameStart(const char* path) {
    const char* start = path;
    for (const char* p = path; *p != '\0'; ++p) {
        if (*p == '\\' || *p == '/' || *p == ':') {
            start = p + 1;
        }
    }
    return start;
}

bool Find(const char* path, os::WIN32_FIND_DATAA& data) {
    os::HANDLE search = os::FindFirstFileA(path, &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return false;
    }
    os::FindClose(search);
    return true;
}

bool IsDots(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// The first entry of the folder other than "." and "..", for which
// `wanted` holds: 1 if there is one, 0 if not, -1 if the folder can't be
// searched.
template <class Wanted>
int AnyEntry(const Chaine& path, Wanted wanted) {
    os::WIN32_FIND_DATAA data;
    os::HANDLE search = os::FindFirstFileA(path + "\\*.*", &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return -1;
    }
    int found = 0;
    do {
        found = !IsDots(data.cFileName) && wanted(data) ? 1 : 0;
    } while (found == 0 && os::FindNextFileA(search, &data));
    os::FindClose(search);
    return found;
}

}  // namespace

unsigned int GetFileName(const char* path, char* out, unsigned int size) {
    const char* name = NameStart(path != nullptr ? path : "");
    if (out != nullptr) {
        os::lstrcpynA(out, name, static_cast<int>(size));
    }
    return static_cast<unsigned int>(std::strlen(name)) + 1;
}

unsigned int GetPathName(const char* path, char* out, unsigned int size) {
    const char* text = path != nullptr ? path : "";
    const auto length = static_cast<unsigned int>(NameStart(text) - text);
    if (out != nullptr) {
        os::lstrcpynA(out, text, static_cast<int>(length + 1 < size ? length + 1 : size));
    }
    return length;
}

unsigned int GetFileSize(const Chaine& path) {
    os::WIN32_FIND_DATAA data;
    return Find(path, data) ? data.nFileSizeLow : 0;
}

unsigned long long GetLongFileSize(const Chaine& path) {
    os::WIN32_FIND_DATAA data;
    return Find(path, data)
               ? (static_cast<unsigned long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow
               : 0;
}

int IsDirectory(const char* path) {
    if (path == nullptr || path[0] == '\0') {
        return 0;
    }
    const std::size_t length = std::strlen(path);
    if (path[length - 1] == '\\' || (length == 2 && path[1] == ':')) {
        return 1;
    }
    os::WIN32_FIND_DATAA data;
    if (Find(path, data)) {
        return (data.dwFileAttributes & os::FILE_ATTRIBUTE_DIRECTORY) != 0 ? 1 : 0;
    }
    // "\\server\share" has no entry of its own; its volume answers.
    if (path[0] == '\\' && path[1] == '\\') {
        const char* share = std::strchr(path + 2, '\\');
        if (share != nullptr && std::strchr(share + 1, '\\') == nullptr) {
            const Chaine root = Chaine(path) + '\\';
            const os::UINT mode = os::SetErrorMode(os::SEM_FAILCRITICALERRORS);
            const os::BOOL found =
                os::GetVolumeInformationA(root, nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0);
            os::SetErrorMode(mode);
            return found ? 1 : 0;
        }
    }
    return 0;
}

int IsFileExist(const char* path) {
    os::HANDLE file =
        os::CreateFileA(path, os::GENERIC_READ, os::FILE_SHARE_READ | os::FILE_SHARE_WRITE, nullptr,
                        os::OPEN_EXISTING, os::FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != os::INVALID_HANDLE_VALUE) {
        os::CloseHandle(file);
        return 1;
    }
    const Chaine text(path);
    if (text.IsEmpty()) {
        return 0;
    }
    const Chaine root = text[text.Length() - 1] == '\\' ? text : text + '\\';
    if (os::GetVolumeInformationA(root, nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0)) {
        return 1;
    }
    os::WIN32_FIND_DATAA data;
    return Find(root.Left(root.Length() - 1), data) ? 1 : 0;
}

int HasSubDirectories(const Chaine& path) {
    if (path.IsEmpty()) {
        return 1;
    }
    return AnyEntry(path, [](const os::WIN32_FIND_DATAA& data) {
               return (data.dwFileAttributes & os::FILE_ATTRIBUTE_DIRECTORY) != 0;
           }) == 1;
}

int IsDirectoryEmpty(const Chaine& path) {
    if (path.IsEmpty()) {
        return 1;
    }
    return AnyEntry(path, [](const os::WIN32_FIND_DATAA&) { return true; }) == 0;
}
