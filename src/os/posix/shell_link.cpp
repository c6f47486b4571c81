// The shell link object of the POSIX backend: the link's fields in memory,
// loaded from and saved to link files (see shell_link_format.h), with a
// desktop entry beside the links of the user's desktop and applications
// folders.
#include "os/api/shell_link.h"

#include <sys/stat.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "os/api/directory.h"
#include "os/api/error.h"
#include "os/api/file_attributes.h"
#include "os/api/nls.h"
#include "os/api/path_map.h"
#include "os/api/shell_folder.h"
#include "os/posix/code_page.h"
#include "os/posix/command_line.h"
#include "os/posix/desktop_entry.h"
#include "os/posix/fs_support.h"
#include "os/posix/handle.h"
#include "os/posix/shell_link_format.h"

namespace nvk::os {

namespace {

namespace fs = std::filesystem;
using posix::LinkData;

std::string AnsiFromWide(LPCOLESTR text) {
    const int size = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 1) {
        return {};
    }
    std::string out(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, -1, out.data(), size, nullptr, nullptr);
    out.pop_back();
    return out;
}

std::string FullPath(const std::string& path) {
    char full[MAX_PATH * 4];
    const DWORD length = GetFullPathNameA(path.c_str(), sizeof full, full, nullptr);
    return length > 0 && length < sizeof full ? std::string(full, length) : path;
}

// Copies as lstrcpynA does: at most size - 1 characters and a terminator.
void CopyOut(const std::string& text, LPSTR out, int size) {
    if (out == nullptr || size <= 0) {
        return;
    }
    const std::size_t count = std::min(text.size(), static_cast<std::size_t>(size - 1));
    std::memcpy(out, text.data(), count);
    out[count] = '\0';
}

// A Windows command line, each argument quoted where the C runtime of
// Windows programs needs it to split it back.
std::string JoinArguments(const std::vector<std::string>& arguments) {
    std::string line;
    for (const std::string& argument : arguments) {
        if (!line.empty()) {
            line += ' ';
        }
        if (!argument.empty() && argument.find_first_of(" \t\"") == std::string::npos) {
            line += argument;
            continue;
        }
        line += '"';
        std::size_t slashes = 0;
        for (char c : argument) {
            if (c == '\\') {
                ++slashes;
            } else {
                line.append(c == '"' ? slashes + 1 : 0, '\\');
                slashes = 0;
            }
            line += c;
        }
        line.append(slashes, '\\');
        line += '"';
    }
    return line;
}

std::string NativeFolder(int csidl) {
    char folder[MAX_PATH];
    if (SHGetFolderPathA(nullptr, csidl, nullptr, 0, folder) != S_OK) {
        return {};
    }
    return ToNativePath(folder);
}

bool SameFolder(const fs::path& a, const std::string& b) {
    std::error_code error;
    return !b.empty() && fs::equivalent(a, b, error);
}

// The desktop entry that goes beside a link in the user's desktop or
// applications folder; empty for a link elsewhere.
fs::path CompanionOf(const fs::path& link) {
    const fs::path folder = link.parent_path();
    const std::string applications = NativeFolder(CSIDL_APPDATA);
    if (!SameFolder(folder, NativeFolder(CSIDL_DESKTOP)) &&
        !(applications.empty() ? false : SameFolder(folder, applications + "/applications"))) {
        return {};
    }
    fs::path entry = link;
    entry.replace_extension(".desktop");
    return entry;
}

HRESULT LastErrorResult() {
    return HRESULT_FROM_WIN32(GetLastError());
}

bool WriteFile(const fs::path& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) {
        posix::SetPathError(errno != 0 ? errno : EACCES, path.string());
        return false;
    }
    return true;
}

class ShellLink final : public IShellLinkA, public IPersistFile {
public:
    HRESULT QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        if (iid == IID_IUnknown || iid == IID_IShellLinkA) {
            *object = static_cast<IShellLinkA*>(this);
        } else if (iid == IID_IPersistFile || iid == IID_IPersist) {
            *object = static_cast<IPersistFile*>(this);
        } else {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG AddRef() override { return ++m_References; }
    ULONG Release() override {
        const ULONG left = --m_References;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    HRESULT GetPath(LPSTR file, int size, WIN32_FIND_DATAA* findData, DWORD) override {
        CopyOut(m_Link.Path, file, size);
        if (findData != nullptr) {
            *findData = WIN32_FIND_DATAA{};
            findData->dwFileAttributes = m_Link.FileAttributes;
            findData->ftCreationTime = m_Link.CreationTime;
            findData->ftLastAccessTime = m_Link.AccessTime;
            findData->ftLastWriteTime = m_Link.WriteTime;
            findData->nFileSizeLow = m_Link.FileSize;
            const std::size_t slash = m_Link.Path.find_last_of('\\');
            CopyOut(m_Link.Path.substr(slash == std::string::npos ? 0 : slash + 1),
                    findData->cFileName, MAX_PATH);
        }
        return m_Link.Path.empty() ? S_FALSE : S_OK;
    }
    HRESULT GetIDList(PIDLIST_ABSOLUTE* list) override {
        if (list != nullptr) {
            *list = nullptr;
        }
        return E_NOTIMPL;
    }
    HRESULT SetIDList(PCIDLIST_ABSOLUTE) override { return E_NOTIMPL; }
    HRESULT GetDescription(LPSTR name, int size) override {
        return Get(m_Link.Description, name, size);
    }
    HRESULT SetDescription(LPCSTR name) override { return Set(m_Link.Description, name); }
    HRESULT GetWorkingDirectory(LPSTR dir, int size) override {
        return Get(m_Link.WorkingDirectory, dir, size);
    }
    HRESULT SetWorkingDirectory(LPCSTR dir) override { return Set(m_Link.WorkingDirectory, dir); }
    HRESULT GetArguments(LPSTR args, int size) override {
        return Get(m_Link.Arguments, args, size);
    }
    HRESULT SetArguments(LPCSTR args) override { return Set(m_Link.Arguments, args); }
    HRESULT GetHotkey(WORD* hotkey) override {
        if (hotkey == nullptr) {
            return E_POINTER;
        }
        *hotkey = m_Link.HotKey;
        return S_OK;
    }
    HRESULT SetHotkey(WORD hotkey) override {
        m_Link.HotKey = hotkey;
        m_Dirty = true;
        return S_OK;
    }
    HRESULT GetShowCmd(int* showCmd) override {
        if (showCmd == nullptr) {
            return E_POINTER;
        }
        *showCmd = m_Link.ShowCommand;
        return S_OK;
    }
    HRESULT SetShowCmd(int showCmd) override {
        m_Link.ShowCommand = showCmd;
        m_Dirty = true;
        return S_OK;
    }
    HRESULT GetIconLocation(LPSTR iconPath, int size, int* icon) override {
        if (icon != nullptr) {
            *icon = m_Link.IconIndex;
        }
        return Get(m_Link.IconPath, iconPath, size);
    }
    HRESULT SetIconLocation(LPCSTR iconPath, int icon) override {
        m_Link.IconIndex = icon;
        return Set(m_Link.IconPath, iconPath);
    }
    HRESULT SetRelativePath(LPCSTR path, DWORD) override { return Set(m_Link.RelativePath, path); }
    // Nothing is searched for: a target that is not there stays missing.
    HRESULT Resolve(HWND, DWORD) override {
        if (m_Link.Path.empty()) {
            return E_FAIL;
        }
        return GetFileAttributesA(m_Link.Path.c_str()) != INVALID_FILE_ATTRIBUTES ? S_OK : S_FALSE;
    }
    HRESULT SetPath(LPCSTR file) override {
        if (file == nullptr) {
            return E_INVALIDARG;
        }
        m_Link.Path = *file != '\0' ? FullPath(file) : "";
        const DWORD attributes = GetFileAttributesA(m_Link.Path.c_str());
        m_Link.FileAttributes = attributes != INVALID_FILE_ATTRIBUTES ? attributes : 0;
        m_Dirty = true;
        return S_OK;
    }

    HRESULT GetClassID(CLSID* classId) override {
        if (classId == nullptr) {
            return E_POINTER;
        }
        *classId = CLSID_ShellLink;
        return S_OK;
    }
    HRESULT IsDirty() override { return m_Dirty ? S_OK : S_FALSE; }
    HRESULT Load(LPCOLESTR fileName, DWORD) override {
        if (fileName == nullptr) {
            return E_INVALIDARG;
        }
        const std::string native = ToNativePath(FullPath(AnsiFromWide(fileName)).c_str());
        std::error_code error;
        const fs::file_status status = fs::symlink_status(native, error);
        if (native.empty() || error || !fs::exists(status)) {
            posix::SetPathError(ENOENT, native);
            return LastErrorResult();
        }
        if (fs::is_symlink(status)) {
            return LoadSymbolicLink(native);
        }
        std::ifstream in(native, std::ios::binary);
        const std::string bytes((std::istreambuf_iterator<char>(in)),
                                std::istreambuf_iterator<char>());
        if (!in.good() && !in.eof()) {
            posix::SetPathError(errno != 0 ? errno : EACCES, native);
            return LastErrorResult();
        }
        LinkData link;
        posix::DesktopEntry entry;
        if (posix::ReadShellLink(bytes, link)) {
            m_Link = std::move(link);
        } else if (posix::ReadDesktopEntry(bytes, entry)) {
            m_Link = FromDesktopEntry(entry);
        } else {
            return E_FAIL;
        }
        m_Dirty = false;
        return S_OK;
    }
    HRESULT Save(LPCOLESTR fileName, BOOL) override {
        if (fileName == nullptr) {
            return E_INVALIDARG;
        }
        const std::string native = ToNativePath(FullPath(AnsiFromWide(fileName)).c_str());
        if (native.empty()) {
            posix::SetPathError(ENOENT, native);
            return LastErrorResult();
        }
        const std::vector<unsigned char> bytes = posix::WriteShellLink(m_Link);
        if (!WriteFile(native, std::string(bytes.begin(), bytes.end()))) {
            return LastErrorResult();
        }
        const fs::path companion = CompanionOf(native);
        if (!companion.empty() && !m_Link.Path.empty()) {
            if (!WriteFile(companion, posix::WriteDesktopEntry(ToDesktopEntry(native)))) {
                return LastErrorResult();
            }
            // Desktops launch only the entries that their owner may run.
            ::chmod(companion.c_str(), 0755);
        }
        m_Dirty = false;
        return S_OK;
    }
    HRESULT SaveCompleted(LPCOLESTR) override { return S_OK; }
    HRESULT GetCurFile(LPOLESTR* fileName) override {
        if (fileName != nullptr) {
            *fileName = nullptr;
        }
        return E_NOTIMPL;
    }

private:
    HRESULT Get(const std::string& field, LPSTR out, int size) {
        if (out == nullptr) {
            return E_POINTER;
        }
        CopyOut(field, out, size);
        return S_OK;
    }
    HRESULT Set(std::string& field, LPCSTR value) {
        if (value == nullptr) {
            return E_INVALIDARG;
        }
        field = value;
        m_Dirty = true;
        return S_OK;
    }

    HRESULT LoadSymbolicLink(const std::string& native) {
        std::error_code error;
        fs::path target = fs::read_symlink(native, error);
        if (error) {
            return E_FAIL;
        }
        if (target.is_relative()) {
            target = fs::path(native).parent_path() / target;
        }
        m_Link = LinkData{};
        m_Link.Path = ToWindowsPath(target.lexically_normal().c_str());
        const DWORD attributes = GetFileAttributesA(m_Link.Path.c_str());
        m_Link.FileAttributes = attributes != INVALID_FILE_ATTRIBUTES ? attributes : 0;
        m_Dirty = false;
        return S_OK;
    }

    posix::DesktopEntry ToDesktopEntry(const fs::path& native) const {
        posix::DesktopEntry entry;
        // The name as UTF-8 whatever bytes the file name has.
        entry.Name = posix::Utf8FromAnsi(posix::AnsiFromFileBytes(native.stem().string()));
        entry.Comment = posix::Utf8FromAnsi(m_Link.Description);
        entry.Command.push_back(ToNativePath(m_Link.Path.c_str()));
        if (!m_Link.Arguments.empty()) {
            // The splitter takes a program first.
            std::vector<std::string> arguments = posix::SplitCommandLine("x " + m_Link.Arguments);
            for (std::size_t i = 1; i < arguments.size(); ++i) {
                entry.Command.push_back(posix::Utf8FromAnsi(arguments[i]));
            }
        }
        if (!m_Link.IconPath.empty()) {
            entry.Icon = ToNativePath(m_Link.IconPath.c_str());
        }
        return entry;
    }

    static LinkData FromDesktopEntry(const posix::DesktopEntry& entry) {
        LinkData link;
        link.Path = ToWindowsPath(entry.Command[0].c_str());
        std::vector<std::string> arguments;
        for (std::size_t i = 1; i < entry.Command.size(); ++i) {
            arguments.push_back(posix::AnsiFromFileBytes(entry.Command[i]));
        }
        link.Arguments = JoinArguments(arguments);
        link.Description = posix::AnsiFromFileBytes(entry.Comment);
        if (!entry.Icon.empty()) {
            link.IconPath = entry.Icon[0] == '/' ? ToWindowsPath(entry.Icon.c_str())
                                                 : posix::AnsiFromFileBytes(entry.Icon);
        }
        const DWORD attributes = GetFileAttributesA(link.Path.c_str());
        link.FileAttributes = attributes != INVALID_FILE_ATTRIBUTES ? attributes : 0;
        return link;
    }

    std::atomic<ULONG> m_References{1};
    LinkData m_Link;
    bool m_Dirty = false;
};

}  // namespace

HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID iid,
                         LPVOID* object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (outer != nullptr) {
        return CLASS_E_NOAGGREGATION;
    }
    if (!(classId == CLSID_ShellLink) || (context & CLSCTX_INPROC_SERVER) == 0) {
        return REGDB_E_CLASSNOTREG;
    }
    auto* link = new ShellLink;
    const HRESULT result = link->QueryInterface(iid, object);
    link->Release();
    return result;
}

BOOL DeleteLinkCompanions(LPCSTR linkFile) {
    if (linkFile == nullptr) {
        return TRUE;
    }
    const std::string native = ToNativePath(FullPath(linkFile).c_str());
    const fs::path companion = native.empty() ? fs::path{} : CompanionOf(native);
    std::error_code error;
    if (!companion.empty() && !fs::remove(companion, error) && error) {
        posix::SetPathError(error.value(), companion.string());
        return FALSE;
    }
    return TRUE;
}

}  // namespace nvk::os
