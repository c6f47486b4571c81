#include "nvk/context/language_cache.h"

#include <cstdlib>
#include <mutex>
#include <vector>

#include "nvk/core/sorted_map.h"
#include "os/api/locale.h"

namespace {

using nvk::os::GetLocaleInfoA;

constexpr std::uint32_t kLanguageBits = 0x3FF;
constexpr std::uint32_t kSortableSublanguage = 1;
constexpr std::uint32_t kEnglishUS = 1033;

// The sortable locale's own items; the others are English (United States).
const char* SortableItem(std::uint32_t item) {
    switch (item) {
        case nvk::os::LOCALE_SSHORTDATE:
            return "yyyyMMdd";
        case nvk::os::LOCALE_IDATE:
            return "2";
        case nvk::os::LOCALE_IDAYLZERO:
        case nvk::os::LOCALE_IMONLZERO:
            return "1";
        default:
            return nullptr;
    }
}

// The system's text of an item: one pass for the length, one for the text.
Chaine SystemItem(std::uint32_t lcid, std::uint32_t item) {
    auto locale = static_cast<nvk::os::LCID>(lcid & 0xFFFF);
    int n = GetLocaleInfoA(locale, item, nullptr, 0);
    if (n <= 0) {
        return Chaine();
    }
    std::vector<char> text(static_cast<std::size_t>(n) + 1, '\0');
    if (GetLocaleInfoA(locale, item, text.data(), n) == 0) {
        return Chaine();
    }
    return Chaine(text.data());
}

using CacheMap = FSortedMap<std::uint32_t, LanguageCacheHandle>;

// This module's caches, one per locale id, torn down with the module. The
// lock guards every use of the map: ELocale values are made on any of the
// application's threads, and without it two first requests insert into the
// array at once, and even a look-up moves the map's cursor under another's.
struct CacheTable {
    std::mutex Lock;
    CacheMap Map;
};

CacheTable& Caches() {
    static CacheTable caches;
    return caches;
}

}  // namespace

LanguageCache::LanguageCache(std::uint32_t lcid)
    : Lcid(lcid),
      CalendarType(static_cast<std::uint16_t>(
          std::atoi(GetLocaleItem(nvk::os::LOCALE_ICALENDARTYPE).c_str()))) {}

Chaine LanguageCache::GetLocaleItem(std::uint32_t item) const {
    item &= ~nvk::os::LOCALE_RETURN_NUMBER;
    if ((Lcid & kLanguageBits) < kSortableLanguage) {
        return SystemItem(Lcid, item);
    }
    if (((Lcid >> 10) & 0x3F) != kSortableSublanguage) {
        return Chaine();
    }
    const char* own = SortableItem(item);
    return own != nullptr ? Chaine(own) : SystemItem(kEnglishUS, item);
}

const PTableau<Chaine>& LanguageCache::GetMonthNames(bool shortForm) {
    // The names are filled once, under this cache's own critical section:
    // two threads printing their first dates would otherwise fill the same
    // arrays and release the same buffers twice. Once the flag is seen set,
    // the arrays no longer change and are read without the lock.
    if ((__atomic_load_n(&Flags, __ATOMIC_ACQUIRE) & kMonthNamesLoaded) != 0) {
        return shortForm ? ShortMonthNames : MonthNames;
    }
    CSingleLock lock(this, true);
    if ((Flags & kMonthNamesLoaded) == 0) {
        for (int i = 0; i < 12; ++i) {
            if (MonthNames.Size() <= i) {
                MonthNames.SetSize(i + 1);
            }
            MonthNames[i] = GetLocaleItem(nvk::os::LOCALE_SMONTHNAME1 + static_cast<unsigned>(i));
        }
        for (int i = 0; i < 12; ++i) {
            if (ShortMonthNames.Size() <= i) {
                ShortMonthNames.SetSize(i + 1);
            }
            ShortMonthNames[i] =
                GetLocaleItem(nvk::os::LOCALE_SABBREVMONTHNAME1 + static_cast<unsigned>(i));
        }
        __atomic_or_fetch(&Flags, kMonthNamesLoaded, __ATOMIC_RELEASE);
    }
    return shortForm ? ShortMonthNames : MonthNames;
}

LanguageCacheHandle CacheFor(std::uint32_t lcid) {
    CacheTable& table = Caches();
    std::lock_guard guard(table.Lock);
    CacheMap& caches = table.Map;
    int i = caches.Find(lcid, FindExact);
    if (i == -1) {
        auto* cache = new LanguageCache(lcid);
        i = caches.Find(lcid, FindOrCreate);
        caches.GetValue(i) = LanguageCacheHandle(cache);
    }
    return caches.GetValue(i);
}
