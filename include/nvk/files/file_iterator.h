// FileIterator: walks a folder tree, or every drive of a kind, and delivers one
// file or folder at a time, filtered by name and by path. Each folder is read
// whole on arrival, so no search stays open between two calls. The walk is
// depth-first: in each folder its files, then its delivered folders, then
// folder by folder everything below.
//
// Patterns are those of Chaine::LikeNoCase ("*", "?", "#", "[a-z]", "[!abc]",
// "`" for a plain next character), matched against the whole name or path.
//
// A root of the form "<...>" walks drives: "<HardDrives>" the fixed ones,
// "<LocalDrives>" fixed, removable, optical and memory ones, any other name
// every drive but those of no kind.
//
// The walk never goes through a symbolic link: a link to a folder is
// delivered like a folder but not entered, so a tree with links out of it, or
// a cycle of links, walks only what is really below the root.
//
// The names are compared with cAlternateFileName as well, the short name of
// systems that keep one; on POSIX it is always empty.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"
#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

class NVKUTIL_EXPORT FileIterator {
public:
    enum Flags : unsigned {
        ExcludeHiddenFlag = 1,
        FilesFirstFlag = 2,
        DeliverFolders = 4,
        FilterFolderNames = 8,
    };

    // One level of the walk: what its folder still has to deliver, and the
    // cursor of the level below.
    class SubFileCursor {
    public:
        SubFileCursor() = default;
        ~SubFileCursor() { Close(); }
        SubFileCursor(const SubFileCursor&) = delete;
        SubFileCursor& operator=(const SubFileCursor&) = delete;

        // Reads the folder `path` (or the drives, for "<...>").
        void Init(const Chaine& path);
        bool GetNext();
        // Frees the level below.
        void Close();
        Chaine Path() const { return m_Path; }
        void SetMaster(FileIterator* master, int depth) {
            m_Master = master;
            m_Depth = depth;
        }
        // How many levels below this one may be walked; -1 is no limit.
        void SetDepth(int depth) { m_Depth = depth; }

    protected:
        bool iGetNextFile() { return TakeNext(m_Files); }
        bool iGetNextFolder() { return TakeNext(m_Folders); }
        bool iParseSubFolder();

    private:
        friend class FileIterator;
        void InitDrives(const Chaine& kind);
        bool TakeNext(PTableau<nvk::os::WIN32_FIND_DATAA>& entries);
        const SubFileCursor* Deepest() const {
            return m_Child != nullptr ? m_Child->Deepest() : this;
        }

        PTableau<nvk::os::WIN32_FIND_DATAA> m_Files;
        PTableau<nvk::os::WIN32_FIND_DATAA> m_Folders;
        PTableau<Chaine> m_SubFolders;
        FileIterator* m_Master = nullptr;
        SubFileCursor* m_Child = nullptr;
        Chaine m_Path;
        int m_Depth = -1;
        int m_Index = 0;
    };

    FileIterator();
    virtual ~FileIterator() = default;
    FileIterator(const FileIterator&) = delete;
    FileIterator& operator=(const FileIterator&) = delete;

    // Returns the old root.
    Chaine SetRoot(const Chaine& root);
    // 0 walks the root's folder only; -1 has no limit.
    void SetMaxDepth(int depth) { m_Cursor.SetDepth(depth); }
    void DontRecurse() { SetMaxDepth(0); }
    // Holds for the next walk only: the end of a walk clears it.
    void ExcludeHidden() { m_Flags |= ExcludeHiddenFlag; }
    // Folders are delivered too; with `filterNames`, only those whose names
    // pass the name filters (the walk goes through all of them).
    void IncludeFolders(bool filterNames);
    // "*.*" brings "*" with it, so that names without a dot match.
    void AddNameInclude(const Chaine& pattern);
    void AddNameExclude(const Chaine& pattern);
    // A path include limits the folders whose entries are delivered; a path
    // exclusion stops a folder and everything below it.
    void AddPathInclude(const Chaine& pattern) { m_PathInclude.Add(pattern); }
    void AddPathExclude(const Chaine& pattern) { m_PathExclude.Add(pattern); }
    void ResetFilters();

    bool GetFirst();
    bool GetFirst(const Chaine& root);
    bool GetNext();
    void Close();
    // The whole walk, as full paths; the walk is then closed.
    PTableau<Chaine> GetFiles();

    Chaine FileName() const { return m_FindData.cFileName; }
    // The folder of the current entry.
    Chaine Path() const { return m_Cursor.Deepest()->Path(); }
    Chaine PathName() const { return PathJoin(Path(), FileName()); }
    nvk::os::WIN32_FIND_DATAA GetFileInfos() const { return m_FindData; }
    unsigned long CurrentAttributes() const { return m_FindData.dwFileAttributes; }
    bool CurrentIsFolder() const {
        return (m_FindData.dwFileAttributes & nvk::os::FILE_ATTRIBUTE_DIRECTORY) != 0;
    }
    bool CurrentIsHidden() const {
        return (m_FindData.dwFileAttributes & nvk::os::FILE_ATTRIBUTE_HIDDEN) != 0;
    }

protected:
    // `path` is the parent folder; m_FindData holds the folder itself. False
    // keeps the folder from delivery and from the walk.
    virtual bool CheckFolder(const Chaine& path) const;
    // `path` is the file's folder.
    virtual bool CheckFile(const Chaine& path, const nvk::os::WIN32_FIND_DATAA& data) const;

    bool CheckFileName(const Chaine& name, const Chaine& alternateName) const;
    bool CheckPathInclude(const Chaine& path) const;
    bool CheckPathExclude(const Chaine& path) const;

    nvk::os::WIN32_FIND_DATAA m_FindData{};
    PTableau<Chaine> m_NameInclude;
    PTableau<Chaine> m_NameExclude;
    PTableau<Chaine> m_PathInclude;
    PTableau<Chaine> m_PathExclude;
    SubFileCursor m_Cursor;
    Chaine m_Root;
    unsigned m_Flags = FilesFirstFlag;
};
