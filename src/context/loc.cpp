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
    // The object is the process's, so its callers are any module's threads:
    // the text is filled under a lock, or two first calls would assign it at
    // once. While it is still unknown a caller gets an empty value of its
    // own, not the field that another call may be filling.
    if (m_CountryKnown.load(std::memory_order_acquire)) {
        return Country;
    }
    static const Chaine unknown;
    std::lock_guard guard(m_CountryLock);
    if (!m_CountryKnown.load(std::memory_order_relaxed)) {
        char value[256];
        nvk::os::DWORD n = nvk::os::GetEnvironmentVariableA(kCountryVariable, value, sizeof value);
        if (n > 0 && n < sizeof value) {
            Country = value;
            m_CountryKnown.store(true, std::memory_order_release);
        }
    }
    return m_CountryKnown.load(std::memory_order_relaxed) ? Country : unknown;
}

PTableau<std::uint16_t> ELoc::ResourceLanguagesOf(nvk::os::HMODULE module) {
    PTableau<std::uint16_t> languages;
    nvk::os::EnumResourceLanguagesA(module, nvk::os::RT_STRING,
                                    nvk::os::MAKEINTRESOURCEA(kFrameworkStringBlock), AddLanguage,
                                    reinterpret_cast<nvk::os::LONG_PTR>(&languages));
    return languages;
}
