#include "nvk/context/loc.h"

#include "nvk/core/process_singleton.h"
#include "os/api/environment.h"
#include "os/api/locale.h"
#include "os/api/resource.h"

namespace {

struct LocKind {
    using Object = ELoc;
    static constexpr const char* Key = "ELoc";
    static ELoc* Make() { return new ELoc; }
    static void Destroy(ELoc* loc) { delete loc; }
};

nvk::os::BOOL AddLanguage(nvk::os::HMODULE, nvk::os::LPCSTR, nvk::os::LPCSTR,
                          nvk::os::WORD language, nvk::os::LONG_PTR param) {
    if (nvk::os::PRIMARYLANGID(language) != 0) {
        reinterpret_cast<PTableau<std::uint16_t>*>(param)->Add(language);
    }
    return nvk::os::TRUE;
}

}  // namespace

ELoc::ELoc()
    : ThreadLocale(nvk::os::GetThreadLocale()),
      Locale(ThreadLocale),
      LangID(static_cast<std::uint16_t>(
          nvk::os::ConvertDefaultLocale(nvk::os::LOCALE_SYSTEM_DEFAULT) & 0xFFFF)),
      SystemLocale(LangID),
      ResourceLanguages(ResourceLanguagesOf(nullptr)) {}

ELoc& ELoc::Get() {
    return *nvk::ProcessSingleton<LocKind>::Get();
}

const Chaine& ELoc::GetCountry() {
    if (Country.IsEmpty()) {
        char value[256];
        nvk::os::DWORD n = nvk::os::GetEnvironmentVariableA(kCountryVariable, value, sizeof value);
        if (n > 0 && n < sizeof value) {
            Country = value;
        }
    }
    return Country;
}

PTableau<std::uint16_t> ELoc::ResourceLanguagesOf(nvk::os::HMODULE module) {
    PTableau<std::uint16_t> languages;
    nvk::os::EnumResourceLanguagesA(module, nvk::os::RT_STRING,
                                    nvk::os::MAKEINTRESOURCEA(kFrameworkStringBlock), AddLanguage,
                                    reinterpret_cast<nvk::os::LONG_PTR>(&languages));
    return languages;
}
