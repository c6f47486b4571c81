#include "nvk/codes/bic.h"

#include "codes/code_text.h"

namespace {

using nvk::codes::FieldText;
using nvk::codes::StoreField;

// Stores the cleaned text when it had `length` characters as given.
template <std::size_t N>
bool SetExact(char (&field)[N], const Chaine& text, int length, Chaine (*clean)(const Chaine&)) {
    if (text.Length() != length) {
        return false;
    }
    StoreField(field, clean(text));
    return true;
}

}  // namespace

EBIC::EBIC(const Chaine& code, bool bPartial) {
    SetBIC(code, bPartial);
}

EBIC::EBIC(const sBIC& bic) {
    SetBIC(FieldText(bic.szBank) + FieldText(bic.szCountry) + FieldText(bic.szLocation) +
               FieldText(bic.szBranch),
           false);
}

EBIC& EBIC::operator=(const sBIC& bic) {
    static_cast<sBIC&>(*this) = bic;
    return *this;
}

bool EBIC::operator==(const EBIC& other) const {
    return GetBIC() == other.GetBIC();
}

bool EBIC::IsEmpty() const {
    return szBank[0] == 0 && szCountry[0] == 0 && szLocation[0] == 0 && szBranch[0] == 0;
}

Chaine EBIC::CleanCode(const Chaine& text) {
    Chaine clean = text;
    clean.Upper().KeepAlnum();
    return clean;
}

Chaine EBIC::BankCode() const {
    return CleanCode(FieldText(szBank));
}
Chaine EBIC::CountryCode() const {
    return CleanCode(FieldText(szCountry));
}
Chaine EBIC::LocationCode() const {
    return CleanCode(FieldText(szLocation));
}
Chaine EBIC::BranchCode() const {
    return CleanCode(FieldText(szBranch));
}

Chaine EBIC::GetBIC() const {
    return CleanCode(FieldText(szBank) + FieldText(szCountry) + FieldText(szLocation) +
                     FieldText(szBranch));
}

bool EBIC::IsValid() const {
    const int branch = BranchCode().Length();
    return BankCode().Length() == 4 && CountryCode().Length() == 2 &&
           LocationCode().Length() == 2 && (branch == 3 || branch == 0);
}

bool EBIC::Validate() {
    const Chaine branch = FieldText(szBranch);
    const Chaine bank = FieldText(szBank);
    const Chaine location = FieldText(szLocation);
    const Chaine country = FieldText(szCountry);
    return SetBranchCode(branch) && SetBankCode(bank) && SetLocationCode(location) &&
           SetCountryCode(country);
}

bool EBIC::SetBIC(const Chaine& code, bool bPartial) {
    static_cast<sBIC&>(*this) = sBIC{};
    if (!bPartial && (code.Length() < 8 || code.Length() > 11)) {
        return false;
    }
    const Chaine clean = CleanCode(code);
    StoreField(szBank, clean.Left(4));
    if (clean.Length() > 4) {
        StoreField(szCountry, clean.Mid(4, 2));
    }
    if (clean.Length() > 6) {
        StoreField(szLocation, clean.Mid(6, 2));
    }
    if (clean.Length() > 8) {
        StoreField(szBranch, clean.Mid(8, 3));
    }
    return true;
}

bool EBIC::SetBIC(const Chaine& bank, const Chaine& country, const Chaine& location,
                  const Chaine& branch) {
    if (bank.Length() != 4 || country.Length() != 2 || location.Length() != 2 ||
        (branch.Length() != 3 && !branch.IsEmpty())) {
        return false;
    }
    StoreField(szBank, CleanCode(bank));
    StoreField(szCountry, CleanCode(country));
    StoreField(szLocation, CleanCode(location));
    StoreField(szBranch, CleanCode(branch));
    return true;
}

bool EBIC::SetBankCode(const Chaine& bank) {
    return SetExact(szBank, bank, 4, CleanCode);
}

bool EBIC::SetCountryCode(const Chaine& country) {
    return SetExact(szCountry, country, 2, CleanCode);
}

bool EBIC::SetLocationCode(const Chaine& location) {
    return SetExact(szLocation, location, 2, CleanCode);
}

bool EBIC::SetBranchCode(const Chaine& branch) {
    return SetExact(szBranch, branch, 3, CleanCode);
}
