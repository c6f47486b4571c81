// The file-name operations that ask the file system: existence, network
// shares, whole-file reads and writes, and folder creation.
#include <cctype>

#include "nvk/core/chaine.h"
#include "os/api/directory.h"
#include "os/api/file.h"
#include "os/api/find.h"
#include "os/api/network.h"
#include "os/api/sync.h"

namespace os = nvk::os;

namespace {

// The directory bit of the first entry a search finds, or nothing.
bool FindsFolder(const char* pattern, bool& folder) {
    os::WIN32_FIND_DATAA data;
    os::HANDLE search = os::FindFirstFileA(pattern, &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return false;
    }
    os::FindClose(search);
    folder = (data.dwFileAttributes & os::FILE_ATTRIBUTE_DIRECTORY) != 0;
    return true;
}

}  // namespace

bool Chaine::FileExists() const {
    bool folder = false;
    return IsValidFileName() && FindsFolder(m_pText, folder) && !folder;
}

bool Chaine::IsFolder() const {
    Chaine path(*this);
    path.RemoveTrailingSlash();
    if (!path.IsValidFileName()) {
        return false;
    }
    bool folder = false;
    if (FindsFolder(path, folder)) {
        return folder;
    }
    // A share's root can't be found by its own name, only by what it holds.
    return path[0] == '\\' && FindsFolder(path + "\\*", folder) && folder;
}

bool Chaine::FolderPathExists() const {
    if (IsEmpty()) {
        return false;
    }
    Chaine path(*this);
    path.NormalizePath();
    if (path.IsRootPath()) {
        return true;
    }
    path.RemoveTrailingSlash();
    return path.IsEmpty() || path.IsFolder();
}

Chaine Chaine::GetNetworkPath() const {
    Chaine path(*this);
    path.MakeAbsolute();
    if (path.Length() < 2) {
        return {};
    }
    if (path[0] == '\\' && path[1] == '\\') {
        return path.GetRoot();
    }
    if (path[1] != ':') {
        return {};
    }
    const char drive[] = {static_cast<char>(std::toupper(static_cast<unsigned char>(path[0]))), ':',
                          '\0'};
    char remote[1024];
    os::DWORD size = sizeof remote;
    if (os::WNetGetConnectionA(drive, remote, &size) != os::ERROR_SUCCESS) {
        return {};
    }
    return Chaine(remote);
}

Chaine Chaine::GetServerName() const {
    Chaine share = GetNetworkPath();
    if (share.Length() < 3 || share[0] != '\\' || share[1] != '\\') {
        return {};
    }
    int end = share.FindChar('\\', false, 2);
    return end < 0 ? share.Mid(2) : share.Mid(2, end - 2);
}

bool Chaine::ReadFromHandle(os::HANDLE handle) {
    const os::DWORD size = os::GetFileSize(handle, nullptr);
    if (size == 0) {
        Empty();
        return true;
    }
    // The error value, or more than a value can hold.
    if (size == os::INVALID_FILE_SIZE || size >= 0x7FFFFFFF) {
        return false;
    }
    os::SetFilePointer(handle, 0, nullptr, os::FILE_BEGIN);
    char* text = SetLength(static_cast<int>(size));
    os::DWORD read = 0;
    if (!os::ReadFile(handle, text, size, &read, nullptr) || read != size) {
        Empty();
        return false;
    }
    return true;
}

bool Chaine::WriteToHandle(os::HANDLE handle) const {
    os::SetFilePointer(handle, 0, nullptr, os::FILE_BEGIN);
    os::DWORD written = 0;
    os::WriteFile(handle, m_pText, static_cast<os::DWORD>(Length()), &written, nullptr);
    os::SetEndOfFile(handle);
    return written == static_cast<os::DWORD>(Length());
}

bool Chaine::WriteToFile(const char* path) const {
    if (path == nullptr || path[0] == '\0') {
        return false;
    }
    Chaine folder = Chaine(path).GetFolder();
    if (!folder.IsEmpty() && !folder.FolderPathExists()) {
        return false;
    }
    os::HANDLE file =
        os::CreateFileA(path, os::GENERIC_WRITE, os::FILE_SHARE_READ | os::FILE_SHARE_WRITE,
                        nullptr, os::OPEN_ALWAYS, os::FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == os::INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool written = WriteToHandle(file);
    os::CloseHandle(file);
    return written;
}

int MakeDirectoryPath(const char* path, os::LPSECURITY_ATTRIBUTES security) {
    Chaine folder(path);
    folder.NormalizePath();
    if (folder.Length() > 0 && folder[folder.Length() - 1] == '\\' && !folder.IsRootPath()) {
        folder = folder.Left(folder.Length() - 1);
    }
    if (folder.IsEmpty() || folder.IsRootPath() || folder.IsFolder()) {
        return 1;
    }
    Chaine parent = folder.GetFolder();
    const bool bareDrive = parent.Length() == 2 && parent[1] == ':';
    if (!bareDrive && !parent.FolderPathExists() && MakeDirectoryPath(parent, security) == 0) {
        return 0;
    }
    return os::CreateDirectoryA(folder, security) ? 1 : 0;
}
