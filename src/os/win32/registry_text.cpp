// The registry's text form, as the registry editors read and write it, on
// the system's registry: the text itself is the shared reader and writer's.
#include <algorithm>
#include <string_view>
#include <vector>

#include "os/common/registry_text.h"
#include "os/win32/forward.h"

namespace nvk::os {

namespace {

struct Root {
    const char* name;
    ::HKEY key;
};

const Root kRoots[] = {{"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
                       {"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
                       {"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
                       {"HKEY_USERS", HKEY_USERS},
                       {"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG}};

const Root* RootOf(::HKEY key) {
    for (const Root& root : kRoots) {
        if (root.key == key) {
            return &root;
        }
    }
    return nullptr;
}

const Root* RootNamed(std::string_view name) {
    for (const Root& root : kRoots) {
        if (common::RegistryRootName(name) == root.name) {
            return &root;
        }
    }
    return nullptr;
}

std::string JoinKeyPath(const std::vector<std::string>& names) {
    std::string path;
    for (const std::string& name : names) {
        path += (path.empty() ? "" : "\\") + name;
    }
    return path;
}

// Everything in and below `key`, values in the order the system gives them.
LSTATUS ReadTree(::HKEY key, common::RegistryKey& node) {
    ::DWORD subkeys = 0;
    ::DWORD values = 0;
    ::DWORD longestData = 0;
    LSTATUS status = ::RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr,
                                        &values, nullptr, &longestData, nullptr, nullptr);
    if (status != ERROR_SUCCESS) {
        return status;
    }
    std::vector<char> name(common::kMaxValueNameLength + 1);
    std::vector<BYTE> data(longestData + 2);
    for (::DWORD i = 0; i < values; ++i) {
        ::DWORD nameSize = static_cast<::DWORD>(name.size());
        ::DWORD dataSize = static_cast<::DWORD>(data.size());
        ::DWORD type = 0;
        status =
            ::RegEnumValueA(key, i, name.data(), &nameSize, nullptr, &type, data.data(), &dataSize);
        if (status != ERROR_SUCCESS) {
            return status;
        }
        node.values.push_back({std::string(name.data(), nameSize), type,
                               std::string(reinterpret_cast<const char*>(data.data()), dataSize)});
    }
    for (::DWORD i = 0; i < subkeys; ++i) {
        ::DWORD nameSize = static_cast<::DWORD>(name.size());
        status =
            ::RegEnumKeyExA(key, i, name.data(), &nameSize, nullptr, nullptr, nullptr, nullptr);
        ::HKEY below = nullptr;
        if (status == ERROR_SUCCESS) {
            status = ::RegOpenKeyExA(key, name.data(), 0, KEY_READ, &below);
        }
        if (status == ERROR_SUCCESS) {
            status = ReadTree(below, node.Subkey(std::string(name.data(), nameSize)));
            ::RegCloseKey(below);
        }
        if (status != ERROR_SUCCESS) {
            return status;
        }
    }
    return ERROR_SUCCESS;
}

// The names of the path as the registry keeps them, case included.
LSTATUS StoredNames(::HKEY root, const std::vector<std::string>& names,
                    std::vector<std::string>& stored) {
    std::string path;
    for (const std::string& wanted : names) {
        ::HKEY parent = nullptr;
        LSTATUS status = ::RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, &parent);
        if (status != ERROR_SUCCESS) {
            return status;
        }
        std::string found = wanted;
        char name[common::kMaxKeyNameLength + 1];
        for (::DWORD i = 0;; ++i) {
            ::DWORD size = sizeof name;
            if (::RegEnumKeyExA(parent, i, name, &size, nullptr, nullptr, nullptr, nullptr) !=
                ERROR_SUCCESS) {
                break;
            }
            if (::lstrcmpiA(name, wanted.c_str()) == 0) {
                found.assign(name, size);
                break;
            }
        }
        ::RegCloseKey(parent);
        stored.push_back(found);
        path += (path.empty() ? "" : "\\") + found;
    }
    return ERROR_SUCCESS;
}

// File bytes as ANSI text, by the system's conversions: UTF-16LE behind its
// mark, UTF-8 with its mark or without when valid, else the bytes as they are.
std::string AnsiText(std::string_view bytes) {
    std::wstring wide;
    if (bytes.starts_with("\xFF\xFE")) {
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
            wide += static_cast<wchar_t>(static_cast<unsigned char>(bytes[i]) |
                                         static_cast<unsigned char>(bytes[i + 1]) << 8);
        }
    } else {
        if (bytes.starts_with("\xEF\xBB\xBF")) {
            bytes.remove_prefix(3);
        }
        int size = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(),
                                         static_cast<int>(bytes.size()), nullptr, 0);
        if (size <= 0) {
            return std::string(bytes);
        }
        wide.resize(static_cast<std::size_t>(size));
        ::MultiByteToWideChar(CP_UTF8, 0, bytes.data(), static_cast<int>(bytes.size()), wide.data(),
                              size);
    }
    int size = ::WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()), nullptr,
                                     0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(std::max(size, 0)), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()), text.data(), size,
                          nullptr, nullptr);
    return text;
}

}  // namespace

// Predefined keys only: the documented calls give no name for a key opened
// below one.
LSTATUS RegExportText(HKEY key, LPCSTR subKey, std::string& text) {
    const Root* root = RootOf(key);
    if (root == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    std::vector<std::string> names = common::SplitKeyPath(subKey != nullptr ? subKey : "");
    ::HKEY opened = nullptr;
    LSTATUS status = ::RegOpenKeyExA(root->key, JoinKeyPath(names).c_str(), 0, KEY_READ, &opened);
    if (status != ERROR_SUCCESS) {
        return status;
    }
    common::RegistryKey tree;
    status = ReadTree(opened, tree);
    ::RegCloseKey(opened);
    std::vector<std::string> stored;
    if (status == ERROR_SUCCESS) {
        status = StoredNames(root->key, names, stored);
    }
    if (status == ERROR_SUCCESS) {
        text = common::FormatRegistryText(root->name, stored, tree);
    }
    return status;
}

LSTATUS RegImportText(std::string_view bytes) {
    auto sections = common::ParseRegistryText(AnsiText(bytes));
    if (!sections) {
        return ERROR_BAD_FORMAT;
    }
    for (const common::RegistrySection& section : *sections) {
        const Root* root = RootNamed(section.root);
        if (root == nullptr || section.path.empty()) {
            continue;
        }
        std::string path = JoinKeyPath(section.path);
        if (section.deleteKey) {
            ::RegDeleteTreeA(root->key, path.c_str());
            continue;
        }
        ::HKEY key = nullptr;
        LSTATUS status = ::RegCreateKeyExA(root->key, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                           nullptr, &key, nullptr);
        for (const auto& entry : section.entries) {
            if (status != ERROR_SUCCESS) {
                break;
            }
            const common::RegistryValue& value = entry.value;
            if (entry.deleteValue) {
                ::RegDeleteValueA(key, value.name.c_str());
            } else {
                status = ::RegSetValueExA(key, value.name.c_str(), 0, value.type,
                                          reinterpret_cast<const BYTE*>(value.data.data()),
                                          static_cast<DWORD>(value.data.size()));
            }
        }
        if (key != nullptr) {
            ::RegCloseKey(key);
        }
        if (status != ERROR_SUCCESS) {
            return status;
        }
    }
    return ERROR_SUCCESS;
}

}  // namespace nvk::os
