#include "nvk/services/app_version.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "os/api/file_attributes.h"
#include "os/api/module.h"
#include "os/api/profile.h"
#include "os/api/version.h"

namespace {

using nvk::os::DWORD;
using nvk::os::UINT;

constexpr const char* kPatchSection = "NVKPatch";

// The version resource of `file`, empty when it has none.
std::vector<unsigned char> ReadVersion(const char* file) {
    DWORD handle = 0;
    const DWORD size = nvk::os::GetFileVersionInfoSizeA(file, &handle);
    std::vector<unsigned char> block(size);
    if (size == 0 || !nvk::os::GetFileVersionInfoA(file, handle, size, block.data())) {
        block.clear();
    }
    return block;
}

const nvk::os::VS_FIXEDFILEINFO* FixedInfo(std::vector<unsigned char>& block) {
    void* value = nullptr;
    UINT length = 0;
    if (block.empty() || !nvk::os::VerQueryValueA(block.data(), "\\", &value, &length) ||
        length < sizeof(nvk::os::VS_FIXEDFILEINFO)) {
        return nullptr;
    }
    return static_cast<const nvk::os::VS_FIXEDFILEINFO*>(value);
}

std::string QueryText(std::vector<unsigned char>& block, const std::string& path) {
    void* value = nullptr;
    UINT length = 0;
    if (!nvk::os::VerQueryValueA(block.data(), path.c_str(), &value, &length) || length == 0) {
        return {};
    }
    return static_cast<const char*>(value);
}

// The numbers of the product version: major.minor, with the release when
// it has one and `flags` want it.
std::string NumericForm(const nvk::os::VS_FIXEDFILEINFO& fixed, unsigned long flags) {
    const unsigned major = fixed.dwProductVersionMS >> 16;
    const unsigned minor = fixed.dwProductVersionMS & 0xFFFF;
    const unsigned release = fixed.dwProductVersionLS >> 16;
    char text[64];
    if (fixed.dwProductVersionLS < 65536 || (flags & kVersionNoRelease) != 0) {
        std::snprintf(text, sizeof text, "%d.%d", major, minor);
    } else {
        std::snprintf(text, sizeof text, "%d.%d (R%d)", major, minor, release);
    }
    return text;
}

// The version text of the resource's own language, else of US English.
std::string TextForm(std::vector<unsigned char>& block, unsigned long flags) {
    const char* name = (flags & kVersionProduct) != 0 ? "ProductVersion" : "FileVersion";
    void* value = nullptr;
    UINT length = 0;
    std::string text;
    if (nvk::os::VerQueryValueA(block.data(), "\\VarFileInfo\\Translation", &value, &length) &&
        length >= 4) {
        std::uint16_t translation[2];
        std::memcpy(translation, value, sizeof translation);
        char path[64];
        std::snprintf(path, sizeof path, "\\StringFileInfo\\%04lx%04lx\\",
                      static_cast<unsigned long>(translation[0]),
                      static_cast<unsigned long>(translation[1]));
        text = QueryText(block, std::string(path) + name);
    }
    if (text.empty()) {
        text = QueryText(block, std::string("\\StringFileInfo\\040904e4\\") + name);
    }
    return text;
}

Chaine ModuleFile() {
    // A library shares the module state of its application, whose module
    // is the executable.
    char path[260] = {};
    nvk::os::GetModuleFileNameA(nullptr, path, sizeof path);
    return path;
}

}  // namespace

Chaine GetAppVersion(char const* file, unsigned long flags) {
    if (file == nullptr || nvk::os::GetFileAttributesA(file) == nvk::os::INVALID_FILE_ATTRIBUTES) {
        return "***";
    }
    const PATCHVALUE patch = GetNVKAppPatchValue(file);
    std::string text;
    std::vector<unsigned char> block = ReadVersion(file);
    if (!block.empty()) {
        // A patched file shows the resource's text whatever the flags ask:
        // the numbers would hide the patch's own version text.
        if ((flags & kVersionNumeric) != 0 && patch.patch == 0) {
            if (const nvk::os::VS_FIXEDFILEINFO* fixed = FixedInfo(block)) {
                text = NumericForm(*fixed, flags);
            }
        } else {
            text = TextForm(block, flags);
        }
    }
    Chaine version(text.empty() ? "Alpha" : text.c_str());
    if ((flags & kVersionNoPatch) == 0 && patch.patch != 0) {
        // The year is deliberately unpadded: 2009 shows as 9.
        Chaine suffix;
        suffix.Format(" - Patch %d (%02d/%02d/%d)", patch.patch, patch.date.day, patch.date.month,
                      patch.date.year % 100);
        version += suffix;
    }
    return version;
}

std::uint64_t GetAppVersionValue(char const* file, unsigned long flags) {
    if (file == nullptr) {
        return 0;
    }
    std::vector<unsigned char> block = ReadVersion(file);
    const nvk::os::VS_FIXEDFILEINFO* fixed = FixedInfo(block);
    if (fixed == nullptr) {
        return 0;
    }
    const bool product = (flags & kVersionProduct) != 0;
    const std::uint64_t ms = product ? fixed->dwProductVersionMS : fixed->dwFileVersionMS;
    const std::uint64_t ls = product ? fixed->dwProductVersionLS : fixed->dwFileVersionLS;
    return (ms << 32) | ls;
}

PATCHVALUE GetNVKAppPatchValue(char const* file) {
    PATCHVALUE none;
    const std::string name = file != nullptr ? file : "";
    if (name.size() < 4 || Chaine(name.c_str() + name.size() - 4).CompareNoCase(".exe") != 0) {
        return none;
    }
    const std::string side = name.substr(0, name.size() - 3) + "ptc";
    const UINT build = nvk::os::GetPrivateProfileIntA(kPatchSection, "Build", 0, side.c_str());
    if (build != (GetAppVersionValue(file, 0) & 0xFFFF)) {
        return none;  // the patch of another build
    }
    const UINT number = nvk::os::GetPrivateProfileIntA(kPatchSection, "Patch", 0, side.c_str());
    if (number == 0 || number >= 256) {
        return none;
    }
    char date[64] = {};
    nvk::os::GetPrivateProfileStringA(kPatchSection, "Date", "", date, sizeof date, side.c_str());
    if (std::strlen(date) < 8 || std::isdigit(static_cast<unsigned char>(date[6])) == 0) {
        return none;
    }
    date[2] = '\0';
    date[5] = '\0';
    int year = std::atoi(date + 6);
    if (year < 100) {
        year += year < 80 ? 2000 : 1900;
    }
    PATCHVALUE patch;
    patch.patch = static_cast<std::uint8_t>(number);
    patch.date.day = static_cast<std::uint8_t>(std::atoi(date));
    patch.date.month = static_cast<std::uint8_t>(std::atoi(date + 3));
    patch.date.year = static_cast<std::uint16_t>(year);
    return patch;
}

Chaine GetThisAppVersion(unsigned long flags) {
    return GetAppVersion(ModuleFile(), flags);
}

std::uint64_t GetThisAppVersionValue(unsigned long flags) {
    return GetAppVersionValue(ModuleFile(), flags);
}

PATCHVALUE GetThisNVKAppPatchValue() {
    return GetNVKAppPatchValue(ModuleFile());
}
