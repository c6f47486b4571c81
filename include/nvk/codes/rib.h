// The French bank account identity (relevé d'identité bancaire): bank,
// counter, account and a two-digit key computed modulo 97.
#pragma once

#include <cstddef>

#include "nvk/afx/cstring.h"
#include "nvk/nvkutil_export.h"

// The stored form, as the applications keep it in their records.
struct sRIB {
    char szNomBanque[33];
    char szAdrBanque[33];
    char szAgence[6];
    char szGuichet[6];
    char szCompte[12];
    char szCle[3];
};
static_assert(sizeof(sRIB) == 93);
static_assert(offsetof(sRIB, szAdrBanque) == 33);
static_assert(offsetof(sRIB, szAgence) == 66);
static_assert(offsetof(sRIB, szGuichet) == 72);
static_assert(offsetof(sRIB, szCompte) == 78);
static_assert(offsetof(sRIB, szCle) == 90);

class NVKUTIL_EXPORT CRIB : public sRIB {
public:
    CRIB();
    CRIB(const sRIB& rib);
    CRIB& operator=(const sRIB& rib);

    // Copies without a length check of the field: a longer text runs on
    // into the following fields, but stops at the end of the record, which a
    // plain copy would overrun.
    void SetNomBanque(const CString& text);
    void SetAdrBanque(const CString& text);
    void SetAgence(const CString& text);
    void SetGuichet(const CString& text);
    void SetCompte(const CString& text);
    void SetCle(const CString& text);

    bool IsEmpty() const;
    // Also true when any argument is null.
    static bool IsEmpty(const char* agence, const char* guichet, const char* compte,
                        const char* cle);

    // The four code fields only; names and addresses don't count.
    bool operator==(const sRIB& rib) const;

    bool IsValid() const;    // TestRIB
    bool IsValidEx() const;  // TestRIBEx

    // The key as two digits, from "01" to "97"; empty unless the three fields
    // make exactly 21 digits or upper-case letters.
    CString ExpectedKey() const;
    static CString ExpectedKey(const char* agence, const char* guichet, const char* compte);

    // The older test, in floating point over whatever each field reads as a
    // number; letters are mapped in the account only.
    static int TestRIB(const char* agence, const char* guichet, const char* compte,
                       const char* cle);
    // The exact test over the 23 characters of the four fields.
    static int TestRIBEx(const char* agence, const char* guichet, const char* compte,
                         const char* cle);

private:
    void StoreRunning(std::size_t offset, const CString& text);
};
static_assert(sizeof(CRIB) == sizeof(sRIB));
