// ELoc: the language and locale of the process, fixed at its first use and
// shared by every module. Strings are looked up in the system's language;
// dates and names follow the thread's locale as it was at start-up.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "nvk/context/locale.h"
#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"
#include "nvk/os/types.h"

class ELoc {
public:
    // The environment names the library knows; the second has no reader.
    static constexpr const char* kCountryVariable = "cdCountry";
    static constexpr const char* kLangIdVariable = "cdLangID";
    // The block of the framework's strings (ids 57344 to 57359) whose
    // languages say which languages the executable is translated into.
    static constexpr std::uint16_t kFrameworkStringBlock = 3585;

    // Reads the system now; the process's object comes from Get().
    ELoc();

    // The process-wide object, under the key "ELoc".
    static ELoc& Get();

    std::uint16_t GetLangID() const { return LangID; }
    std::uint32_t GetThreadLCID() const { return ThreadLocale; }
    ELocale& GetLocale() { return Locale; }
    // Read again from "cdCountry" while it is empty; any thread may ask.
    const Chaine& GetCountry();

    // The languages of a module's framework string block, leaving out the
    // language-neutral ones.
    static PTableau<std::uint16_t> ResourceLanguagesOf(nvk::os::HMODULE module);

    std::uint32_t ThreadLocale;
    ELocale Locale;
    std::uint16_t LangID;
    ELocale SystemLocale;
    PTableau<std::uint16_t> ResourceLanguages;
    Chaine Country;

private:
    // Country is filled at most once, under the lock; once it is known it
    // no longer changes, and is read without the lock.
    std::mutex m_CountryLock;
    std::atomic<bool> m_CountryKnown{false};
};
