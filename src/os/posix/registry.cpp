#include "os/api/registry.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <mutex>
#include <sstream>

#include "os/api/sync.h"
#include "os/posix/code_page.h"
#include "os/posix/environment.h"
#include "os/posix/handle.h"
#include "os/posix/registry_file.h"

namespace nvk::os {

namespace {

using posix::NoCaseLess;
using posix::RegistryKey;
using posix::RegistryValue;

struct Root {
    HKEY key;
    const char* name;
    const char* shortName;
};

const Root kRoots[] = {
    {HKEY_CLASSES_ROOT, "HKEY_CLASSES_ROOT", "HKCR"},
    {HKEY_CURRENT_USER, "HKEY_CURRENT_USER", "HKCU"},
    {HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE", "HKLM"},
    {HKEY_USERS, "HKEY_USERS", "HKU"},
    {HKEY_CURRENT_CONFIG, "HKEY_CURRENT_CONFIG", "HKCC"},
};

const Root* RootByName(std::string_view name) {
    NoCaseLess less;
    auto same = [&](std::string_view a, std::string_view b) { return !less(a, b) && !less(b, a); };
    for (const Root& root : kRoots) {
        if (same(name, root.name) || same(name, root.shortName)) {
            return &root;
        }
    }
    return nullptr;
}

// An open key: its root, the names below it, and the access it was opened
// with. The key itself lives in the root's file and may go meanwhile.
class OpenKey final : public posix::KernelObject {
public:
    OpenKey(const Root* root, std::vector<std::string> path, REGSAM access)
        : root(root), path(std::move(path)), access(access) {}
    const Root* root;
    std::vector<std::string> path;
    REGSAM access;
};

struct KeyRef {
    const Root* root = nullptr;
    std::vector<std::string> path;
    REGSAM access = KEY_ALL_ACCESS;
};

bool Resolve(HKEY key, KeyRef& ref) {
    for (const Root& root : kRoots) {
        if (root.key == key) {
            ref = {&root, {}, KEY_ALL_ACCESS};
            return true;
        }
    }
    const OpenKey* open = posix::HandleAs<OpenKey>(key);
    if (open == nullptr) {
        return false;
    }
    ref = {open->root, open->path, open->access};
    return true;
}

std::string RegistryFolder() {
    std::string folder = posix::EnvironmentValue("NVK_REGISTRY_DIR");
    if (!folder.empty() && folder[0] == '/') {
        return folder;
    }
    std::string config = posix::EnvironmentValue("XDG_CONFIG_HOME");
    if (!config.empty() && config[0] == '/') {
        return config + "/nvk/registry";
    }
    std::string home = posix::EnvironmentValue("HOME");
    return (!home.empty() && home[0] == '/' ? home : "/tmp") + "/.config/nvk/registry";
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

Hive::Stamp StampOf(const std::string& path) {
    Hive::Stamp stamp;
    struct stat info;
    if (stat(path.c_str(), &info) == 0) {
        stamp = {info.st_dev, info.st_ino, info.st_mtim, info.st_size};
    }
    return stamp;
}

Hive& Load(Store& store, const Root& root, std::string& path) {
    path = RegistryFolder() + "/" + root.name + ".reg";
    Hive& hive = store.hives[path];
    Hive::Stamp stamp = StampOf(path);
    if (hive.loaded && stamp == hive.stamp) {
        return hive;
    }
    hive.tree = {};
    hive.stamp = stamp;
    hive.loaded = true;
    std::ifstream in(path, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    auto sections = posix::ParseRegistryText(posix::AnsiFromFileBytes(bytes.str()));
    if (sections) {
        posix::ApplySections(*sections, root.name, hive.tree);
    }
    return hive;
}

// The key `count` names down `path`; `named`, when given, receives the names
// as the keys were made, whatever the case asked for.
RegistryKey* Find(RegistryKey& tree, const std::vector<std::string>& path, std::size_t count,
                  std::vector<std::string>* named = nullptr) {
    RegistryKey* key = &tree;
    for (std::size_t i = 0; key != nullptr && i < count; ++i) {
        auto found = key->subkeys.find(path[i]);
        key = found != key->subkeys.end() ? found->second.get() : nullptr;
        if (key != nullptr && named != nullptr) {
            named->push_back(found->first);
        }
    }
    return key;
}

RegistryKey* Find(RegistryKey& tree, const std::vector<std::string>& path) {
    return Find(tree, path, path.size());
}

using Action = std::function<LSTATUS(RegistryKey& tree)>;

LSTATUS Read(const Root& root, const Action& action) {
    Store& store = TheStore();
    std::lock_guard guard(store.lock);
    std::string path;
    return action(Load(store, root, path).tree);
}

// A change under the root's lock file: read the latest file, change, and
// write a new file in its place, so that readers never see half a file.
// `changed` tells whether there is anything to write.
LSTATUS Change(const Root& root, const std::function<LSTATUS(RegistryKey&, bool&)>& action) {
    Store& store = TheStore();
    std::lock_guard guard(store.lock);
    std::string folder = RegistryFolder();
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    std::string lockPath = folder + "/" + root.name + ".lock";
    int lock = open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (lock < 0 || flock(lock, LOCK_EX) != 0) {
        if (lock >= 0) {
            close(lock);
        }
        return static_cast<LSTATUS>(ERROR_CANTWRITE);
    }
    std::string path;
    Hive& hive = Load(store, root, path);
    bool changed = false;
    LSTATUS status = action(hive.tree, changed);
    if (changed) {
        std::string bytes =
            posix::Utf16FileBytes(posix::FormatRegistryText(root.name, {}, hive.tree));
        std::string temporary = path + "." + std::to_string(getpid()) + ".new";
        int out = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        bool ok = out >= 0;
        for (std::size_t done = 0; ok && done < bytes.size();) {
            ssize_t put = write(out, bytes.data() + done, bytes.size() - done);
            ok = put > 0 || (put < 0 && errno == EINTR);
            done += static_cast<std::size_t>(std::max<ssize_t>(put, 0));
        }
        ok = out >= 0 && close(out) == 0 && ok && rename(temporary.c_str(), path.c_str()) == 0;
        if (!ok) {
            unlink(temporary.c_str());
            hive.loaded = false;  // the tree holds a change the file lacks
            status = static_cast<LSTATUS>(ERROR_CANTWRITE);
        } else {
            hive.stamp = StampOf(path);
        }
    }
    close(lock);
    return status;
}

// Copies `bytes` to a caller's buffer of `*size` bytes, as the query calls do.
LSTATUS CopyData(const std::string& bytes, LPBYTE data, LPDWORD size) {
    auto needed = static_cast<DWORD>(bytes.size());
    if (data == nullptr) {
        if (size != nullptr) {
            *size = needed;
        }
        return ERROR_SUCCESS;
    }
    if (size == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (*size < needed) {
        *size = needed;
        return ERROR_MORE_DATA;
    }
    std::memcpy(data, bytes.data(), needed);
    *size = needed;
    return ERROR_SUCCESS;
}

// Copies a name to a buffer of `*size` characters; `*size` receives its length.
LSTATUS CopyName(const std::string& name, LPSTR buffer, LPDWORD size) {
    if (buffer == nullptr || size == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (*size <= name.size()) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(buffer, name.c_str(), name.size() + 1);
    *size = static_cast<DWORD>(name.size());
    return ERROR_SUCCESS;
}

HKEY NewHandle(const KeyRef& ref) {
    return static_cast<HKEY>(posix::RegisterHandle(new OpenKey(ref.root, ref.path, ref.access)));
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
    *result = nullptr;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    std::size_t base = ref.path.size();
    for (std::string& name : posix::SplitKeyPath(subKey != nullptr ? subKey : "")) {
        ref.path.push_back(std::move(name));
    }
    return Read(*ref.root, [&](RegistryKey& tree) -> LSTATUS {
        if (Find(tree, ref.path, base) == nullptr) {
            return ERROR_KEY_DELETED;
        }
        if (Find(tree, ref.path) == nullptr) {
            return ERROR_FILE_NOT_FOUND;
        }
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
    *result = nullptr;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    std::vector<std::string> names = posix::SplitKeyPath(subKey != nullptr ? subKey : "");
    if (!names.empty() && !Allowed(ref, KEY_CREATE_SUB_KEY)) {
        return ERROR_ACCESS_DENIED;
    }
    return Change(*ref.root, [&](RegistryKey& tree, bool& changed) -> LSTATUS {
        RegistryKey* node = Find(tree, ref.path);
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
    if (!Allowed(ref, KEY_QUERY_VALUE)) {
        return ERROR_ACCESS_DENIED;
    }
    return Read(*ref.root, [&](RegistryKey& tree) -> LSTATUS {
        RegistryKey* node = Find(tree, ref.path);
        if (node == nullptr) {
            return ERROR_KEY_DELETED;
        }
        const RegistryValue* value = node->FindValue(valueName != nullptr ? valueName : "");
        if (value == nullptr) {
            return ERROR_FILE_NOT_FOUND;
        }
        if (type != nullptr) {
            *type = value->type;
        }
        return CopyData(value->data, data, dataSize);
    });
}

LSTATUS RegSetValueExA(HKEY key, LPCSTR valueName, DWORD /*reserved*/, DWORD type, const BYTE* data,
                       DWORD dataSize) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    if (data == nullptr && dataSize != 0) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!Allowed(ref, KEY_SET_VALUE)) {
        return ERROR_ACCESS_DENIED;
    }
    std::string bytes(reinterpret_cast<const char*>(data), data != nullptr ? dataSize : 0);
    return Change(*ref.root, [&](RegistryKey& tree, bool& changed) -> LSTATUS {
        RegistryKey* node = Find(tree, ref.path);
        if (node == nullptr) {
            return ERROR_KEY_DELETED;
        }
        std::string name = valueName != nullptr ? valueName : "";
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
    if (!Allowed(ref, KEY_ENUMERATE_SUB_KEYS)) {
        return ERROR_ACCESS_DENIED;
    }
    return Read(*ref.root, [&](RegistryKey& tree) -> LSTATUS {
        RegistryKey* node = Find(tree, ref.path);
        if (node == nullptr) {
            return ERROR_KEY_DELETED;
        }
        if (index >= node->subkeys.size()) {
            return ERROR_NO_MORE_ITEMS;
        }
        LSTATUS status = CopyName(std::next(node->subkeys.begin(), index)->first, name, nameSize);
        if (status == ERROR_SUCCESS && keyClass != nullptr && classSize != nullptr &&
            *classSize > 0) {
            keyClass[0] = '\0';
            *classSize = 0;
        }
        if (lastWriteTime != nullptr) {
            *lastWriteTime = {};
        }
        return status;
    });
}

LSTATUS RegEnumValueA(HKEY key, DWORD index, LPSTR valueName, LPDWORD valueNameSize,
                      LPDWORD /*reserved*/, LPDWORD type, LPBYTE data, LPDWORD dataSize) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    if (!Allowed(ref, KEY_QUERY_VALUE)) {
        return ERROR_ACCESS_DENIED;
    }
    return Read(*ref.root, [&](RegistryKey& tree) -> LSTATUS {
        RegistryKey* node = Find(tree, ref.path);
        if (node == nullptr) {
            return ERROR_KEY_DELETED;
        }
        if (index >= node->values.size()) {
            return ERROR_NO_MORE_ITEMS;
        }
        const RegistryValue& value = node->values[index];
        LSTATUS status = CopyName(value.name, valueName, valueNameSize);
        if (status != ERROR_SUCCESS) {
            return status;
        }
        if (type != nullptr) {
            *type = value.type;
        }
        return CopyData(value.data, data, dataSize);
    });
}

LSTATUS RegDeleteKeyA(HKEY key, LPCSTR subKey) {
    KeyRef ref;
    if (!Resolve(key, ref)) {
        return ERROR_INVALID_HANDLE;
    }
    for (std::string& name : posix::SplitKeyPath(subKey != nullptr ? subKey : "")) {
        ref.path.push_back(std::move(name));
    }
    if (ref.path.empty()) {
        return ERROR_ACCESS_DENIED;  // a root key stays
    }
    return Change(*ref.root, [&](RegistryKey& tree, bool& changed) -> LSTATUS {
        RegistryKey* parent = Find(tree, ref.path, ref.path.size() - 1);
        if (parent == nullptr) {
            return ERROR_FILE_NOT_FOUND;
        }
        auto found = parent->subkeys.find(ref.path.back());
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
        RegistryKey* node = Find(tree, ref.path);
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
    for (std::string& name : posix::SplitKeyPath(subKey != nullptr ? subKey : "")) {
        ref.path.push_back(std::move(name));
    }
    return Read(*ref.root, [&](RegistryKey& tree) -> LSTATUS {
        std::vector<std::string> named;
        RegistryKey* node = Find(tree, ref.path, ref.path.size(), &named);
        if (node == nullptr) {
            return ERROR_FILE_NOT_FOUND;
        }
        text = posix::FormatRegistryText(ref.root->name, named, *node);
        return ERROR_SUCCESS;
    });
}

LSTATUS RegImportText(std::string_view bytes) {
    auto sections = posix::ParseRegistryText(posix::AnsiFromFileBytes(bytes));
    if (!sections) {
        return ERROR_BAD_FORMAT;
    }
    std::vector<const Root*> roots;
    for (posix::RegistrySection& section : *sections) {
        const Root* root = RootByName(section.root);
        if (root == nullptr) {
            return ERROR_BADKEY;
        }
        section.root = root->name;
        if (std::find(roots.begin(), roots.end(), root) == roots.end()) {
            roots.push_back(root);
        }
    }
    for (const Root* root : roots) {
        LSTATUS status = Change(*root, [&](RegistryKey& tree, bool& changed) -> LSTATUS {
            posix::ApplySections(*sections, root->name, tree);
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
