// CNVKKey: the 64-bit identifier of a dossier, seen as eight bytes in memory
// order: three of the extension, four of the clock (seconds since 1970,
// little-endian), one the byte sum of the name. It travels as 16 lower-case
// hexadecimal digits, byte 0 first. The zero key means no key.
#pragma once

#include <cstdint>

#include "nvk/afx/cstring.h"
#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"

class NVKUTIL_EXPORT CNVKKey {
public:
    // A fresh key: no extension, the clock, a zero sum. Not the zero key.
    CNVKKey();
    CNVKKey(std::uint64_t value) : m_Value(value) {}  // NOLINT(google-explicit-constructor)
    explicit CNVKKey(const Chaine& text);
    explicit CNVKKey(const char* text);
    explicit CNVKKey(const CString& text);
    CNVKKey(const CNVKKey&) = default;
    CNVKKey& operator=(const CNVKKey&) = default;

    operator std::uint64_t() const { return m_Value; }  // NOLINT(google-explicit-constructor)
    operator Chaine() const;                            // NOLINT(google-explicit-constructor)
    operator CString() const;                           // NOLINT(google-explicit-constructor)

    // Exactly 16 hexadecimal digits of either case; anything else gives the
    // zero key.
    void FromString(const Chaine& text);

    // A null extension or name counts as none; the extension's leading dot
    // is skipped.
    static std::uint64_t GenerateUniqueKey(const char* extension, const char* name);

private:
    std::uint64_t m_Value;
};
static_assert(sizeof(CNVKKey) == 8);

// Four 16-bit option words of "NVKOptions" under "Software\NVK\%s\Settings":
// the machine's then the user's for `application` in the high half, the same
// for "Common" in the low half. What can't be read is 0.
NVKUTIL_EXPORT std::uint64_t GetNVKOptions(const char* application);
