// The Swiss account: a clearing number and an account, with no key.
#pragma once

#include <cstddef>

#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"

// The stored form, as the applications keep it in their records.
struct NVKUTIL_EXPORT sSwissAccount {
    char szClearing[6];
    char szCompte[13];
};
static_assert(sizeof(sSwissAccount) == 19);
static_assert(offsetof(sSwissAccount, szCompte) == 6);

class NVKUTIL_EXPORT CSwissAccount : public sSwissAccount {
public:
    CSwissAccount();
    CSwissAccount(const sSwissAccount& account);
    CSwissAccount(const CSwissAccount& account);
    virtual ~CSwissAccount();
    CSwissAccount& operator=(const sSwissAccount& account);
    CSwissAccount& operator=(const CSwissAccount& account);

    // Cut to 5 and 12 characters.
    void SetClearing(const Chaine& clearing);
    void SetCompte(const Chaine& compte);

    bool IsEmpty() const;
    // Also true when either argument is null.
    static bool IsEmpty(const char* clearing, const char* compte);

    // A clearing of exactly five characters and some account; false for a
    // null argument.
    bool IsValid() const;
    static bool IsValid(const char* clearing, const char* compte);

    bool operator==(const sSwissAccount& account) const;
};
