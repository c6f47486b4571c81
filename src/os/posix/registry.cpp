#include "os/api/registry.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>

#include "os/api/sync.h"
#include "os/common/registry_text.h"
#include "os/posix/code_page.h"
#include "os/posix/environment.h"
#include "os/posix/handle.h"
#include "os/posix/user_folders.h"

namespace nvk::os {

namespace {

using common::NoCaseLess;
using common::RegistryKey;
using common::RegistryValue;

struct Root {
    HKEY key;
    const char* name;
};

const Root kRoots[] = {
    {HKEY_CLASSES_ROOT, "HKEY_CLASSES_ROOT"},     {HKEY_CURRENT_USER, "HKEY_CURRENT_USER"},
    {HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE"},   {HKEY_USERS, "HKEY_USERS"},
    {HKEY_CURRENT_CONFIG, "HKEY_CURRENT_CONFIG"},
};

const Root* RootByName(std::string_view name) {
    name = common::RegistryRootName(name);
    for (const Root& root : kRoots) {
        if (name == root.name) {
            return &root;
        }
    }
    return nullptr;
}

// An open key: its root, the names below it, the key's serial number (0 for
// the root, which is never deleted), and the access it was opened with. The
// key itself lives in the root's file and may go meanwhile.
struct KeyRef {
    const Root* root = nullptr;
    std::vector<std::string> path;
    std::uint64_t serial = 0;
    REGSAM access = KEY_ALL_ACCESS;
};

class OpenKey final : public posix::KernelObject {
public:
    explicit OpenKey(KeyRef ref) : ref(std::move(ref)) {}
    KeyRef ref;
};

bool Resolve(HKEY key, KeyRef& ref) {
    for (const Root& root : kRoots) {
        if (root.key == key) {
            ref = {&root, {}, 0, KEY_ALL_ACCESS};
            return true;
        }
    }
    const OpenKey* open = posix::HandleAs<OpenKey>(key);
    if (open == nullptr) {
        return false;
    }
    ref = open->ref;
    return true;
}

// The names of a subkey path, or the error that refuses it: a leading "\",
// a name over the limit, or a line break, which the registry's text form
// can't hold (the system's documentation asks for printable characters).
LSTATUS SubkeyNames(LPCSTR subKey, std::vector<std::string>& names) {
    std::string_view path = subKey != nullptr ? subKey : "";
    if (path.starts_with('\\')) {
        return ERROR_BAD_PATHNAME;
    }
    names = common::SplitKeyPath(path);
    for (const std::string& name : names) {
        if (name.size() > common::kMaxKeyNameLength ||
            name.find_first_of("\r\n") != std::string::npos) {
            return ERROR_INVALID_PARAMETER;
        }
    }
    return ERROR_SUCCESS;
}

// An absolute folder from the environment, or empty. The one place that
// reads the environment.
std::string FolderVariable(const char* name) {
    std::string value = posix::EnvironmentValue(name);
    return !value.empty() && value[0] == '/' ? value : "";
}

// The folder of the root files: NVK_REGISTRY_DIR, else in the user's
// configuration folder, found from the password database when HOME is unset
// (services, empty environments), never in a folder that all users share.
std::string RegistryFolder() {
    std::string folder = FolderVariable("NVK_REGISTRY_DIR");
    if (!folder.empty()) {
        return folder;
    }
    std::string config = FolderVariable("XDG_CONFIG_HOME");
    if (config.empty()) {
        const std::string home = posix::HomeFolder();
        if (home.empty()) {
            return {};
        }
        config = home + "/.config";
    }
    return config + "/nvk/registry";
}

// Whether the folder is the user's alone: another user who owns it, or may
// write in it, could choose the values read or plant links where files are
// written. A folder that is missing is made with mode 0700 when `make`.
LSTATUS CheckFolder(const std::string& folder, bool make, bool& exists) {
    if (folder.empty()) {
        return ERROR_PATH_NOT_FOUND;
    }
    if (make) {
        std::error_code ignored;
        std::filesystem::create_directories(std::filesystem::path(folder).parent_path(), ignored);
        mkdir(folder.c_str(), 0700);
    }
    struct stat info;
    exists = stat(folder.c_str(), &info) == 0;
    if (!exists) {
        return make ? ERROR_PATH_NOT_FOUND : ERROR_SUCCESS;
    }
    if (!S_ISDIR(info.st_mode) || info.st_uid != geteuid() || (info.st_mode & 022) != 0) {
        return ERROR_ACCESS_DENIED;
    }
    return ERROR_SUCCESS;
}

// The parsed file of one root, read again whenever the file changed: a writer
// replaces the file by a new one, so the identity of the file tells.
struct Hive {
    struct Stamp {
        dev_t device = 0;
        ino_t inode = 0;
        timespec modified = {};
        off_t size = -1;
        bool operator==(const Stamp& other) const {
            return device == other.device && inode == other.inode &&
                   modified.tv_sec == other.modified.tv_sec &&
                   modified.tv_nsec == other.modified.tv_nsec && size == other.size;
        }
    };
    Stamp stamp;
    bool loaded = false;
    // The file holds what the tree lacks: a part that did not read, or
    // another root's sections. Writing the tree would lose it.
    bool damaged = false;
    RegistryKey tree;
};

struct Store {
    std::mutex lock;
    std::map<std::string, Hive> hives;  // by file path
};

Store& TheStore() {
    static auto* store = new Store;  // open keys may be used from static destructors
    return *store;
}

Hive::Stamp StampOf(const struct stat& info) {
    return {info.st_dev, info.st_ino, info.st_mtim, info.st_size};
}

// Keys found again after a reload are the keys the handles know, by name:
// a key deleted and made again by another process between two reloads
// can't be told from the one before.
void KeepSerials(const RegistryKey& before, RegistryKey& after) {
    for (auto& [name, key] : after.subkeys) {
        auto found = before.subkeys.find(name);
        if (found != before.subkeys.end()) {
            key->serial = found->second->serial;
            KeepSerials(*found->second, *key);
        }
    }
}

// The file's bytes and its stamp, read from one descriptor so that they
// agree; empty for a missing file.
std::string ReadFile(const std::string& path, Hive::Stamp& stamp) {
    stamp = {};
    int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat info;
    std::string bytes;
    if (file < 0 || fstat(file, &info) != 0) {
        if (file >= 0) {
            close(file);
        }
        return bytes;
    }
    stamp = StampOf(info);
    char buffer[65536];
    for (ssize_t got; (got = read(file, buffer, sizeof buffer)) != 0;) {
        if (got > 0) {
            bytes.append(buffer, static_cast<std::size_t>(got));
        } else if (errno != EINTR) {
            break;
        }
    }
    close(file);
    return bytes;
}

// The root's hive as its file holds it now.
LSTATUS Load(Store& store, const Root& root, bool make, Hive*& hive, std::string& path) {
    std::string folder = RegistryFolder();
    bool exists = false;
    if (LSTATUS status = CheckFolder(folder, make, exists); status != ERROR_SUCCESS) {
        return status;
    }
    path = folder + "/" + root.name + ".reg";
    hive = &store.hives[path];
    struct stat info;
    if (hive->loaded && stat(path.c_str(), &info) == 0 && StampOf(info) == hive->stamp) {
        return ERROR_SUCCESS;
    }
    Hive::Stamp stamp;
    std::string bytes = exists ? ReadFile(path, stamp) : std::string();
    RegistryKey tree;
    bool whole = true;
    auto sections = common::ParseRegistryText(posix::AnsiFromFileBytes(bytes), &whole);
    if (sections) {
        common::ApplySections(*sections, root.name, tree);
        whole = whole && std::all_of(sections->begin(), sections->end(),
                                     [&](const common::RegistrySection& section) {
                                         return section.root == root.name;
                                     });
    }
    KeepSerials(hive->tree, tree);
    hive->tree = std::move(tree);
    hive->stamp = stamp;
    hive->loaded = true;
    hive->damaged = !whole;
    return ERROR_SUCCESS;
}

// The key a reference designates, or null when it is gone.
RegistryKey* Designated(RegistryKey& tree, const KeyRef& ref) {
    RegistryKey* key = &tree;
    for (std::size_t i = 0; key != nullptr && i < ref.path.size(); ++i) {
        key = key->FindSubkey(ref.path[i]);
    }
    return key != nullptr && (ref.serial == 0 || key->serial == ref.serial) ? key : nullptr;
}

// The key `names` below `key`; `named`, when given, receives the names as
// the keys were made, whatever the case asked for.
RegistryKey* Below(RegistryKey* key, const std::vector<std::string>& names,
                   std::vector<std::string>* named = nullptr) {
    for (std::size_t i = 0; key != nullptr && i < names.size(); ++i) {
        auto found = key->subkeys.find(names[i]);
        key = found != key->subkeys.end() ? found->second.get() : nullptr;
        if (key != nullptr && named != nullptr) {
            named->push_back(found->first);
        }
    }
    return key;
}

using Action = std::function<LSTATUS(RegistryKey& tree)>;

LSTATUS Read(const Root& root, const Action& action) {
    Store& store = TheStore();
    std::lock_guard guard(store.lock);
    Hive* hive = nullptr;
    std::string path;
    LSTATUS status = Load(store, root, false, hive, path);
    return status == ERROR_SUCCESS ? action(hive->tree) : status;
}

bool WriteAll(int file, const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        ssize_t put = write(file, bytes.data() + done, bytes.size() - done);
        if (put < 0 && errno != EINTR) {
            return false;
        }
        done += static_cast<std::size_t>(std::max<ssize_t>(put, 0));
    }
    return true;
}

// Writes `bytes` as the file at `path`: a new file beside it, made
// exclusively with mode 0600 and given the mode and owner of the file it
// replaces, then renamed over it, so that readers never see half a file.
bool ReplaceFile(const std::string& folder, const std::string& path, const std::string& bytes) {
    std::string temporary = folder + "/.registry.XXXXXX";
    int out = mkostemp(temporary.data(), O_CLOEXEC);
    if (out < 0) {
        return false;
    }
    struct stat old;
    bool ok = true;
    if (stat(path.c_str(), &old) == 0) {
        ok = fchmod(out, old.st_mode & 0777) == 0;
        struct stat made;
        if (ok && fstat(out, &made) == 0 &&
            (made.st_uid != old.st_uid || made.st_gid != old.st_gid)) {
            ok = fchown(out, old.st_uid, old.st_gid) == 0;
        }
    }
    ok = ok && WriteAll(out, bytes);
    ok = close(out) == 0 && ok && rename(temporary.c_str(), path.c_str()) == 0;
    if (!ok) {
        unlink(temporary.c_str());
    }
    return ok;
}

// A change under the root's lock file: read the latest file, change, and
// write the file anew. `changed` tells whether there is anything to write.
// A root whose file did not read whole is not written: that would drop
// what could not be read. Its changes are refused with ERROR_BADDB until
// the file is repaired (or removed), as the system refuses a damaged hive.
LSTATUS Change(const Root& root, const std::function<LSTATUS(RegistryKey&, bool&)>& action) {
    Store& store = TheStore();
    std::lock_guard guard(store.lock);
    std::string folder = RegistryFolder();
    bool exists = false;
    if (LSTATUS status = CheckFolder(folder, true, exists); status != ERROR_SUCCESS) {
        return status;
    }
    std::string lockPath = folder + "/" + root.name + ".lock";
    int lock = open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (lock < 0 || flock(lock, LOCK_EX) != 0) {
        if (lock >= 0) {
            close(lock);
        }
        return static_cast<LSTATUS>(ERROR_CANTWRITE);
    }
    Hive* hive = nullptr;
    std::string path;
    LSTATUS status = Load(store, root, true, hive, path);
    if (status == ERROR_SUCCESS && hive->damaged) {
        status = static_cast<LSTATUS>(ERROR_BADDB);
    }
    bool changed = false;
    if (status == ERROR_SUCCESS) {
        status = action(hive->tree, changed);
    }
    if (changed) {
        struct stat info;
        if (ReplaceFile(
                folder, path,
                posix::Utf16FileBytes(common::FormatRegistryText(root.name, {}, hive->tree))) &&
            stat(path.c_str(), &info) == 0) {
            hive->stamp = StampOf(info);
        } else {
            hive->loaded = false;  // the tree holds a change the file lacks
            status = static_cast<LSTATUS>(ERROR_CANTWRITE);
        }
    }
    close(lock);
    return status;
}

bool IsText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// Copies a value's data to a caller's buffer of `capacity` bytes, as the
// query calls do; a text that lacks its terminating zero gets one after it
// where the buffer has room, so that a caller never reads past its end.
void CopyData(const RegistryValue& value, LPBYTE data, DWORD capacity) {
    std::memcpy(data, value.data.data(), value.data.size());
    if (IsText(value.type) && capacity > value.data.size() &&
        (value.data.empty() || value.data.back() != '\0')) {
        data[value.data.size()] = 0;
    }
}

HKEY NewHandle(const KeyRef& ref) {
    return static_cast<HKEY>(posix::RegisterHandle(new OpenKey(ref)));
}

bool Allowed(const KeyRef& ref, REGSAM needed) {
    return (ref.access & needed) == needed;
}

}  // namespace

LSTATUS RegOpenKeyExA(HKEY key, LPCSTR subKey, DWORD /*options*/, REGSAM desired, PHKEY result) {
    KeyRef ref;
    if (result == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    *result = nullptr;
    std::vector<std::string> names;
    if (LSTATUS status = SubkeyNames(subKey, names); status != ERROR_SUCCESS) {
        return status;
    }
    if (names.empty() && ref.path.empty()) {
        *result = key;  // a root key gives itself
        return ERROR_SUCCESS;
    }
    return Read(*ref.root, [&](RegistryKey& tree) -> LSTATUS {
        RegistryKey* base = Designated(tree, ref);
        if (base == nullptr) {
            return ERROR_KEY_DELETED;
        }
        RegistryKey* found = Below(base, names);
        if (found == nullptr) {
            return ERROR_FILE_NOT_FOUND;
        }
        ref.path.insert(ref.path.end(), names.begin(), names.end());
        ref.serial = found->serial;
        ref.access = desired;
        *result = NewHandle(ref);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegCreateKeyExA(HKEY key, LPCSTR subKey, DWORD /*reserved*/, LPSTR /*keyClass*/,
                        DWORD /*options*/, REGSAM desired, LPSECURITY_ATTRIBUTES /*security*/,
                        PHKEY result, LPDWORD disposition) {
    KeyRef ref;
    if (result == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    *result = nullptr;
    std::vector<std::string> names;
    if (LSTATUS status = SubkeyNames(subKey, names); status != ERROR_SUCCESS) {
        return status;
    }
    // Making a subkey asks nothing of the parent handle's access: the
    // system checks the parent key's own security instead.
    return Change(*ref.root, [&](RegistryKey& tree, bool& changed) -> LSTATUS {
        RegistryKey* node = Designated(tree, ref);
        if (node == nullptr) {
            return ERROR_KEY_DELETED;
        }
        for (std::string& name : names) {
            RegistryKey* next = node->FindSubkey(name);
            changed = changed || next == nullptr;
            node = next != nullptr ? next : &node->Subkey(name);
            ref.path.push_back(std::move(name));
        }
        if (disposition != nullptr) {
            *disposition = changed ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
        }
        ref.serial = ref.path.empty() ? 0 : node->serial;
        ref.access = desired;
        *result = NewHandle(ref);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegQueryValueExA(HKEY key, LPCSTR valueName, LPDWORD /*reserved*/, LPDWORD type,
                         LPBYTE data, LPDWORD dataSize) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    if (data != nullptr && dataSize == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Allowed(ref, KEY_QUERY_VALUE)) {
        return ERROR_ACCESS_DENIED;
    }
    // Read before anything is written: `type` and `dataSize` may be one
    // variable.
    DWORD capacity = dataSize != nullptr ? *dataSize : 0;
    return Read(*ref.root, [&](RegistryKey& tree) -> LSTATUS {
        RegistryKey* node = Designated(tree, ref);
        if (node == nullptr) {
            return ERROR_KEY_DELETED;
        }
        const RegistryValue* value = node->FindValue(valueName != nullptr ? valueName : "");
        if (value == nullptr) {
            if (dataSize != nullptr) {
                *dataSize = 0;
            }
            return ERROR_FILE_NOT_FOUND;
        }
        if (type != nullptr) {
            *type = value->type;
        }
        auto needed = static_cast<DWORD>(value->data.size());
        if (dataSize != nullptr) {
            *dataSize = needed;
        }
        if (data == nullptr) {
            return ERROR_SUCCESS;
        }
        if (capacity < needed) {
            return ERROR_MORE_DATA;
        }
        CopyData(*value, data, capacity);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegSetValueExA(HKEY key, LPCSTR valueName, DWORD /*reserved*/, DWORD type, const BYTE* data,
                       DWORD dataSize) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    std::string name = valueName != nullptr ? valueName : "";
    if ((data == nullptr && dataSize != 0) || name.size() > common::kMaxValueNameLength) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Allowed(ref, KEY_SET_VALUE)) {
        return ERROR_ACCESS_DENIED;
    }
    std::string bytes(reinterpret_cast<const char*>(data), data != nullptr ? dataSize : 0);
    // A text given without its terminating zero is stored with one.
    if (IsText(type) && !bytes.empty() && bytes.back() != '\0') {
        bytes += '\0';
    }
    return Change(*ref.root, [&](RegistryKey& tree, bool& changed) -> LSTATUS {
        RegistryKey* node = Designated(tree, ref);
        if (node == nullptr) {
            return ERROR_KEY_DELETED;
        }
        RegistryValue* value = node->FindValue(name);
        if (value == nullptr) {
            node->values.push_back({name, type, bytes});
            changed = true;
        } else if (value->type != type || value->data != bytes) {
            value->type = type;
            value->data = bytes;
            changed = true;
        }
        return ERROR_SUCCESS;
    });
}

LSTATUS RegEnumKeyExA(HKEY key, DWORD index, LPSTR name, LPDWORD nameSize, LPDWORD /*reserved*/,
                      LPSTR keyClass, LPDWORD classSize, FILETIME* lastWriteTime) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    if (name == nullptr || nameSize == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Allowed(ref, KEY_ENUMERATE_SUB_KEYS)) {
        return ERROR_ACCESS_DENIED;
    }
    return Read(*ref.root, [&](RegistryKey& tree) -> LSTATUS {
        RegistryKey* node = Designated(tree, ref);
        if (node == nullptr) {
            return ERROR_KEY_DELETED;
        }
        if (index >= node->subkeys.size()) {
            return ERROR_NO_MORE_ITEMS;
        }
        const std::string& found = std::next(node->subkeys.begin(), index)->first;
        if (*nameSize <= found.size()) {
            return ERROR_MORE_DATA;
        }
        std::memcpy(name, found.c_str(), found.size() + 1);
        *nameSize = static_cast<DWORD>(found.size());
        if (keyClass != nullptr && classSize != nullptr && *classSize > 0) {
            keyClass[0] = '\0';
            *classSize = 0;
        }
        if (lastWriteTime != nullptr) {
            *lastWriteTime = {};
        }
        return ERROR_SUCCESS;
    });
}

LSTATUS RegEnumValueA(HKEY key, DWORD index, LPSTR valueName, LPDWORD valueNameSize,
                      LPDWORD /*reserved*/, LPDWORD type, LPBYTE data, LPDWORD dataSize) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    if (valueName == nullptr || valueNameSize == nullptr ||
        (data != nullptr && dataSize == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Allowed(ref, KEY_QUERY_VALUE)) {
        return ERROR_ACCESS_DENIED;
    }
    DWORD capacity = dataSize != nullptr ? *dataSize : 0;
    return Read(*ref.root, [&](RegistryKey& tree) -> LSTATUS {
        RegistryKey* node = Designated(tree, ref);
        if (node == nullptr) {
            return ERROR_KEY_DELETED;
        }
        if (index >= node->values.size()) {
            return ERROR_NO_MORE_ITEMS;
        }
        const RegistryValue& value = node->values[index];
        // The type and the size of the data are told even when the name or
        // the data does not fit; then neither the name nor its length moves.
        if (type != nullptr) {
            *type = value.type;
        }
        if (dataSize != nullptr) {
            *dataSize = static_cast<DWORD>(value.data.size());
        }
        if (*valueNameSize <= value.name.size() ||
            (data != nullptr && capacity < value.data.size())) {
            return ERROR_MORE_DATA;
        }
        std::memcpy(valueName, value.name.c_str(), value.name.size() + 1);
        *valueNameSize = static_cast<DWORD>(value.name.size());
        if (data != nullptr) {
            CopyData(value, data, capacity);
        }
        return ERROR_SUCCESS;
    });
}

LSTATUS RegDeleteKeyA(HKEY key, LPCSTR subKey) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    if (subKey == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    std::vector<std::string> names;
    if (LSTATUS status = SubkeyNames(subKey, names); status != ERROR_SUCCESS) {
        return status;
    }
    if (ref.path.empty() && names.empty()) {
        return ERROR_ACCESS_DENIED;  // a root key stays
    }
    return Change(*ref.root, [&](RegistryKey& tree, bool& changed) -> LSTATUS {
        RegistryKey* base = Designated(tree, ref);
        if (base == nullptr) {
            return ERROR_KEY_DELETED;
        }
        // "" deletes the handle's own key.
        std::vector<std::string> path = ref.path;
        path.insert(path.end(), names.begin(), names.end());
        RegistryKey* parent = Below(&tree, {path.begin(), path.end() - 1});
        if (parent == nullptr) {
            return ERROR_FILE_NOT_FOUND;
        }
        auto found = parent->subkeys.find(path.back());
        if (found == parent->subkeys.end()) {
            return ERROR_FILE_NOT_FOUND;
        }
        if (!found->second->subkeys.empty()) {
            return ERROR_ACCESS_DENIED;
        }
        parent->subkeys.erase(found);
        changed = true;
        return ERROR_SUCCESS;
    });
}

LSTATUS RegDeleteValueA(HKEY key, LPCSTR valueName) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    if (!Allowed(ref, KEY_SET_VALUE)) {
        return ERROR_ACCESS_DENIED;
    }
    return Change(*ref.root, [&](RegistryKey& tree, bool& changed) -> LSTATUS {
        RegistryKey* node = Designated(tree, ref);
        if (node == nullptr) {
            return ERROR_KEY_DELETED;
        }
        RegistryValue* value = node->FindValue(valueName != nullptr ? valueName : "");
        if (value == nullptr) {
            return ERROR_FILE_NOT_FOUND;
        }
        node->values.erase(node->values.begin() + (value - node->values.data()));
        changed = true;
        return ERROR_SUCCESS;
    });
}

LSTATUS RegCloseKey(HKEY key) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    return ref.path.empty() && posix::HandleAs<OpenKey>(key) == nullptr
               ? ERROR_SUCCESS  // a predefined key
               : (CloseHandle(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
}

LSTATUS RegExportText(HKEY key, LPCSTR subKey, std::string& text) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    std::vector<std::string> names;
    if (LSTATUS status = SubkeyNames(subKey, names); status != ERROR_SUCCESS) {
        return status;
    }
    return Read(*ref.root, [&](RegistryKey& tree) -> LSTATUS {
        RegistryKey* base = Designated(tree, ref);
        if (base == nullptr) {
            return ERROR_KEY_DELETED;
        }
        std::vector<std::string> named;
        Below(&tree, ref.path, &named);
        RegistryKey* node = Below(base, names, &named);
        if (node == nullptr) {
            return ERROR_FILE_NOT_FOUND;
        }
        text = common::FormatRegistryText(ref.root->name, named, *node);
        return ERROR_SUCCESS;
    });
}

// Sections of unknown roots were skipped by the parser, as the editors skip
// them, so the rest of the text still comes in.
LSTATUS RegImportText(std::string_view bytes) {
    auto sections = common::ParseRegistryText(posix::AnsiFromFileBytes(bytes));
    if (!sections) {
        return ERROR_BAD_FORMAT;
    }
    std::vector<const Root*> roots;
    for (const common::RegistrySection& section : *sections) {
        const Root* root = RootByName(section.root);
        if (std::find(roots.begin(), roots.end(), root) == roots.end()) {
            roots.push_back(root);
        }
    }
    for (const Root* root : roots) {
        LSTATUS status = Change(*root, [&](RegistryKey& tree, bool& changed) -> LSTATUS {
            common::ApplySections(*sections, root->name, tree);
            changed = true;
            return ERROR_SUCCESS;
        });
        if (status != ERROR_SUCCESS) {
            return status;
        }
    }
    return ERROR_SUCCESS;
}

}  // namespace nvk::os
