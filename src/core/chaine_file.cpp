// The string logic of file names: splitting, joining, normalising and making
// valid names. Nothing here asks the file system.
#include <cstring>

#include "nvk/core/chaine.h"

namespace {

bool IsSeparator(char c) {
    return c == '\\' || c == '/';
}

bool EndsComponent(char c) {
    return IsSeparator(c) || c == ':';
}

// The last "\", "/" or ":", or -1.
int LastBreak(const Chaine& path) {
    for (int i = path.Length() - 1; i >= 0; --i) {
        if (EndsComponent(path[i])) {
            return i;
        }
    }
    return -1;
}

bool IsDot(const Chaine& name) {
    return name == ".";
}

bool IsDotDot(const Chaine& name) {
    return name == "..";
}

}  // namespace

bool Chaine::IsAbsolutePath() const {
    return Length() >= 2 && ((m_pText[0] == '\\' && m_pText[1] == '\\') ||
                             (m_pText[1] == ':' && m_pText[2] == '\\'));
}

bool Chaine::IsRootPath() const {
    Chaine root;
    Chaine rest;
    SplitRoot(root, rest);
    return !root.IsEmpty() && rest.IsEmpty();
}

void Chaine::SplitRoot(Chaine& root, Chaine& rest) const {
    rest.Empty();
    root.Empty();
    const int length = Length();
    if (length == 0) {
        return;
    }
    if (length >= 2 && IsSeparator(m_pText[0]) && m_pText[1] == m_pText[0]) {
        int server = 2;
        while (server < length && !IsSeparator(m_pText[server])) {
            ++server;
        }
        if (server == length) {
            return;
        }
        int share = server + 1;
        while (share < length && !IsSeparator(m_pText[share])) {
            ++share;
        }
        if (share == length) {
            root = *this + '\\';
        } else {
            root = Left(share + 1);
            rest = Mid(share + 1);
        }
    } else if (IsSeparator(m_pText[0])) {
        root = "\\";
        rest = Left(1);
    } else if (length >= 2 && m_pText[1] == ':') {
        const int split = length >= 3 && IsSeparator(m_pText[2]) ? 3 : 2;
        root = Left(split);
        rest = Mid(split);
    }
}

Chaine Chaine::GetRoot() const {
    Chaine root;
    Chaine rest;
    SplitRoot(root, rest);
    return root;
}

Chaine Chaine::GetFileName() const {
    const int last = LastBreak(*this);
    if (last < 0) {
        return *this;
    }
    return IsRootPath() ? Chaine() : Mid(last + 1);
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
    const int last = LastBreak(*this);
    if (last < 0 || IsRootPath()) {
        return {};
    }
    Chaine head = Left(last + 1);
    return head.IsRootPath() ? head : Left(last);
}

Chaine Chaine::GetFolderSlash() const {
    const int last = LastBreak(*this);
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

// From the tail towards the head: the folder is normalised first, then the
// last name is taken, dropped, or cancelled with the folder's own last name.
Chaine& Chaine::NormalizePath() {
    if (IsRootPath()) {
        return *this;
    }
    Chaine parent = GetFolder();
    if (parent.IsRootPath() && IsAbsolutePath()) {
        Chaine name = GetFileName();
        // Nothing lies above a root.
        return Assign(IsDot(name) || IsDotDot(name) ? parent : PathJoin(parent, name));
    }
    if (!parent.IsEmpty()) {
        parent.NormalizePath();
    } else if (m_pText[0] == '\\') {
        parent = "\\";
    }
    Chaine name = GetFileName();
    if (IsDotDot(name) && !parent.IsEmpty() && !IsDotDot(parent.GetFileName())) {
        return Assign(parent.GetFolder());
    }
    if (IsDot(name)) {
        return Assign(parent);
    }
    return Assign(PathJoin(parent, name));
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
