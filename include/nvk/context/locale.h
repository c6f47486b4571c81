// ELocale: a light value for one locale, sharing the module's LanguageCache
// of its id with every other value of that id.
#pragma once

#include <cstdint>

#include "nvk/context/language_cache.h"

class ELocale {
public:
    static constexpr std::uint32_t kUserDefault = 1024;
    static constexpr std::uint32_t kSystemDefault = 2048;
    static constexpr std::uint32_t kThread = 0xFFFFFFFF;

    // The user and system defaults become their locales, kThread the
    // thread's locale as it stood at start-up, and any other id goes through
    // the system's default conversion.
    explicit ELocale(std::uint32_t lcid = kThread);

    LanguageCache& Cache() const { return *m_Cache; }
    std::uint32_t GetLcid() const { return Lcid; }

    std::uint32_t Lcid;

private:
    LanguageCacheHandle m_Cache;
};
