#include "nvk/codes/rib.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "codes/mod97.h"

namespace {

using nvk::codes::IsDigit;
using nvk::codes::IsUpperLetter;

// The RIB's letter table: A-I give 1-9, J-R give 1-9, S-Z give 2-9.
char RibDigit(char c) {
    static constexpr char kTable[] = "12345678912345678923456789";
    return kTable[c - 'A'];
}

// Exactly as printf's "%s" prints, a null argument reads as "(null)".
const char* Text(const char* s) {
    return s != nullptr ? s : "(null)";
}

}  // namespace

CRIB::CRIB() : sRIB{} {}

CRIB::CRIB(const sRIB& rib) : sRIB(rib) {}

CRIB& CRIB::operator=(const sRIB& rib) {
    static_cast<sRIB&>(*this) = rib;
    return *this;
}

void CRIB::StoreRunning(std::size_t offset, const CString& text) {
    // The copy may spill into the fields behind, but never past the record.
    char* record = reinterpret_cast<char*>(static_cast<sRIB*>(this));
    const std::size_t room = sizeof(sRIB) - offset - 1;
    const std::size_t n = std::min(static_cast<std::size_t>(text.GetLength()), room);
    std::memcpy(record + offset, text.GetString(), n);
    record[offset + n] = 0;
}

void CRIB::SetNomBanque(const CString& text) {
    StoreRunning(offsetof(sRIB, szNomBanque), text);
}
void CRIB::SetAdrBanque(const CString& text) {
    StoreRunning(offsetof(sRIB, szAdrBanque), text);
}
void CRIB::SetAgence(const CString& text) {
    StoreRunning(offsetof(sRIB, szAgence), text);
}
void CRIB::SetGuichet(const CString& text) {
    StoreRunning(offsetof(sRIB, szGuichet), text);
}
void CRIB::SetCompte(const CString& text) {
    StoreRunning(offsetof(sRIB, szCompte), text);
}
void CRIB::SetCle(const CString& text) {
    StoreRunning(offsetof(sRIB, szCle), text);
}

bool CRIB::IsEmpty() const {
    return IsEmpty(szAgence, szGuichet, szCompte, szCle);
}

bool CRIB::IsEmpty(const char* agence, const char* guichet, const char* compte, const char* cle) {
    if (agence == nullptr || guichet == nullptr || compte == nullptr || cle == nullptr) {
        return true;
    }
    return *agence == 0 && *guichet == 0 && *compte == 0 && *cle == 0;
}

bool CRIB::operator==(const sRIB& rib) const {
    return std::strncmp(szAgence, rib.szAgence, sizeof szAgence) == 0 &&
           std::strncmp(szGuichet, rib.szGuichet, sizeof szGuichet) == 0 &&
           std::strncmp(szCompte, rib.szCompte, sizeof szCompte) == 0 &&
           std::strncmp(szCle, rib.szCle, sizeof szCle) == 0;
}

bool CRIB::IsValid() const {
    return TestRIB(szAgence, szGuichet, szCompte, szCle) != 0;
}

bool CRIB::IsValidEx() const {
    return TestRIBEx(szAgence, szGuichet, szCompte, szCle) != 0;
}

CString CRIB::ExpectedKey() const {
    return ExpectedKey(szAgence, szGuichet, szCompte);
}

CString CRIB::ExpectedKey(const char* agence, const char* guichet, const char* compte) {
    CString joined;
    joined.Format("%s%s%s", Text(agence), Text(guichet), Text(compte));
    if (joined.GetLength() != 21) {
        return {};
    }
    char digits[21];
    for (int i = 0; i < 21; ++i) {
        const char c = joined[i];
        if (IsUpperLetter(c)) {
            digits[i] = RibDigit(c);
        } else if (IsDigit(c)) {
            digits[i] = c;
        } else {
            return {};
        }
    }
    auto number = [&digits](int from, int count) {
        long value = 0;
        for (int i = from; i < from + count; ++i) {
            value = value * 10 + (digits[i] - '0');
        }
        return value;
    };
    const long a = number(0, 5);
    const long g = number(5, 5);
    const long c1 = number(10, 6);
    const long c2 = number(16, 5);
    CString key;
    key.Format("%02ld", static_cast<int>(97 - (89 * a + 15 * g + 76 * c1 + 3 * c2) % 97));
    return key;
}

namespace {

// The first steps of both tests: null arguments, the empty RIB, a zero key.
// Returns 1 or 0 when they settle the answer, -1 when the test goes on.
int Prescreen(const char* agence, const char* guichet, const char* compte, const char* cle) {
    if (agence == nullptr) {
        return guichet == nullptr && compte == nullptr && cle == nullptr ? 1 : 0;
    }
    if (guichet == nullptr || compte == nullptr || cle == nullptr) {
        return 0;
    }
    if (CRIB::IsEmpty(agence, guichet, compte, cle)) {
        return 1;
    }
    return std::atoi(cle) == 0 ? 0 : -1;
}

}  // namespace

int CRIB::TestRIBEx(const char* agence, const char* guichet, const char* compte, const char* cle) {
    if (const int settled = Prescreen(agence, guichet, compte, cle); settled >= 0) {
        return settled;
    }
    const char* parts[] = {agence, guichet, compte, cle};
    std::size_t total = 0;
    for (const char* part : parts) {
        total += std::strlen(part);
    }
    if (total != 23) {
        return 0;
    }
    nvk::codes::Mod97 r;
    for (const char* part : parts) {
        for (const char* p = part; *p != 0; ++p) {
            if (IsUpperLetter(*p)) {
                r.Digit(static_cast<unsigned>(RibDigit(*p) - '0'));
            } else if (IsDigit(*p)) {
                r.Digit(static_cast<unsigned>(*p - '0'));
            } else {
                return 0;
            }
        }
    }
    return r.Value() == 0 ? 1 : 0;
}

int CRIB::TestRIB(const char* agence, const char* guichet, const char* compte, const char* cle) {
    if (const int settled = Prescreen(agence, guichet, compte, cle); settled >= 0) {
        return settled;
    }
    CString account(compte);
    for (int i = 0; i < account.GetLength(); ++i) {
        if (IsUpperLetter(account[i])) {
            account.SetAt(i, RibDigit(account[i]));
        }
    }
    double r = std::fmod(std::atof(agence), 97);
    r = std::fmod(std::atof(guichet) + r * 100000.0, 97);
    r = std::fmod(std::atof(account) + r * 1e11, 97);
    r = std::fmod(std::atof(cle) + r * 100.0, 97);
    return r == 0.0 ? 1 : 0;
}
