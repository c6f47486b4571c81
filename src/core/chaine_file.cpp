// The string logic of file names: splitting, joining, normalising and making
// valid names. Nothing here asks the file system.
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "nvk/core/chaine.h"

namespace {

// The string rules work on views of the text, so that normalising a long path
// copies nothing per component.
using Text = std::string_view;

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

bool EndsComponent(char c) {
    return IsSeparator(c) || c == ':';
}

// The last "\", "/" or ":", or -1.
int LastBreak(Text path) {
    for (int i = static_cast<int>(path.size()) - 1; i >= 0; --i) {
        if (EndsComponent(path[i])) {
            return i;
        }
    }
    return -1;
}

bool IsDot(Text name) {
    return name == ".";
}

bool IsDotDot(Text name) {
    return name == "..";
}

// Where SplitRoot cuts a path.
enum class RootKind {
    None,       // no root: a relative path, or "\\server" alone
    Prefix,     // the first `length` characters
    Whole,      // "\\server\share": the whole path, with a "\" added
    Separator,  // one leading separator: the root "\"
};
struct Root {
    RootKind kind;
    int length;
};

Root FindRoot(Text path) {
    const int length = static_cast<int>(path.size());
    if (length == 0) {
        return {RootKind::None, 0};
    }
    if (length >= 2 && IsSeparator(path[0]) && path[1] == path[0]) {
        int server = 2;
        while (server < length && !IsSeparator(path[server])) {
            ++server;
        }
        if (server == length) {
            return {RootKind::None, 0};
        }
        int share = server + 1;
        while (share < length && !IsSeparator(path[share])) {
            ++share;
        }
        return share == length ? Root{RootKind::Whole, length} : Root{RootKind::Prefix, share + 1};
    }
    if (IsSeparator(path[0])) {
        return {RootKind::Separator, 1};
    }
    if (length >= 2 && path[1] == ':') {
        return {RootKind::Prefix, length >= 3 && IsSeparator(path[2]) ? 3 : 2};
    }
    return {RootKind::None, 0};
}

bool IsRoot(Text path) {
    const Root root = FindRoot(path);
    return root.kind == RootKind::Whole ||
           (root.kind == RootKind::Prefix && root.length == static_cast<int>(path.size()));
}

bool IsAbsolute(Text path) {
    return path.size() >= 2 && ((path[0] == '\\' && path[1] == '\\') ||
                                (path[1] == ':' && path.size() >= 3 && path[2] == '\\'));
}

// The length of GetFolder: without the last component and its separator,
// unless that leaves a root, which keeps its separator.
int FolderLength(Text path) {
    const int last = LastBreak(path);
    if (last < 0 || IsRoot(path)) {
        return 0;
    }
    return IsRoot(path.substr(0, last + 1)) ? last + 1 : last;
}

Text FileName(Text path) {
    const int last = LastBreak(path);
    if (last < 0) {
        return path;
    }
    return IsRoot(path) ? Text() : path.substr(last + 1);
}

// PathJoin for a name, which holds no separator.
void JoinName(std::string& path, Text name) {
    if (!path.empty() && !EndsComponent(path.back())) {
        path += '\\';
    }
    path += name;
}

// One step of normalising, from the head of a path towards its tail: `path`
// is the folder, already normal, and `name` comes behind it.
void AddName(std::string& path, Text name) {
    if (IsDot(name)) {
        return;
    }
    if (!IsDotDot(name) || path.empty() || IsDotDot(FileName(path))) {
        JoinName(path, name);
        return;
    }
    // ".." stops at a root, as the system's own canonicalisation does: taking
    // it further would drop the root and leave a relative path, which then
    // resolves against the current folder, a place the caller never named. A
    // drive without its separator ("c:") names that drive's current folder,
    // whose parent is written as such.
    if (IsRoot(path) || path == "\\") {
        if (path.size() == 2 && path[1] == ':') {
            JoinName(path, name);
        }
        return;
    }
    const int folder = FolderLength(path);
    if (folder == 0 && path[0] == '\\') {
        path = "\\";  // the root of "\\a"
    } else {
        path.resize(static_cast<std::size_t>(folder));
    }
}

}  // namespace

bool Chaine::IsAbsolutePath() const {
    return IsAbsolute(Text(m_pText, Length()));
}

bool Chaine::IsRootPath() const {
    return IsRoot(Text(m_pText, Length()));
}

void Chaine::SplitRoot(Chaine& root, Chaine& rest) const {
    const Root found = FindRoot(Text(m_pText, Length()));
    // Out of this value first: `root` or `rest` may be this value.
    Chaine whole(*this);
    rest.Empty();
    root.Empty();
    switch (found.kind) {
        case RootKind::None:
            break;
        case RootKind::Whole:
            root = whole + '\\';
            break;
        case RootKind::Separator:
            root = "\\";
            rest = whole.Left(1);
            break;
        case RootKind::Prefix:
            root = whole.Left(found.length);
            rest = whole.Mid(found.length);
            break;
    }
}

Chaine Chaine::GetRoot() const {
    Chaine root;
    Chaine rest;
    SplitRoot(root, rest);
    return root;
}

Chaine Chaine::GetFileName() const {
    const Text path(m_pText, Length());
    const Text name = FileName(path);
    if (name.size() == path.size()) {
        return *this;
    }
    return Chaine(name.data(), static_cast<int>(name.size()));
}

Chaine Chaine::GetExtension() const {
    for (int i = Length() - 1; i >= 0 && !EndsComponent(m_pText[i]); --i) {
        if (m_pText[i] == '.') {
            return IsRootPath() ? Chaine() : Mid(i + 1);
        }
    }
    return {};
}

Chaine Chaine::GetFolder() const {
    return Left(FolderLength(Text(m_pText, Length())));
}

Chaine Chaine::GetFolderSlash() const {
    const int last = LastBreak(Text(m_pText, Length()));
    return last < 0 || IsRootPath() ? Chaine() : Left(last + 1);
}

Chaine& Chaine::RemoveTrailingSlash() {
    if (!IsRootPath()) {
        TrimRight('\\');
        TrimRight('/');
    }
    return *this;
}

Chaine PathJoin(const Chaine& head, const Chaine& tail) {
    const bool tailSeparated = !tail.IsEmpty() && IsSeparator(tail[0]);
    const bool headSeparated = !head.IsEmpty() && EndsComponent(head[head.Length() - 1]);
    if (tailSeparated && headSeparated) {
        return head + tail.Mid(1);
    }
    if (!tailSeparated && !head.IsEmpty() && !headSeparated) {
        return head + '\\' + tail;
    }
    return head + tail;
}

Chaine& Chaine::AppendPath(const Chaine& tail) {
    return Assign(PathJoin(*this, tail));
}

Chaine& Chaine::CombinePath(const Chaine& tail) {
    if (tail.IsEmpty()) {
        return *this;
    }
    if (tail.IsAbsolutePath()) {
        Assign(tail);
    } else if (tail[0] == '\\') {
        Assign(PathJoin(GetRoot(), tail));
    } else {
        AppendPath(tail);
    }
    return NormalizePath();
}

Chaine operator/(const Chaine& head, const Chaine& tail) {
    Chaine path(head);
    path.CombinePath(tail);
    return path;
}

Chaine& Chaine::MakeAbsolute() {
    if (IsAbsolutePath()) {
        return *this;
    }
    Chaine current;
    current.GetCurrentFolder();
    Assign(PathJoin(m_pText[0] == '\\' ? current.GetRoot() : current, *this));
    return NormalizePath();
}

// The folder is normal before its last name is taken, dropped, or cancelled
// with the folder's own last name. The folders are walked from the tail to
// the first one that resolves alone (a root, a name on an absolute root, or
// a first name), and the names are then added from the head, in one buffer:
// a path of any length takes memory in proportion to its length.
Chaine& Chaine::NormalizePath() {
    const Text path(m_pText, Length());
    std::vector<int> ends;  // the folders still to resolve, the whole path first
    std::string normal;
    for (int end = static_cast<int>(path.size());;) {
        const Text value = path.substr(0, end);
        if (IsRoot(value)) {
            normal = value;
            break;
        }
        const int parent = FolderLength(value);
        const Text folder = path.substr(0, parent);
        if (IsRoot(folder) && IsAbsolute(value)) {
            // Nothing lies above a root.
            normal = folder;
            const Text name = FileName(value);
            if (!IsDot(name) && !IsDotDot(name)) {
                JoinName(normal, name);
            }
            break;
        }
        ends.push_back(end);
        if (parent == 0) {
            if (!value.empty() && value[0] == '\\') {
                normal = "\\";
            }
            break;
        }
        end = parent;
    }
    for (auto end = ends.rbegin(); end != ends.rend(); ++end) {
        AddName(normal, FileName(path.substr(0, *end)));
    }
    return Assign(normal.data(), static_cast<int>(normal.size()));
}

Chaine& Chaine::MakeValidFileName(bool checkDevices) {
    RemoveChar(0);
    Replace("\r\r\n", " ");
    Replace("\r\n", " ");
    ReplaceChar('\r', ' ');
    ReplaceChar('\n', ' ');
    ReplaceChar('\t', ' ');
    // The control characters and those a name can't hold.
    static const char kForbidden[] = {1,   2,   3,   4,    5,   6,   7,   8,  9,  10,  11,
                                      12,  13,  14,  15,   16,  17,  18,  19, 20, 21,  22,
                                      23,  24,  25,  26,   27,  28,  29,  30, 31, '<', '>',
                                      ':', '"', '/', '\\', '|', '?', '*', 0};
    RemoveSet(kForbidden);
    TrimLeft(' ');
    TrimRight(" .");
    if (!checkDevices) {
        return *this;
    }
    if (IsEmpty()) {
        return Assign("_");
    }
    bool device =
        EqualsNoCase("CON") || EqualsNoCase("PRN") || EqualsNoCase("AUX") || EqualsNoCase("NUL");
    if ((StartsWithNoCase("COM") || StartsWithNoCase("LPT")) && Length() == 4 &&
        m_pText[3] >= '1' && m_pText[3] <= '9') {
        device = true;
    }
    if (device) {
        *this += '_';
    }
    return *this;
}

bool Chaine::IsValidFileName() const {
    return !IsEmpty() && std::strpbrk(GetFileName(), "\\/:*?\"<>|") == nullptr;
}
