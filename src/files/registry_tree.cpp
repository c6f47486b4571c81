// RegRecurseDeleteKey and LoadValueList.
#include "nvk/afx/string_array.h"
#include "nvk/afx/win_app.h"
#include "nvk/files/file_operations.h"
#include "os/api/registry.h"

namespace os = nvk::os;

long RegRecurseDeleteKey(os::HKEY parent, const char* keyName) {
    os::HKEY key = nullptr;
    os::LSTATUS status = os::RegOpenKeyExA(parent, keyName, 0, os::KEY_READ, &key);
    if (status != os::ERROR_SUCCESS) {
        return status;
    }
    for (;;) {
        char name[257];
        os::DWORD size = sizeof name - 1;
        status = os::RegEnumKeyExA(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr);
        if (status == os::ERROR_NO_MORE_ITEMS) {
            os::RegCloseKey(key);
            return os::RegDeleteKeyA(parent, keyName);
        }
        if (status != os::ERROR_SUCCESS) {
            os::RegCloseKey(key);
            return status;
        }
        status = RegRecurseDeleteKey(key, name);
        if (status != os::ERROR_SUCCESS) {
            os::RegCloseKey(key);
            return status;
        }
    }
}

int LoadValueList(const char* keyName, CStringArray& out, int keys) {
    CWinApp* app = AfxGetApp();
    os::HKEY appKey = app != nullptr ? app->GetAppRegistryKey() : nullptr;
    if (appKey != nullptr) {
        os::HKEY key = nullptr;
        const os::LSTATUS opened =
            keys != 0 ? os::RegCreateKeyExA(appKey, keyName, 0, nullptr, 0, os::KEY_ALL_ACCESS,
                                            nullptr, &key, nullptr)
                      : os::RegOpenKeyExA(appKey, keyName, 0, os::KEY_QUERY_VALUE, &key);
        if (opened == os::ERROR_SUCCESS) {
            for (os::DWORD i = 0;; ++i) {
                char name[261];
                os::DWORD size = sizeof name;
                const os::LSTATUS status =
                    keys != 0
                        ? os::RegEnumKeyExA(key, i, name, &size, nullptr, nullptr, nullptr, nullptr)
                        : os::RegEnumValueA(key, i, name, &size, nullptr, nullptr, nullptr,
                                            nullptr);
                if (status != os::ERROR_SUCCESS) {
                    break;
                }
                out.SetAtGrow(static_cast<int>(i), name);
            }
            os::RegCloseKey(key);
        }
        os::RegCloseKey(appKey);
    }
    return out.GetSize() > 0 ? 1 : 0;
}
