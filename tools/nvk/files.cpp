// nvk find, backup, tree and trash: walks, backups, copies, deletions and
// recycling of files and trees.
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "cli.h"
#include "native_path.h"
#include "nvk/files/file_iterator.h"
#include "nvk/files/file_operations.h"
#include "os/api/file_attributes.h"
#include "os/api/path_map.h"
#include "progress.h"

namespace nvk::tool {
namespace {

namespace os = nvk::os;

// A path as the user gave it, and as the library takes it: a native path
// ("/srv/data", "notes") becomes the drive form the library works in, and
// the library's paths below it are shown in the user's form again.
class UserPath {
public:
    explicit UserPath(const std::string& given) : m_Given(given) {
        const bool windows = (given.size() >= 2 && given[1] == ':') || given.starts_with("\\\\") ||
                             (given.starts_with("<") && given.ends_with(">"));
        m_Native = !windows;
        if (m_Native) {
            std::error_code ignored;
            const std::string absolute =
                std::filesystem::absolute(NativeFromAnsi(given), ignored).string();
            m_Library = os::ToWindowsPath(absolute.c_str()).c_str();
        } else {
            m_Library = given.c_str();
        }
    }

    const Chaine& Library() const { return m_Library; }
    // A path of the library in the user's form: below this one, by the
    // user's own spelling of it; elsewhere, as the native path.
    std::string Show(const Chaine& path) const {
        const std::string text = path.c_str();
        if (!m_Native) {
            return text;
        }
        const std::string library = m_Library.c_str();
        const bool below =
            text.starts_with(library) && (text.size() == library.size() ||
                                          text[library.size()] == '\\' || library.ends_with("\\"));
        if (!below) {
            return AnsiFromNative(os::ToNativePath(text.c_str()));
        }
        std::string rest = text.substr(library.size());
        if (rest.starts_with("\\")) {
            rest.erase(0, 1);
        }
        if (rest.empty()) {
            return m_Given;
        }
        for (char& c : rest) {
            c = c == '\\' ? '/' : c;
        }
        return m_Given + (m_Given.ends_with("/") ? "" : "/") + rest;
    }

private:
    std::string m_Given;
    Chaine m_Library;
    bool m_Native = false;
};

bool IsFolder(const Chaine& path) {
    const os::DWORD attributes = os::GetFileAttributesA(path);
    return attributes != os::INVALID_FILE_ATTRIBUTES &&
           (attributes & os::FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool Exists(const Chaine& path) {
    return os::GetFileAttributesA(path) != os::INVALID_FILE_ATTRIBUTES;
}

// Every value of a repeatable "--name VALUE", taken out of the arguments.
std::vector<std::string> TakeAll(Args& args, std::string_view name) {
    std::vector<std::string> values;
    for (auto it = args.begin(); it != args.end();) {
        if (*it == name && it + 1 != args.end()) {
            values.push_back(*(it + 1));
            it = args.erase(it, it + 2);
        } else {
            ++it;
        }
    }
    return values;
}

int Find(const Args& given);
int Backup(const Args& given);
int TreeCopy(const Args& given);
int TreeDelete(const Args& given);
int TreeSize(const Args& given);
int TreeEmpty(const Args& given);
int Trash(const Args& given);

const Command kFind[] = {
    {"find",
     "ROOT [--include PAT]... [--exclude PAT]... [--path-include PAT]... [--path-exclude PAT]... "
     "[--depth N] [--folders] [--filter-folders] [--no-hidden] [--null]",
     "walks ROOT and prints one full path a line, in the walk's order", Find,
     "In each folder its files come first, then its folders (with --folders, or\n"
     "--filter-folders to pass their names through the name patterns too), then\n"
     "what lies below each folder. Name patterns test names, path patterns the\n"
     "folder's path: a path exclusion stops a folder and all below it, a path\n"
     "include only limits the folders whose entries are printed. Patterns know\n"
     "* ? # [a-z] [!a] and ` before a plain character, without regard to case.\n"
     "--depth 0 stays in ROOT. ROOT \"<HardDrives>\" or \"<LocalDrives>\" walks the\n"
     "drives. Links are printed but never entered. Paths are the file system's\n"
     "bytes; --null ends them with a zero byte instead of a line feed.\n"
     "Exit 0 when something was printed, 1 when nothing matched."}};

const Command kBackup[] = {
    {"backup", "FILE [--count N] [--in-backups]",
     "copies FILE to FILE.<n>.bak, keeping the last N copies (5 by default)", Backup,
     "The oldest copy is FILE.0.bak and the newest FILE.<N-1>.bak; when all N are\n"
     "taken the oldest goes and the others move down one. --in-backups keeps them\n"
     "in a \"Backups\" folder beside FILE. Prints the copy just made."}};

const Command kTree[] = {
    {"copy", "FROM TO", "copies the content of FROM into TO, made if missing", TreeCopy,
     "Files at the top of TO are written over; a folder that exists already in\n"
     "TO stops the copy, and what was copied stays. Links are copied as links."},
    {"delete", "PATH [--keep-root]",
     "deletes PATH with everything in it, or with --keep-root only what it holds", TreeDelete,
     "Read-only files go too; links are removed, never followed."},
    {"size", "PATH", "prints the size of all files below PATH, modulo 2^32", TreeSize},
    {"empty", "PATH", "tells whether the folder PATH is empty", TreeEmpty,
     "Prints \"empty\" (exit 0) or \"not empty\" (exit 1)."},
};

const Command kTrash[] = {
    {"trash", "PATH...", "moves files or folders to the desktop's trash", Trash,
     "They show in the file manager's trash and can be restored from there."}};

int Find(const Args& given) {
    Args args = given;
    FileIterator walk;
    for (const std::string& pattern : TakeAll(args, "--include")) {
        walk.AddNameInclude(pattern.c_str());
    }
    for (const std::string& pattern : TakeAll(args, "--exclude")) {
        walk.AddNameExclude(pattern.c_str());
    }
    for (const std::string& pattern : TakeAll(args, "--path-include")) {
        walk.AddPathInclude(pattern.c_str());
    }
    for (const std::string& pattern : TakeAll(args, "--path-exclude")) {
        walk.AddPathExclude(pattern.c_str());
    }
    const std::string depth = TakeOption(args, "--depth", "-1");
    const bool folders = TakeFlag(args, "--folders");
    const bool filterFolders = TakeFlag(args, "--filter-folders");
    const bool noHidden = TakeFlag(args, "--no-hidden");
    const char end = TakeFlag(args, "--null") ? '\0' : '\n';
    if (!Expect(args, 1, 1, kFind[0])) {
        return kFailure;
    }
    long long levels = 0;
    if (!ParseLong(depth, levels) || levels < -1 || levels > 100000) {
        return Fail("not a depth: " + depth);
    }
    const UserPath root(args[0]);
    if (!root.Library().Like("<*>") && !IsFolder(root.Library())) {
        return Fail("not a folder: " + args[0]);
    }
    walk.SetMaxDepth(static_cast<int>(levels));
    if (folders || filterFolders) {
        walk.IncludeFolders(filterFolders);
    }
    if (noHidden) {
        walk.ExcludeHidden();
    }
    bool any = false;
    for (bool more = walk.GetFirst(root.Library()); more; more = walk.GetNext()) {
        std::cout << root.Show(walk.PathName()) << end;
        any = true;
    }
    return any ? kOk : kNegative;
}

int Backup(const Args& given) {
    Args args = given;
    const std::string count = TakeOption(args, "--count", "5");
    const bool inBackups = TakeFlag(args, "--in-backups");
    if (!Expect(args, 1, 1, kBackup[0])) {
        return kFailure;
    }
    long long copies = 0;
    if (!ParseLong(count, copies) || copies < 1 || copies > 10000) {
        return Fail("not a count of copies: " + count);
    }
    const UserPath file(args[0]);
    if (!Exists(file.Library()) || IsFolder(file.Library())) {
        return Fail("no such file: " + args[0]);
    }
    // The copy about to be made: the first free number, or after the
    // rotation the last.
    const Chaine folder =
        inBackups ? PathJoin(file.Library().GetFolder(), "Backups") : file.Library().GetFolder();
    const Chaine base = PathJoin(folder, file.Library().GetFileName());
    long long target = 0;
    Chaine name;
    while (target < copies && Exists(name.Format("%s.%lld.bak", base.c_str(), target))) {
        ++target;
    }
    name.Format("%s.%lld.bak", base.c_str(), target < copies ? target : copies - 1);
    if (!BackupFile(file.Library(), inBackups ? 1 : 0, static_cast<unsigned int>(copies))) {
        return Fail("cannot back up " + args[0]);
    }
    std::cout << file.Show(name) << '\n';
    return kOk;
}

int TreeCopy(const Args& args) {
    if (!Expect(args, 2, 2, kTree[0])) {
        return kFailure;
    }
    const UserPath from(args[0]);
    const UserPath to(args[1]);
    if (!IsFolder(from.Library())) {
        return Fail("not a folder: " + args[0]);
    }
    if (!IsFolder(to.Library()) && !MakeDirectoryPath(to.Library(), nullptr)) {
        return Fail("cannot make the folder " + args[1]);
    }
    int copied = 0;
    RunWithProgress("copying", [&] { copied = CopyDirectory(from.Library(), to.Library(), 0); });
    return copied ? kOk
                  : Fail("the copy stopped: a folder of " + args[0] + " exists in " + args[1] +
                         ", or a file could not be copied");
}

int TreeDelete(const Args& given) {
    Args args = given;
    const bool keepRoot = TakeFlag(args, "--keep-root");
    if (!Expect(args, 1, 1, kTree[1])) {
        return kFailure;
    }
    const UserPath path(args[0]);
    if (!IsFolder(path.Library())) {
        return Fail("not a folder: " + args[0]);
    }
    int deleted = 0;
    RunWithProgress("deleting", [&] { deleted = DelTree(path.Library(), !keepRoot); });
    return deleted ? kOk : Fail("cannot delete everything in " + args[0]);
}

int TreeSize(const Args& args) {
    if (!Expect(args, 1, 1, kTree[2])) {
        return kFailure;
    }
    const UserPath path(args[0]);
    if (!IsFolder(path.Library())) {
        return Fail("not a folder: " + args[0]);
    }
    unsigned int size = 0;
    RunWithProgress("measuring", [&] { size = GetDirectorySize(path.Library()); });
    std::cout << size << '\n';
    return kOk;
}

int TreeEmpty(const Args& args) {
    if (!Expect(args, 1, 1, kTree[3])) {
        return kFailure;
    }
    const UserPath path(args[0]);
    if (!IsFolder(path.Library())) {
        return Fail("not a folder: " + args[0]);
    }
    const bool empty = IsDirectoryEmpty(path.Library()) != 0;
    std::cout << (empty ? "empty" : "not empty") << '\n';
    return empty ? kOk : kNegative;
}

int Trash(const Args& args) {
    if (!Expect(args, 1, 100000, kTrash[0])) {
        return kFailure;
    }
    for (const std::string& given : args) {
        const UserPath path(given);
        if (!Exists(path.Library())) {
            return Fail("no such file or folder: " + given);
        }
        if (!RecycleFile(path.Library(), 0)) {
            return Fail("cannot move " + given + " to the trash");
        }
    }
    return kOk;
}

const RegisterArea kFindArea({"find", "walks a folder tree with name and path filters", kFind,
                              nullptr, 40});
const RegisterArea kBackupArea({"backup", "keeps numbered backup copies of a file", kBackup,
                                nullptr, 41});
const RegisterArea kTreeArea({"tree", "copies, deletes and measures folder trees", kTree, nullptr,
                              42});
const RegisterArea kTrashArea({"trash", "moves files to the desktop's trash", kTrash, nullptr, 43});

}  // namespace
}  // namespace nvk::tool
