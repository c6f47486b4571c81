// The walk on Windows, which has no calls relative to an open folder: each
// folder of the path is opened in turn without following a reparse point
// (junction or symbolic link), refused when it is one, and held open without
// sharing deletion, so that nobody can rename or remove it, and swap a link
// in its place, while something is made below it.
#include <windows.h>

#include <cstring>

#include "safe_output.h"

namespace nvk::unzip {

const bool kNamesAreText = true;
const char kNativeSeparators[] = "\\/";

// Windows drops the trailing dots and spaces of a name, which would make
// ".. " the folder above and "a." the file "a", and refuses the characters
// that its paths and wildcards use.
bool FitsDisk(const std::string& part) {
    if (part.back() == '.' || part.back() == ' ') {
        return false;
    }
    for (unsigned char c : part) {
        if (c < 0x20 || std::strchr("<>:\"|?*", c) != nullptr) {
            return false;
        }
    }
    return true;
}

struct Destination::NativeFolder {
    std::wstring Path;
    std::vector<HANDLE> Held;
};

namespace {

// A rename into a folder opens it to add a file, so writing is shared.
constexpr DWORD kFolderShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr DWORD kFolderAccess = FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES | SYNCHRONIZE;

std::wstring Wide(const std::string& text, UINT codePage) {
    int size =
        MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), wide.data(), size);
    return wide;
}

// The path of `name` (UTF-8) in the folder at `path`.
std::wstring Child(const std::wstring& path, const std::string& name) {
    std::wstring child = path;
    child.append(1, L'\\').append(Wide(name, CP_UTF8));
    return child;
}

// A full path whose names below it are taken as they stand, with no device
// read into "con.txt" and no limit of MAX_PATH. Without its final separator,
// as Child() adds one.
std::wstring Literal(std::wstring path) {
    while (!path.empty() && path.back() == L'\\') {
        path.pop_back();
    }
    if (path.rfind(L"\\\\?\\", 0) == 0) {
        return path;
    }
    if (path.rfind(L"\\\\", 0) == 0) {
        return L"\\\\?\\UNC\\" + path.substr(2);
    }
    return L"\\\\?\\" + path;
}

HANDLE Handle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

// Opens a folder; a reparse point is opened itself, not what it points to.
HANDLE OpenFolderHandle(const std::wstring& path, bool followReparsePoint) {
    DWORD flags = FILE_FLAG_BACKUP_SEMANTICS;
    if (!followReparsePoint) {
        flags |= FILE_FLAG_OPEN_REPARSE_POINT;
    }
    return CreateFileW(path.c_str(), kFolderAccess, kFolderShare, nullptr, OPEN_EXISTING, flags,
                       nullptr);
}

bool IsPlainFolder(HANDLE handle) {
    BY_HANDLE_FILE_INFORMATION info{};
    return GetFileInformationByHandle(handle, &info) &&
           (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
           (info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
}

// Seconds since 1970 in 100-nanosecond intervals since 1601, and back.
constexpr LONGLONG kEpochSeconds = 11644473600LL;
constexpr LONGLONG kTicksPerSecond = 10000000LL;

std::time_t Time(const FILETIME& time) {
    ULONGLONG ticks = (static_cast<ULONGLONG>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    return static_cast<std::time_t>(static_cast<LONGLONG>(ticks) / kTicksPerSecond - kEpochSeconds);
}

}  // namespace

void Destination::CloseFolder::operator()(NativeFolder* folder) const {
    for (HANDLE handle : folder->Held) {
        CloseHandle(handle);
    }
    delete folder;
}

Destination::Destination(const std::string& nativeFolder)
    : m_Folder(nativeFolder.empty() ? std::string(".") : nativeFolder) {
    std::wstring given = Wide(m_Folder, CP_ACP);
    DWORD size = GetFullPathNameW(given.c_str(), 0, nullptr, nullptr);
    std::wstring path(size, L'\0');
    size = GetFullPathNameW(given.c_str(), size, path.data(), nullptr);
    if (size == 0) {
        return;
    }
    path.resize(size);
    while (path.size() > 3 && path.back() == L'\\') {
        path.pop_back();
    }
    // The destination itself is the caller's: a reparse point there is
    // followed. Missing folders are made from the top; those that exist, or
    // that cannot be made, show in the final open.
    HANDLE root = OpenFolderHandle(path, true);
    const DWORD error = root == INVALID_HANDLE_VALUE ? GetLastError() : ERROR_SUCCESS;
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
        for (std::size_t at = path.find(L'\\', 3); at != std::wstring::npos;
             at = path.find(L'\\', at + 1)) {
            CreateDirectoryW(path.substr(0, at).c_str(), nullptr);
        }
        CreateDirectoryW(path.c_str(), nullptr);
        root = OpenFolderHandle(path, true);
    }
    if (root != INVALID_HANDLE_VALUE) {
        m_Root.reset(new NativeFolder{Literal(path), {root}});
    }
}

Destination::FolderPtr Destination::OpenFolder(const std::vector<std::string>& components,
                                               std::size_t count, bool make, Status* status) {
    // The destination's own handle stays with the destination.
    FolderPtr folder(new NativeFolder{m_Root->Path, {}});
    for (std::size_t i = 0; i < count; ++i) {
        folder->Path = Child(folder->Path, components[i]);
        HANDLE next = OpenFolderHandle(folder->Path, false);
        if (next == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_NOT_FOUND && make) {
            if (!CreateDirectoryW(folder->Path.c_str(), nullptr) &&
                GetLastError() != ERROR_ALREADY_EXISTS) {
                *status = Status::Failed;
                return nullptr;
            }
            next = OpenFolderHandle(folder->Path, false);
        }
        if (next == INVALID_HANDLE_VALUE) {
            // A file where a folder should be opens; anything else failed.
            *status = Status::Failed;
            return nullptr;
        }
        folder->Held.push_back(next);
        if (!IsPlainFolder(next)) {
            // A reparse point, or a file where a folder should be: never
            // gone through.
            *status = Status::Refused;
            return nullptr;
        }
    }
    *status = Status::Ok;
    return folder;
}

int Destination::Kind(const NativeFolder& folder, const std::string& name, std::time_t* modified) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    std::wstring path = Child(folder.Path, name);
    // The attributes of a reparse point are its own, not its target's.
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
        return -1;
    }
    *modified = Time(data.ftLastWriteTime);
    return (data.dwFileAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0
               ? 0
               : 1;
}

std::intptr_t Destination::CreateNew(const NativeFolder& folder, const std::string& name,
                                     bool* exists) {
    std::wstring path = Child(folder.Path, name);
    HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
    *exists = file == INVALID_HANDLE_VALUE && GetLastError() == ERROR_FILE_EXISTS;
    return reinterpret_cast<std::intptr_t>(file);
}

Destination::File::~File() {
    if (m_Handle != -1) {
        CloseHandle(Handle(m_Handle));
        DeleteFileW(Child(m_Folder->Path, m_Temporary).c_str());
    }
}

bool Destination::File::Write(const char* data, std::size_t size) {
    while (size > 0) {
        DWORD chunk = size > (1u << 30) ? (1u << 30) : static_cast<DWORD>(size);
        DWORD written = 0;
        if (!WriteFile(Handle(m_Handle), data, chunk, &written, nullptr) || written == 0) {
            return false;
        }
        data += written;
        size -= written;
    }
    return true;
}

bool Destination::File::Commit(std::time_t modified, unsigned mode) {
    // The time and the read-only bit go on the temporary file: a read-only
    // file can be moved, and the file is in place whole with both.
    FILE_BASIC_INFO info{};
    info.LastWriteTime.QuadPart =
        (static_cast<LONGLONG>(modified) + kEpochSeconds) * kTicksPerSecond;
    info.FileAttributes = (mode & 0200) == 0 ? FILE_ATTRIBUTE_READONLY : FILE_ATTRIBUTE_NORMAL;
    SetFileInformationByHandle(Handle(m_Handle), FileBasicInfo, &info, sizeof info);
    bool done = CloseHandle(Handle(m_Handle)) != 0;
    m_Handle = -1;
    const std::wstring temporary = Child(m_Folder->Path, m_Temporary);
    const std::wstring target = Child(m_Folder->Path, m_Name);
    // Nothing is moved over a read-only file: the file the member replaces
    // loses the bit first.
    const DWORD existing = GetFileAttributesW(target.c_str());
    if (existing != INVALID_FILE_ATTRIBUTES && (existing & FILE_ATTRIBUTE_READONLY) != 0 &&
        (existing & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0) {
        SetFileAttributesW(target.c_str(), existing & ~FILE_ATTRIBUTE_READONLY);
    }
    // The move replaces a file or a link at the name, never what a link
    // points to.
    if (!done || !MoveFileExW(temporary.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        SetFileAttributesW(temporary.c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(temporary.c_str());
        return false;
    }
    return true;
}

}  // namespace nvk::unzip
