#include "nvk/core/chaine.h"
#include "nvk/services/nvk_key.h"
#include "os/api/registry.h"

namespace os = nvk::os;

namespace {

// The low 16 bits of "NVKOptions" of one application's settings key.
std::uint64_t OptionWord(os::HKEY root, const char* application) {
    Chaine path;
    path.Format("Software\\NVK\\%s\\Settings", application);
    os::HKEY key = nullptr;
    if (os::RegOpenKeyExA(root, path, 0, os::KEY_QUERY_VALUE, &key) != os::ERROR_SUCCESS) {
        return 0;
    }
    os::DWORD value = 0;
    os::DWORD size = sizeof value;
    const os::LSTATUS status = os::RegQueryValueExA(key, "NVKOptions", nullptr, nullptr,
                                                    reinterpret_cast<os::LPBYTE>(&value), &size);
    os::RegCloseKey(key);
    return status == os::ERROR_SUCCESS ? value & 0xFFFF : 0;
}

}  // namespace

std::uint64_t GetNVKOptions(const char* application) {
    std::uint64_t options = OptionWord(os::HKEY_LOCAL_MACHINE, "Common") << 16 |
                            OptionWord(os::HKEY_CURRENT_USER, "Common");
    if (application != nullptr && application[0] != '\0') {
        options |= OptionWord(os::HKEY_LOCAL_MACHINE, application) << 48 |
                   OptionWord(os::HKEY_CURRENT_USER, application) << 32;
    }
    return options;
}
