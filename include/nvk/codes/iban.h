// The international bank account number: country, two check digits and the
// national account text, checked modulo 97, printed in the paper and the
// electronic form, and converted to and from the French and Swiss accounts.
//
// Partial input is kept on purpose: an unknown position of a French account
// is held as the placeholder "#", so that a half-typed number survives
// storage and reads as invalid instead of being lost.
#pragma once

#include <cstddef>

#include "nvk/codes/rib.h"
#include "nvk/codes/swiss_account.h"
#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"

// The stored form, as the applications keep it in their records.
struct sIBAN {
    char szCountry[3];
    char szCheckSum[3];
    char szContent[31];
};
static_assert(sizeof(sIBAN) == 37);
static_assert(offsetof(sIBAN, szCheckSum) == 3);
static_assert(offsetof(sIBAN, szContent) == 6);

class NVKUTIL_EXPORT EIBAN : public sIBAN {
public:
    EIBAN(const Chaine& code = "", bool bPartial = false);
    // The fields joined go through SetIBAN, so they are cleaned and tested.
    EIBAN(const sIBAN& iban);
    EIBAN(const sRIB& rib);
    EIBAN(const sSwissAccount& account);
    // Copies and assignments copy the fields as they are, untested.
    EIBAN(const EIBAN& other) = default;
    EIBAN& operator=(const EIBAN& other) = default;
    EIBAN& operator=(const sIBAN& iban);

    // Equal electronic forms; two invalid numbers are equal.
    bool operator==(const EIBAN& other) const;
    bool IsEmpty() const;

    // The fields, cleaned.
    Chaine CountryCode() const;
    Chaine CheckSum() const;
    Chaine Content() const;

    // Check digits, then the French or Swiss national test where the raw
    // country field is "FR" or "CH", case included.
    bool IsValid() const;
    bool CheckSumIsOK() const;
    // Puts the object's own fields through their setters again.
    bool Validate();

    // Both empty for an invalid number.
    Chaine GetIBAN_EDI() const;
    Chaine GetIBAN_Printable() const;
    // The printed blocks, valid or not: "IBAN", country and check digits,
    // then the content by four.
    Chaine PrintBlock(unsigned index) const;
    unsigned PrintBlockCount() const;

    // The whole number from one text. Clears first, so a refusal leaves the
    // number empty.
    bool SetIBAN(const Chaine& code, bool bPartial);
    // Checks the lengths first; an empty check sum is computed.
    bool SetIBAN(const Chaine& country, const Chaine& content, const Chaine& checkSum);
    // One field each, after a length test; a refusal changes nothing. The
    // country is kept as given, case included, the check sum upper-cased.
    bool SetCountryCode(const Chaine& country);
    bool SetCheckSum(const Chaine& checkSum);
    bool SetContent(const Chaine& content);

    bool HasRIB() const;
    // Compares the country with "CR": Swiss numbers answer false, and callers
    // that look for Switzerland test CountryCode() themselves.
    bool HasSwissAccount() const;
    CRIB GetRIB() const;
    CSwissAccount GetSwissAccount() const;
    bool SetRIB(const sRIB& rib);
    bool SetSwissAccount(const sSwissAccount& account);

    // Runs the electronic form, real check digits included, through the check
    // digit computation: a valid number ends with "97", an invalid one stays.
    void RecomputeCheckSum();

private:
    static Chaine CalculChecksum(const Chaine& code);
    static Chaine CleanCode(const Chaine& text);
    void Clear();
};
static_assert(sizeof(EIBAN) == sizeof(sIBAN));
