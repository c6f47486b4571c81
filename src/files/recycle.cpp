// RecycleFile and RecycleFiles.
#include <cstring>
#include <string>

#include "nvk/files/file_operations.h"
#include "os/api/find.h"
#include "os/api/shell.h"
#include "os/api/sync.h"

namespace os = nvk::os;

namespace {

// The room of the double-terminated name the shell is handed.
constexpr std::size_t kNameRoom = 520;

// The shell deletes names one by one: a pattern is expanded here, and each
// match goes in a call of its own. The first failure ends the loop.
int ShellOperation(os::SHFILEOPSTRUCTA& operation) {
    if (operation.wFunc != os::FO_DELETE) {
        return os::SHFileOperationA(&operation);
    }
    const char* source = operation.pFrom;
    os::WIN32_FIND_DATAA data;
    os::HANDLE search = os::FindFirstFileA(source, &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return 0;
    }
    const char* lastSlash = std::strrchr(source, '\\');
    const Chaine folder =
        lastSlash != nullptr ? Chaine(source, static_cast<int>(lastSlash - source + 1)) : Chaine();
    int result = 0;
    do {
        const char* name = data.cFileName;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) {
            continue;
        }
        // The folder part of the pattern, then the name, then the list's end.
        std::string one = std::string(folder.c_str()) + name;
        one += '\0';
        os::SHFILEOPSTRUCTA single = operation;
        single.pFrom = one.c_str();
        result = os::SHFileOperationA(&single);
        os::Sleep(1);
    } while (result == 0 && os::FindNextFileA(search, &data));
    os::FindClose(search);
    return result;
}

}  // namespace

int RecycleFile(const char* path, int permanent) {
    const std::size_t length = path != nullptr ? std::strlen(path) : 0;
    // The name and its two zeros must fit the room the shell's record is
    // given; a name that needs it all or more is refused rather than cut.
    if (length + 2 >= kNameRoom) {
        return 0;
    }
    char from[kNameRoom] = {};
    if (path != nullptr) {
        std::memcpy(from, path, length);
    }
    os::SHFILEOPSTRUCTA operation{};
    operation.wFunc = os::FO_DELETE;
    operation.pFrom = from;
    operation.fFlags = os::FOF_MULTIDESTFILES | os::FOF_SILENT | os::FOF_RENAMEONCOLLISION |
                       os::FOF_NOCONFIRMATION | os::FOF_NOCONFIRMMKDIR | os::FOF_NOERRORUI;
    if (permanent == 0) {
        operation.fFlags |= os::FOF_ALLOWUNDO;
    }
    return ShellOperation(operation) == 0 ? 1 : 0;
}

int RecycleFiles(const char* folder, const char* name, int permanent) {
    Chaine path(folder);
    if (!path.IsEmpty() && path[path.Length() - 1] != '\\') {
        path += '\\';
    }
    path += name;
    return RecycleFile(path, permanent);
}
