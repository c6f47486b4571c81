// FileIterator::SubFileCursor: one level of the walk.
#include <utility>

#include "files/drive_kind.h"
#include "nvk/files/file_iterator.h"
#include "os/api/find.h"
#include "os/api/find_names.h"
#include "os/api/kernel_text.h"
#include "os/api/volume.h"

namespace os = nvk::os;

using Cursor = FileIterator::SubFileCursor;

void Cursor::Init(const Chaine& path) {
    // A walk given up half way leaves the level below and the folders not
    // yet walked; a new walk starts without them.
    Close();
    m_SubFolders.RemoveAll();
    m_Path = path;
    m_Files.RemoveAll();
    m_Folders.RemoveAll();
    m_Index = 0;
    if (path.Like("<*>")) {
        InitDrives(path);
        return;
    }
    FileIterator& master = *m_Master;
    Chaine pattern = "*.*";
    const bool pathIncluded = master.CheckPathInclude(path);
    const bool deliverFolders = (master.m_Flags & DeliverFolders) != 0;
    if (m_Depth == 0 && master.m_NameInclude.Size() == 1 && master.m_NameExclude.IsEmpty() &&
        !deliverFolders) {
        pattern = std::as_const(master.m_NameInclude)[0];
    }
    os::WIN32_FIND_DATAA& data = master.m_FindData;
    const Chaine searched = PathJoin(path, pattern);
    os::HANDLE search = master.ListsNamesOnly() ? os::FindFirstNameA(searched, &data)
                                                : os::FindFirstFileA(searched, &data);
    if (search == os::INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        if ((data.dwFileAttributes & os::FILE_ATTRIBUTE_DIRECTORY) == 0) {
            if (pathIncluded && master.CheckFile(path, data)) {
                m_Files.Add(data);
            }
            continue;
        }
        if (!master.CheckFolder(path)) {
            continue;
        }
        // A link is never entered: its target may lie outside the tree, or
        // hold the link itself.
        if (m_Depth != 0 && (data.dwFileAttributes & os::FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
            m_SubFolders.Add(Chaine(data.cFileName));
        }
        if (pathIncluded && deliverFolders &&
            ((master.m_Flags & FilterFolderNames) == 0 ||
             master.CheckFileName(data.cFileName, data.cAlternateFileName))) {
            m_Folders.Add(data);
        }
    } while (os::FindNextFileA(search, &data));
    os::FindClose(search);
}

void Cursor::InitDrives(const Chaine& kind) {
    if (m_Depth == 0) {
        return;
    }
    const FileIterator& master = *m_Master;
    const os::DWORD drives = os::GetLogicalDrives();
    for (int bit = 0; bit < 32; ++bit) {
        if ((drives & (os::DWORD{1} << bit)) == 0) {
            continue;
        }
        const char root[] = {static_cast<char>('A' + bit), ':', '\\', '\0'};
        if (!nvk::files::DriveOfKind(kind, os::GetDriveTypeA(root))) {
            continue;
        }
        m_SubFolders.Add(Chaine(root));
        if ((master.m_Flags & DeliverFolders) == 0) {
            continue;
        }
        os::WIN32_FIND_DATAA data{};
        os::lstrcpynA(data.cFileName, root, sizeof data.cFileName);
        if ((master.m_Flags & FilterFolderNames) == 0 || master.CheckFileName(root, root)) {
            data.dwFileAttributes = os::FILE_ATTRIBUTE_DIRECTORY;
            m_Folders.Add(data);
        }
    }
    // The drives' own cursors then have the roots themselves as paths.
    m_Path = Chaine();
}

bool Cursor::GetNext() {
    if (m_Child != nullptr) {
        if (m_Child->GetNext()) {
            return true;
        }
        Close();
    }
    if ((m_Master->m_Flags & FilesFirstFlag) != 0) {
        return iGetNextFile() || iGetNextFolder() || iParseSubFolder();
    }
    return iGetNextFolder() || iParseSubFolder() || iGetNextFile();
}

void Cursor::Close() {
    delete std::exchange(m_Child, nullptr);
}

bool Cursor::TakeNext(PTableau<os::WIN32_FIND_DATAA>& entries) {
    if (entries.IsEmpty()) {
        return false;
    }
    m_Master->m_FindData = std::as_const(entries)[m_Index++];
    // Drive roots are made whole here; listed entries may wait for a look.
    m_Master->m_Described = m_Path.IsEmpty() || !m_Master->ListsNamesOnly();
    if (m_Index == entries.Size()) {
        entries.RemoveAll();
        m_Index = 0;
    }
    return true;
}

bool Cursor::iParseSubFolder() {
    if (m_SubFolders.IsEmpty()) {
        return false;
    }
    while (m_Index < m_SubFolders.Size()) {
        auto* child = new SubFileCursor;
        m_Child = child;
        child->SetMaster(m_Master, m_Depth == -1 ? -1 : m_Depth - 1);
        child->Init(PathJoin(m_Path, std::as_const(m_SubFolders)[m_Index++]));
        if (child->GetNext()) {
            return true;
        }
        Close();
    }
    m_SubFolders.RemoveAll();
    m_Index = 0;
    return false;
}
