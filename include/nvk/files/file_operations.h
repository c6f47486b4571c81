// Free functions over files, folders, disks, the shell and the registry that
// every application of the family uses: backup rotation, copying and deleting
// trees, tests of paths that also hold for drive roots and shares, free disk
// space, and the choice of a folder. They keep no state and throw nothing;
// unless told otherwise 0 is failure and anything else success.
//
// The tree operations never follow a symbolic link: a link is copied or
// removed as a link, its target left as it is, and never walked or counted.
#pragma once

#include "nvk/afx/cstring.h"
#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

class CStringArray;

// Keeps up to `count` copies "FILE.0.bak" (the oldest) to "FILE.<count-1>.bak"
// (the latest), beside the file or, with bit 0 of `flags`, in a "Backups"
// folder beside it; when all are taken the oldest goes and the others move
// down one. A missing file or a `count` of 0 is 1: nothing to do.
NVKUTIL_EXPORT int BackupFile(const char* file, unsigned long flags, unsigned int count);
// Whether the two names, made long, are the same without regard to case.
NVKUTIL_EXPORT int AreEqualsFiles(const char* first, const char* second);
// `names` is a list separated by line feeds. 0 if one of them exists in
// `folder` and `ask` is 0, or the user answers no to overwriting it.
NVKUTIL_EXPORT int CheckFiles(const char* names, const char* folder, int ask);
// Copies the content of `from` into the existing folder `to`. A hidden folder
// "_sgvault" or "_sgbak" stays behind. A subfolder that already exists in the
// target stops the copy, and `failIfExists` holds for the top level only;
// what was copied before a failure stays.
NVKUTIL_EXPORT int CopyDirectory(const Chaine& from, const Chaine& to, int failIfExists);
// The files of `from` that match `pattern` into `to`, overwriting; no match
// is success.
NVKUTIL_EXPORT int CopyFiles(const char* pattern, const char* from, const char* to);
// Everything below `path`, read-only files too, then with `removeRoot` the
// folder itself; a path that does not exist leaves nothing to do, 1.
NVKUTIL_EXPORT int DelTree(const char* path, bool removeRoot);
// The longest file name of the path's volume; 8 when it can't be known.
NVKUTIL_EXPORT unsigned long GetDirectoryMaxNamesSize(const char* path);
// The sum of the low 32 bits of every file's size below `path`, wrapping.
NVKUTIL_EXPORT unsigned int GetDirectorySize(const Chaine& path);
// Free and total space of the path's volume, each output optional.
NVKUTIL_EXPORT int GetDiskSpace(const char* path, nvk::os::ULARGE_INTEGER* freeToCaller,
                                nvk::os::ULARGE_INTEGER* total, nvk::os::ULARGE_INTEGER* totalFree);
NVKUTIL_EXPORT int GetDiskSpace(const char* path, unsigned long long* freeToCaller,
                                unsigned long long* total, unsigned long long* totalFree);
// The space by the newer call, on systems that have it; 0 on older ones.
NVKUTIL_EXPORT int SafeGetDiskFreeSpaceEx(const char* path, nvk::os::ULARGE_INTEGER* freeToCaller,
                                          nvk::os::ULARGE_INTEGER* total,
                                          nvk::os::ULARGE_INTEGER* totalFree);
// MoveFileExA, with MOVEFILE_REPLACE_EXISTING done by hand on older systems.
NVKUTIL_EXPORT int SafeMoveFileEx(const char* from, const char* to, unsigned long flags);
// The name after the last "\", "/" or ":", copied to `out` when given; the
// result is its length plus 1 whether it fitted or not.
NVKUTIL_EXPORT unsigned int GetFileName(const char* path, char* out, unsigned int size);
// The text up to and including that separator; its length.
NVKUTIL_EXPORT unsigned int GetPathName(const char* path, char* out, unsigned int size);
// 0 for a file that is not found.
NVKUTIL_EXPORT unsigned int GetFileSize(const Chaine& path);
NVKUTIL_EXPORT unsigned long long GetLongFileSize(const Chaine& path);
// 1 for a folder, and without a look at the disk for a path that ends in "\"
// or is a drive alone ("C:").
NVKUTIL_EXPORT int IsDirectory(const char* path);
// 1 for files, folders, drive roots and shares.
NVKUTIL_EXPORT int IsFileExist(const char* path);
// Both 1 for an empty path, and 0 for one that can't be searched.
NVKUTIL_EXPORT int HasSubDirectories(const Chaine& path);
NVKUTIL_EXPORT int IsDirectoryEmpty(const Chaine& path);
// Each component after the drive as the folder spells it. The result is the
// length; `out` holds the name only when it is below `size`.
NVKUTIL_EXPORT unsigned int TranslateIntoLongName(const char* path, char* out, unsigned int size);
// Moves a file to the desktop's trash, or with `permanent` deletes it. A name
// that needs 520 bytes or more with its two terminating zeros is refused
// with 0: the copy the shell is handed has no room for it, and a refusal
// serves the caller better than the end of the process.
NVKUTIL_EXPORT int RecycleFile(const char* path, int permanent);
// `name`, which may hold wildcards, in `folder`: each match by a call of its
// own.
NVKUTIL_EXPORT int RecycleFiles(const char* folder, const char* name, int permanent);

// The root of the folder browser: desktop, application data, favourites,
// computer, network, printers.
using SpeFolder = int;
// Bits 0-2 of `flags` choose the mode (1 computers, 2 printers, otherwise
// folders); bit 3 shows files too. With `requiredFile`, OK is enabled only on
// a folder that holds it. The chosen path, or empty.
NVKUTIL_EXPORT Chaine SelectFolder(const CString& title, const CString& startFolder, int flags,
                                   SpeFolder root, const CString& requiredFile);
// Deletes `key` below `parent` with all its subkeys, from the leaves up.
NVKUTIL_EXPORT long RegRecurseDeleteKey(nvk::os::HKEY parent, const char* key);
// The names of the subkeys (`keys` set) or values of `key` below the
// application's registry key, into `out` by their place; true when `out`
// holds any string, also one it held before.
NVKUTIL_EXPORT int LoadValueList(const char* key, CStringArray& out, int keys);
