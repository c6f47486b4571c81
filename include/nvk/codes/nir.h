// The French social-security number: 13 characters and a two-digit key,
// 97 minus the number's remainder by 97. Corsican departments ("2A", "2B")
// and the provisional number ("PROVIS") are accepted.
#pragma once

#include <cstddef>

#include "nvk/afx/cstring.h"
#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"

class NVKUTIL_EXPORT CNIR {
public:
    CNIR() = default;
    CNIR(const CNIR& other) = default;
    CNIR& operator=(const CNIR& other) = default;

    // More than 13 characters split into number and key; a shorter text is
    // filled with "0" to 13 and has no key.
    bool Set(const Chaine& text);
    // A key of other than two characters is stored as "0". Both are kept
    // whatever the answer, which is IsValid().
    bool Set(const Chaine& num, const Chaine& key);
    bool Set(const Chaine& num, int key);

    bool IsValid() const;
    bool IsTemporary() const;
    // The stored key if it reads as a decimal number, else 0.
    int GetStoredKey() const;

    // The bare number for a separator of 0; otherwise number, separator and
    // key, the key being "00" for an invalid number.
    Chaine GetDisplay(char separator) const;
    void GetDisplay(CString& out, char separator) const;

    char szNum[14] = {};
    char szKey[3] = {};

protected:
    Chaine iGetKey() const;
    // The number with the Corsican department and the provisional mark
    // replaced by digits.
    Chaine iGetModifiedNum() const;
    int iGetValidKey() const;
};
static_assert(sizeof(CNIR) == 17);
static_assert(offsetof(CNIR, szKey) == 14);
