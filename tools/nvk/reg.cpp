// nvk reg: the registry's values, and its text form for export and import.
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "cli.h"
#include "nvk/core/chaine.h"
#include "os/api/directory.h"
#include "os/api/environment.h"
#include "os/api/file.h"
#include "os/api/path_map.h"
#include "os/api/registry.h"
#include "os/api/sync.h"

namespace nvk::tool {
namespace {

int Get(const Args& args);
int Set(const Args& args);
int Delete(const Args& args);
int Export(const Args& args);
int Import(const Args& args);

const Command kCommands[] = {
    {"get", "KEY VALUE", "prints a value (\"\" for the default one)", Get},
    {"set", "KEY VALUE DATA [--dword]", "sets a text value, or a number with --dword", Set},
    {"delete", "KEY", "deletes a key and everything below it", Delete},
    {"export", "[KEY]", "prints the .reg text of a key, or of the whole registry", Export},
    {"import", "FILE", "imports a .reg file", Import},
};

struct Root {
    const char* name;
    const char* shortName;
    os::HKEY key;
};

const Root kRoots[] = {
    {"HKEY_CLASSES_ROOT", "HKCR", os::HKEY_CLASSES_ROOT},
    {"HKEY_CURRENT_USER", "HKCU", os::HKEY_CURRENT_USER},
    {"HKEY_LOCAL_MACHINE", "HKLM", os::HKEY_LOCAL_MACHINE},
    {"HKEY_USERS", "HKU", os::HKEY_USERS},
    {"HKEY_CURRENT_CONFIG", "HKCC", os::HKEY_CURRENT_CONFIG},
};

// "HKCU\Software\x" as its root key and the path below it.
bool ParseKey(const std::string& text, os::HKEY& root, std::string& subKey) {
    std::size_t cut = text.find('\\');
    const Chaine rootName(text.substr(0, cut).c_str());
    subKey = cut == std::string::npos ? "" : text.substr(cut + 1);
    for (const Root& candidate : kRoots) {
        if (rootName.EqualsNoCase(candidate.name) || rootName.EqualsNoCase(candidate.shortName)) {
            root = candidate.key;
            return true;
        }
    }
    return false;
}

int Failed(const std::string& what, os::LSTATUS status) {
    std::cerr << "nvk: " << what << " (error " << status;
    if (status == static_cast<os::LSTATUS>(os::ERROR_BADDB)) {
        std::cerr << ": the root's registry file holds a part that does not read; repair or "
                     "remove it";
    } else if (status == static_cast<os::LSTATUS>(os::ERROR_ACCESS_DENIED)) {
        std::cerr << ": access denied; the registry folder must belong to the user and be closed "
                     "to others' writes";
    }
    std::cerr << ")\n";
    return status == static_cast<os::LSTATUS>(os::ERROR_FILE_NOT_FOUND) ? kNegative : kFailure;
}

int Get(const Args& args) {
    os::HKEY root = nullptr;
    std::string subKey;
    if (!Expect(args, 2, 2, kCommands[0])) {
        return kFailure;
    }
    if (!ParseKey(args[0], root, subKey)) {
        return Fail("not a registry key: " + args[0]);
    }
    os::HKEY key = nullptr;
    os::LSTATUS status = os::RegOpenKeyExA(root, subKey.c_str(), 0, os::KEY_READ, &key);
    if (status != os::ERROR_SUCCESS) {
        return Failed("no key " + args[0], status);
    }
    os::DWORD type = 0;
    os::DWORD size = 0;
    status = os::RegQueryValueExA(key, args[1].c_str(), nullptr, &type, nullptr, &size);
    std::string data(size, '\0');
    if (status == os::ERROR_SUCCESS) {
        status = os::RegQueryValueExA(key, args[1].c_str(), nullptr, &type,
                                      reinterpret_cast<os::BYTE*>(data.data()), &size);
    }
    os::RegCloseKey(key);
    if (status != os::ERROR_SUCCESS) {
        return Failed("no value " + args[1], status);
    }
    if (type == os::REG_DWORD && size == 4) {
        os::DWORD number = 0;
        data.copy(reinterpret_cast<char*>(&number), 4);
        std::cout << number << '\n';
    } else if (type == os::REG_SZ || type == os::REG_EXPAND_SZ) {
        std::cout << data.c_str() << '\n';
    } else {
        static const char kDigits[] = "0123456789abcdef";
        for (unsigned char byte : data) {
            std::cout << kDigits[byte >> 4] << kDigits[byte & 15];
        }
        std::cout << '\n';
    }
    return kOk;
}

int Set(const Args& args) {
    Args rest = args;
    const bool dword = TakeFlag(rest, "--dword");
    os::HKEY root = nullptr;
    std::string subKey;
    if (!Expect(rest, 3, 3, kCommands[1])) {
        return kFailure;
    }
    if (!ParseKey(rest[0], root, subKey)) {
        return Fail("not a registry key: " + rest[0]);
    }
    std::string data = rest[2] + '\0';
    os::DWORD type = os::REG_SZ;
    if (dword) {
        long long number = 0;
        if (!ParseLong(rest[2], number) || number < 0 || number > 0xFFFFFFFFLL) {
            return Fail("not a 32-bit number: " + rest[2]);
        }
        auto value = static_cast<os::DWORD>(number);
        data.assign(reinterpret_cast<const char*>(&value), 4);
        type = os::REG_DWORD;
    }
    os::HKEY key = nullptr;
    os::LSTATUS status = os::RegCreateKeyExA(root, subKey.c_str(), 0, nullptr, 0,
                                             os::KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (status == os::ERROR_SUCCESS) {
        status = os::RegSetValueExA(key, rest[1].c_str(), 0, type,
                                    reinterpret_cast<const os::BYTE*>(data.data()),
                                    static_cast<os::DWORD>(data.size()));
        os::RegCloseKey(key);
    }
    return status == os::ERROR_SUCCESS ? kOk : Failed("can't set " + rest[1], status);
}

// Deletes the subkeys first, since a key with subkeys can't go.
os::LSTATUS DeleteTree(os::HKEY parent, const std::string& name) {
    os::HKEY key = nullptr;
    os::LSTATUS status = os::RegOpenKeyExA(parent, name.c_str(), 0, os::KEY_READ, &key);
    if (status != os::ERROR_SUCCESS) {
        return status;
    }
    char child[256];
    os::DWORD length = sizeof child;
    while ((status = os::RegEnumKeyExA(key, 0, child, &length, nullptr, nullptr, nullptr,
                                       nullptr)) == os::ERROR_SUCCESS &&
           (status = DeleteTree(key, child)) == os::ERROR_SUCCESS) {
        length = sizeof child;
    }
    os::RegCloseKey(key);
    if (status != static_cast<os::LSTATUS>(os::ERROR_NO_MORE_ITEMS)) {
        return status;
    }
    return os::RegDeleteKeyA(parent, name.c_str());
}

int Delete(const Args& args) {
    os::HKEY root = nullptr;
    std::string subKey;
    if (!Expect(args, 1, 1, kCommands[2])) {
        return kFailure;
    }
    if (!ParseKey(args[0], root, subKey) || subKey.empty()) {
        return Fail("not a registry key below a root: " + args[0]);
    }
    os::LSTATUS status = DeleteTree(root, subKey);
    return status == os::ERROR_SUCCESS ? kOk : Failed("can't delete " + args[0], status);
}

// An export that did not reach its output (a full disk) is a failure.
int Written() {
    std::cout.flush();
    return std::cout ? kOk : Fail("can't write the export");
}

int Export(const Args& args) {
    if (!Expect(args, 0, 1, kCommands[3])) {
        return kFailure;
    }
    if (!args.empty()) {
        os::HKEY root = nullptr;
        std::string subKey;
        if (!ParseKey(args[0], root, subKey)) {
            return Fail("not a registry key: " + args[0]);
        }
        std::string text;
        os::LSTATUS status = os::RegExportText(root, subKey.c_str(), text);
        if (status != os::ERROR_SUCCESS) {
            return Failed("no key " + args[0], status);
        }
        std::cout << text;
        return Written();
    }
    // Every root that holds something, under one header.
    bool first = true;
    for (const Root& root : kRoots) {
        std::string text;
        if (os::LSTATUS status = os::RegExportText(root.key, "", text);
            status != os::ERROR_SUCCESS) {
            return Failed(std::string("can't read ") + root.name, status);
        }
        std::size_t body = text.find("\r\n\r\n") + 4;
        if (text.size() <= body + std::string_view(root.name).size() + 6) {
            continue;  // the root's section alone, empty
        }
        std::cout << (first ? text : text.substr(body));
        first = false;
    }
    if (first) {
        std::cout << "Windows Registry Editor Version 5.00\r\n\r\n";
    }
    return Written();
}

int Import(const Args& args) {
    if (!Expect(args, 1, 1, kCommands[4])) {
        return kFailure;
    }
    os::HANDLE file =
        os::CreateFileA(args[0].c_str(), os::GENERIC_READ, os::FILE_SHARE_READ, nullptr,
                        os::OPEN_EXISTING, os::FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == os::INVALID_HANDLE_VALUE) {
        return Fail("can't open " + args[0]);
    }
    Chaine bytes;
    const bool read = bytes.ReadFromHandle(file);
    os::CloseHandle(file);
    if (!read) {
        return Fail("can't read " + args[0]);
    }
    os::LSTATUS status = os::RegImportText(
        std::string_view(bytes.c_str(), static_cast<std::size_t>(bytes.Length())));
    if (status == static_cast<os::LSTATUS>(os::ERROR_BAD_FORMAT)) {
        return Fail("not a registry file: " + args[0]);
    }
    return status == os::ERROR_SUCCESS ? kOk : Failed("can't import " + args[0], status);
}

// The demo works in a registry of its own in the temporary folder.
void Demo(std::ostream& out) {
    Chaine folder;
    folder.GetTempName("reg");
    os::DeleteFileA(folder);
    if (folder.IsEmpty() || !os::CreateDirectoryA(folder, nullptr)) {
        out << "  (no temporary folder for a scratch registry)\n";
        return;
    }
    char old[1024];
    const os::DWORD oldLength = os::GetEnvironmentVariableA("NVK_REGISTRY_DIR", old, sizeof old);
    os::SetEnvironmentVariableA("NVK_REGISTRY_DIR", os::ToNativePath(folder).c_str());
    os::HKEY key = nullptr;
    os::RegCreateKeyExA(os::HKEY_CURRENT_USER, "Software\\NVK\\Common", 0, nullptr, 0,
                        os::KEY_ALL_ACCESS, nullptr, &key, nullptr);
    const char path[] = "C:\\Dossiers";
    const os::DWORD options = 259;
    os::RegSetValueExA(key, "Path", 0, os::REG_SZ, reinterpret_cast<const os::BYTE*>(path),
                       sizeof path);
    os::RegSetValueExA(key, "NVKOptions", 0, os::REG_DWORD,
                       reinterpret_cast<const os::BYTE*>(&options), 4);
    os::RegCloseKey(key);
    std::string text;
    os::RegExportText(os::HKEY_CURRENT_USER, "Software\\NVK", text);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (!line.empty()) {
            out << "  " << line << '\n';
        }
    }
    for (const char* name : {"\\HKEY_CURRENT_USER.reg", "\\HKEY_CURRENT_USER.lock"}) {
        os::DeleteFileA(folder + name);
    }
    os::RemoveDirectoryA(folder);
    os::SetEnvironmentVariableA("NVK_REGISTRY_DIR",
                                oldLength > 0 && oldLength < sizeof old ? old : nullptr);
}

const RegisterArea kArea({"reg", "the registry and its .reg text form", kCommands, Demo, 16});

}  // namespace
}  // namespace nvk::tool
