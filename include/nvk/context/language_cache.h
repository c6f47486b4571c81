// What a locale says, asked once and kept: one LanguageCache per locale id
// and module, shared by every ELocale of that id, on any thread. The critical
// section guards the lazily filled fields.
#pragma once

#include <cstdint>

#include "nvk/afx/sync_objects.h"
#include "nvk/context/shared_handle.h"
#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"

class LanguageCache : public CCriticalSection {
public:
    // Locale items of the fixed, sortable locale that the library answers
    // itself (language 1023, sublanguage 1).
    static constexpr std::uint32_t kSortableLanguage = 1023;
    // Bit of Flags: the month names are loaded.
    static constexpr std::uint32_t kMonthNamesLoaded = 2;

    explicit LanguageCache(std::uint32_t lcid);

    // The item's text; empty when the locale has none.
    Chaine GetLocaleItem(std::uint32_t item) const;
    // The 12 month names, long or short, loaded at the first call.
    const PTableau<Chaine>& GetMonthNames(bool shortForm);

    std::uint32_t Lcid;
    PTableau<Chaine> MonthNames;
    PTableau<Chaine> ShortMonthNames;
    std::uint16_t CalendarType;
    std::uint32_t Flags = 0;
};

using LanguageCacheHandle = SharedHandle<LanguageCache, Shared<LanguageCache>>;

// The cache of a locale id in this module's map, made at the first request.
LanguageCacheHandle CacheFor(std::uint32_t lcid);
