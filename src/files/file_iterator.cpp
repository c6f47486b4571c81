// FileIterator: the filters, and the walk's start and end.
#include "nvk/files/file_iterator.h"

#include <typeinfo>

#include "os/api/find.h"

namespace os = nvk::os;

namespace {

bool AnyMatches(const PTableau<Chaine>& patterns, const Chaine& text) {
    for (int i = 0; i < patterns.Size(); ++i) {
        if (text.LikeNoCase(patterns[i])) {
            return true;
        }
    }
    return false;
}

}  // namespace

FileIterator::FileIterator() {
    m_Cursor.SetMaster(this, -1);
}

Chaine FileIterator::SetRoot(const Chaine& root) {
    Chaine old = m_Root;
    m_Root = root;
    return old;
}

void FileIterator::IncludeFolders(bool filterNames) {
    m_Flags |= DeliverFolders;
    m_Flags = filterNames ? m_Flags | FilterFolderNames : m_Flags & ~FilterFolderNames;
}

void FileIterator::AddNameInclude(const Chaine& pattern) {
    m_NameInclude.Add(pattern);
    if (pattern == "*.*") {
        m_NameInclude.Add(Chaine("*"));
    }
}

void FileIterator::AddNameExclude(const Chaine& pattern) {
    m_NameExclude.Add(pattern);
    if (pattern == "*.*") {
        m_NameExclude.Add(Chaine("*"));
    }
}

void FileIterator::ResetFilters() {
    m_NameInclude.RemoveAll();
    m_NameExclude.RemoveAll();
    m_PathInclude.RemoveAll();
    m_PathExclude.RemoveAll();
    m_Flags &= ~(ExcludeHiddenFlag | DeliverFolders | FilterFolderNames);
    m_Flags |= FilesFirstFlag;
}

bool FileIterator::GetFirst() {
    m_Cursor.Init(m_Root);
    return GetNext();
}

bool FileIterator::GetFirst(const Chaine& root) {
    SetRoot(root);
    return GetFirst();
}

bool FileIterator::GetNext() {
    if (m_Cursor.GetNext()) {
        return true;
    }
    Close();
    return false;
}

bool FileIterator::ListsNamesOnly() const {
    return typeid(*this) == typeid(FileIterator);
}

const os::WIN32_FIND_DATAA& FileIterator::Described() const {
    if (!m_Described) {
        m_Described = true;
        os::WIN32_FIND_DATAA data;
        const os::HANDLE search = os::FindFirstFileA(PathName(), &data);
        if (search != os::INVALID_HANDLE_VALUE) {
            os::FindClose(search);
            m_FindData = data;
        }
    }
    return m_FindData;
}

void FileIterator::Close() {
    m_Cursor.Close();
    m_FindData = {};
    m_Described = true;
    m_Flags &= ~ExcludeHiddenFlag;
}

PTableau<Chaine> FileIterator::GetFiles() {
    PTableau<Chaine> files;
    for (bool more = GetFirst(); more; more = GetNext()) {
        files.Add(PathName());
    }
    Close();
    return files;
}

bool FileIterator::CheckFileName(const Chaine& name, const Chaine& alternateName) const {
    if (AnyMatches(m_NameExclude, name) ||
        (!alternateName.IsEmpty() && AnyMatches(m_NameExclude, alternateName))) {
        return false;
    }
    return m_NameInclude.IsEmpty() || AnyMatches(m_NameInclude, name) ||
           (!alternateName.IsEmpty() && AnyMatches(m_NameInclude, alternateName));
}

bool FileIterator::CheckPathInclude(const Chaine& path) const {
    return m_PathInclude.IsEmpty() || AnyMatches(m_PathInclude, path);
}

bool FileIterator::CheckPathExclude(const Chaine& path) const {
    const Chaine last = path.GetFileName();
    return last != "." && last != ".." && !AnyMatches(m_PathExclude, path);
}

bool FileIterator::CheckFile(const Chaine& path, const os::WIN32_FIND_DATAA& data) const {
    if ((m_Flags & ExcludeHiddenFlag) != 0 && (data.dwFileAttributes & os::FILE_ATTRIBUTE_HIDDEN)) {
        return false;
    }
    if (!CheckPathInclude(path)) {
        return false;
    }
    // Without name filters every name passes; the names need no copy then,
    // which counts on large trees.
    return (m_NameInclude.IsEmpty() && m_NameExclude.IsEmpty()) ||
           CheckFileName(data.cFileName, data.cAlternateFileName);
}

bool FileIterator::CheckFolder(const Chaine& path) const {
    if ((m_Flags & ExcludeHiddenFlag) != 0 &&
        (m_FindData.dwFileAttributes & os::FILE_ATTRIBUTE_HIDDEN)) {
        return false;
    }
    return CheckPathExclude(PathJoin(path, m_FindData.cFileName));
}
