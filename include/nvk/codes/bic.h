// The bank identifier code: bank, country, location and an optional branch.
// Only lengths are checked; there is no table of countries.
#pragma once

#include <cstddef>

#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"

// The stored form, as the applications keep it in their records.
struct sBIC {
    char szBank[5];
    char szCountry[3];
    char szLocation[3];
    char szBranch[4];
};
static_assert(sizeof(sBIC) == 15);
static_assert(offsetof(sBIC, szCountry) == 5);
static_assert(offsetof(sBIC, szLocation) == 8);
static_assert(offsetof(sBIC, szBranch) == 11);

class NVKUTIL_EXPORT EBIC : public sBIC {
public:
    EBIC(const Chaine& code = "", bool bPartial = false);
    // The fields joined go through SetBIC, so they are cleaned and tested.
    EBIC(const sBIC& bic);
    // Copies and assignments copy the fields as they are, untested.
    EBIC(const EBIC& other) = default;
    EBIC& operator=(const EBIC& other) = default;
    EBIC& operator=(const sBIC& bic);

    bool operator==(const EBIC& other) const;
    bool IsEmpty() const;

    // The fields, cleaned.
    Chaine BankCode() const;
    Chaine CountryCode() const;
    Chaine LocationCode() const;
    Chaine BranchCode() const;
    // The whole code, cleaned and untested.
    Chaine GetBIC() const;

    // Lengths 4, 2, 2 and 3 or 0 of the cleaned fields.
    bool IsValid() const;
    // Puts the fields through the one-field setters again. The branch setter
    // refuses an empty branch, so an eight-character code that IsValid
    // accepts fails here; forms that take the short code call IsValid.
    bool Validate();

    // Clears first; unless partial, the text as given must have 8 to 11
    // characters, blanks and hyphens included.
    bool SetBIC(const Chaine& code, bool bPartial);
    // Lengths as given must be 4, 2, 2 and 3 or 0; a refusal changes nothing.
    bool SetBIC(const Chaine& bank, const Chaine& country, const Chaine& location,
                const Chaine& branch);
    // Exact lengths 4, 2, 2 and 3; a refusal changes nothing.
    bool SetBankCode(const Chaine& bank);
    bool SetCountryCode(const Chaine& country);
    bool SetLocationCode(const Chaine& location);
    bool SetBranchCode(const Chaine& branch);

private:
    static Chaine CleanCode(const Chaine& text);
};
static_assert(sizeof(EBIC) == sizeof(sBIC));
