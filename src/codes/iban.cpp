#include "nvk/codes/iban.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "codes/code_text.h"
#include "codes/mod97.h"

namespace {

using nvk::codes::FieldLength;
using nvk::codes::FieldText;
using nvk::codes::FoldUpper;
using nvk::codes::Mod97;
using nvk::codes::StoreField;

constexpr int kContentMax = 30;

// The alphabet of a cleaned code: letters, digits and the placeholder.
bool IsCodeChar(char c) {
    return nvk::codes::IsDigit(c) || nvk::codes::IsUpperLetter(c) || c == '#';
}

// The cleaned form of the content field, in `out` of at least 31 bytes.
int CleanContent(const sIBAN& iban, char* out) {
    return nvk::codes::FoldAndKeep(iban.szContent, FieldLength(iban.szContent), out, IsCodeChar);
}

// A slice of cleaned content, without the placeholders, into a field.
template <std::size_t N>
void StorePiece(char (&field)[N], const char* content, int length, int from, int count) {
    char piece[N];
    int n = 0;
    for (int i = from; i < length && i < from + count && n < static_cast<int>(N) - 1; ++i) {
        if (content[i] != '#') {
            piece[n++] = content[i];
        }
    }
    StoreField(field, piece, n);
}

}  // namespace

EIBAN::EIBAN(const Chaine& code, bool bPartial) {
    SetIBAN(code, bPartial);
}

EIBAN::EIBAN(const sIBAN& iban) {
    SetIBAN(FieldText(iban.szCountry) + FieldText(iban.szCheckSum) + FieldText(iban.szContent),
            false);
}

EIBAN::EIBAN(const sRIB& rib) {
    SetRIB(rib);
}

EIBAN::EIBAN(const sSwissAccount& account) {
    SetSwissAccount(account);
}

EIBAN& EIBAN::operator=(const sIBAN& iban) {
    static_cast<sIBAN&>(*this) = iban;
    return *this;
}

bool EIBAN::operator==(const EIBAN& other) const {
    return GetIBAN_EDI() == other.GetIBAN_EDI();
}

bool EIBAN::IsEmpty() const {
    return szCountry[0] == 0 && szCheckSum[0] == 0 && szContent[0] == 0;
}

void EIBAN::Clear() {
    static_cast<sIBAN&>(*this) = sIBAN{};
}

Chaine EIBAN::CleanCode(const Chaine& text) {
    Chaine clean = text;
    clean.Upper().KeepOnly("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789#");
    return clean;
}

Chaine EIBAN::CountryCode() const {
    return CleanCode(FieldText(szCountry));
}
Chaine EIBAN::CheckSum() const {
    return CleanCode(FieldText(szCheckSum));
}
Chaine EIBAN::Content() const {
    return CleanCode(FieldText(szContent));
}

// The code's first four characters (country and check position) go behind
// the rest, letters count by their two-digit values and placeholders as 0.
// What stands in the check position is computed in.
Chaine EIBAN::CalculChecksum(const Chaine& code) {
    const Chaine clean = CleanCode(code);
    if (clean.Length() < 4) {
        return {};
    }
    Mod97 r;
    r.Feed(clean.c_str() + 4, clean.Length() - 4, Mod97::Placeholder::Zero);
    r.Feed(clean.c_str(), 4, Mod97::Placeholder::Zero);
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02u", 98 - r.Value());
    return digits;
}

bool EIBAN::CheckSumIsOK() const {
    // The raw fields are joined and turned before they are cleaned, so a short
    // country is filled with the placeholder and a short check field is not.
    char raw[sizeof(sIBAN) + 2];
    int n = FieldLength(szCountry);
    std::memcpy(raw, szCountry, n);
    for (; n < 2; ++n) {
        raw[n] = '#';
    }
    const int check = FieldLength(szCheckSum);
    std::memcpy(raw + n, szCheckSum, check);
    n += check;
    const int content = FieldLength(szContent);
    std::memcpy(raw + n, szContent, content);
    n += content;
    const int head = n < 4 ? n : 4;
    Mod97 r;
    return r.Feed(raw + head, n - head, Mod97::Placeholder::Reject) &&
           r.Feed(raw, head, Mod97::Placeholder::Reject) && r.Value() == 1;
}

bool EIBAN::IsValid() const {
    if (szCountry[0] == 0 || szCheckSum[0] == 0 || szContent[0] == 0 || !CheckSumIsOK()) {
        return false;
    }
    // The raw field decides, so a country held in lower case skips the
    // national test.
    if (std::strncmp(szCountry, "FR", sizeof szCountry) == 0) {
        const CRIB rib = GetRIB();
        return CRIB::TestRIBEx(rib.szAgence, rib.szGuichet, rib.szCompte, rib.szCle) != 0;
    }
    if (std::strncmp(szCountry, "CH", sizeof szCountry) == 0) {
        return GetSwissAccount().IsValid();
    }
    return true;
}

bool EIBAN::Validate() {
    const Chaine content = FieldText(szContent);
    const Chaine checkSum = FieldText(szCheckSum);
    const Chaine country = FieldText(szCountry);
    return SetContent(content) && SetCheckSum(checkSum) && SetCountryCode(country);
}

Chaine EIBAN::GetIBAN_EDI() const {
    if (!IsValid()) {
        return {};
    }
    return CleanCode(FieldText(szCountry) + FieldText(szCheckSum) + FieldText(szContent));
}

Chaine EIBAN::GetIBAN_Printable() const {
    if (!IsValid()) {
        return {};
    }
    std::string text = "IBAN ";
    text.append(szCountry, FieldLength(szCountry)).append(szCheckSum, FieldLength(szCheckSum));
    const int length = FieldLength(szContent);
    for (int pos = 0; pos < length; pos += 4) {
        text.append(1, ' ').append(szContent + pos, std::min(4, length - pos));
    }
    for (char& c : text) {
        c = FoldUpper(c);
    }
    return Chaine(text.data(), static_cast<int>(text.size()));
}

unsigned EIBAN::PrintBlockCount() const {
    if (IsEmpty()) {
        return 0;
    }
    return static_cast<unsigned>(Content().Length() + 3) / 4 + 2;
}

Chaine EIBAN::PrintBlock(unsigned index) const {
    if (IsEmpty()) {
        return {};
    }
    if (index == 0) {
        return "IBAN";
    }
    if (index == 1) {
        return CountryCode() + CheckSum();
    }
    const Chaine content = Content();
    const unsigned long long pos = (static_cast<unsigned long long>(index) - 2) * 4;
    if (pos >= static_cast<unsigned long long>(content.Length())) {
        return {};
    }
    return content.Mid(static_cast<int>(pos), 4);
}

bool EIBAN::SetIBAN(const Chaine& code, bool bPartial) {
    Clear();
    if (code.IsEmpty()) {
        return bPartial;
    }
    Chaine clean = CleanCode(code);
    if (clean.Left(4) == "IBAN") {
        clean = clean.Mid(4);
    }
    // The content must stay below 30 characters here, one less than the
    // field takes through the other setters.
    if (!bPartial && (clean.Length() < 5 || clean.Length() - 4 >= kContentMax)) {
        return false;
    }
    StoreField(szCountry, clean.Left(2));
    if (clean.Length() > 2) {
        StoreField(szCheckSum, clean.Mid(2, 2));
    }
    if (clean.Length() > 4) {
        StoreField(szContent, clean.Mid(4));
    }
    return true;
}

bool EIBAN::SetIBAN(const Chaine& country, const Chaine& content, const Chaine& checkSum) {
    if (country.Length() != 2 || content.Length() > kContentMax ||
        (checkSum.Length() != 2 && !checkSum.IsEmpty())) {
        return false;
    }
    StoreField(szCountry, country);
    StoreField(szContent, CleanCode(content));
    StoreField(szCheckSum,
               checkSum.IsEmpty() ? CalculChecksum(country + "00" + content) : checkSum);
    return true;
}

bool EIBAN::SetCountryCode(const Chaine& country) {
    if (country.Length() != 2) {
        return false;
    }
    StoreField(szCountry, country);
    return true;
}

bool EIBAN::SetCheckSum(const Chaine& checkSum) {
    if (checkSum.Length() != 2) {
        return false;
    }
    const char folded[] = {FoldUpper(checkSum.c_str()[0]), FoldUpper(checkSum.c_str()[1])};
    StoreField(szCheckSum, folded, 2);
    return true;
}

bool EIBAN::SetContent(const Chaine& content) {
    if (content.Length() > kContentMax) {
        return false;
    }
    StoreField(szContent, CleanCode(content));
    return true;
}

bool EIBAN::HasRIB() const {
    return CountryCode() == "FR";
}

bool EIBAN::HasSwissAccount() const {
    return CountryCode() == "CR";
}

CRIB EIBAN::GetRIB() const {
    char content[sizeof szContent];
    const int n = CleanContent(*this, content);
    CRIB rib;
    if (n > 0) {
        StorePiece(rib.szAgence, content, n, 0, 5);
    }
    if (n > 5) {
        StorePiece(rib.szGuichet, content, n, 5, 5);
    }
    if (n > 10) {
        StorePiece(rib.szCompte, content, n, 10, 11);
    }
    if (n > 21) {
        StorePiece(rib.szCle, content, n, 21, n - 21);
    }
    return rib;
}

CSwissAccount EIBAN::GetSwissAccount() const {
    char content[sizeof szContent];
    const int n = CleanContent(*this, content);
    CSwissAccount account;
    if (n > 0) {
        StorePiece(account.szClearing, content, n, 0, 5);
    }
    if (n > 5) {
        StorePiece(account.szCompte, content, n, 5, n - 5);
    }
    return account;
}

bool EIBAN::SetRIB(const sRIB& rib) {
    Clear();
    Chaine agence = FieldText(rib.szAgence);
    Chaine guichet = FieldText(rib.szGuichet);
    Chaine compte = FieldText(rib.szCompte);
    Chaine cle = FieldText(rib.szCle);
    if (agence.IsEmpty() && guichet.IsEmpty() && compte.IsEmpty() && cle.IsEmpty()) {
        return false;
    }
    // Missing positions of a partly known account become placeholders, so
    // that each known part keeps its place where the content allows.
    Chaine content;
    if (!agence.IsEmpty() && agence.Length() < 5 &&
        !(guichet.IsEmpty() && compte.IsEmpty() && cle.IsEmpty())) {
        agence.PadLeft(5, '#');
    }
    content += agence;
    if (!guichet.IsEmpty()) {
        if (guichet.Length() < 5 && !(compte.IsEmpty() && cle.IsEmpty())) {
            guichet.PadLeft(5, '#');
        }
        content.PadLeft(5, '#');
        content += guichet;
    }
    if (!compte.IsEmpty()) {
        if (compte.Length() < 11 && !cle.IsEmpty()) {
            compte.PadLeft(11, '#');
        }
        content.PadLeft(10, '#');
        content += compte;
    }
    if (!cle.IsEmpty()) {
        cle.PadLeft(2, '#');
        content.PadLeft(21, '#');
        content += cle;
    }
    return SetIBAN("FR" + CalculChecksum("FR00" + content) + content, false);
}

bool EIBAN::SetSwissAccount(const sSwissAccount& account) {
    Chaine clearing = FieldText(account.szClearing);
    const Chaine compte = FieldText(account.szCompte);
    Clear();
    if (clearing.IsEmpty() && compte.IsEmpty()) {
        return false;
    }
    // Clearing numbers are numeric, so they are filled with zeros.
    if (!clearing.IsEmpty() && !compte.IsEmpty()) {
        clearing.PadLeft(5, '0');
    }
    const Chaine content = clearing + compte;
    return SetIBAN("CH" + CalculChecksum("CH00" + content) + content, false);
}

void EIBAN::RecomputeCheckSum() {
    SetCheckSum(CalculChecksum(GetIBAN_EDI()));
}
