#include "nvk/codes/swiss_account.h"

#include <cstring>

#include "codes/code_text.h"

CSwissAccount::CSwissAccount() : sSwissAccount{} {}

CSwissAccount::CSwissAccount(const sSwissAccount& account) : sSwissAccount(account) {}

CSwissAccount::CSwissAccount(const CSwissAccount& account) : sSwissAccount(account) {}

CSwissAccount::~CSwissAccount() = default;

CSwissAccount& CSwissAccount::operator=(const sSwissAccount& account) {
    static_cast<sSwissAccount&>(*this) = account;
    return *this;
}

CSwissAccount& CSwissAccount::operator=(const CSwissAccount& account) {
    return *this = static_cast<const sSwissAccount&>(account);
}

void CSwissAccount::SetClearing(const Chaine& clearing) {
    nvk::codes::StoreField(szClearing, clearing);
}

void CSwissAccount::SetCompte(const Chaine& compte) {
    nvk::codes::StoreField(szCompte, compte);
}

bool CSwissAccount::IsEmpty() const {
    return IsEmpty(szClearing, szCompte);
}

bool CSwissAccount::IsEmpty(const char* clearing, const char* compte) {
    return clearing == nullptr || compte == nullptr || (*clearing == 0 && *compte == 0);
}

bool CSwissAccount::IsValid() const {
    return nvk::codes::FieldLength(szClearing) == 5 && szCompte[0] != 0;
}

bool CSwissAccount::IsValid(const char* clearing, const char* compte) {
    return clearing != nullptr && compte != nullptr && std::strlen(clearing) == 5 && *compte != 0;
}

bool CSwissAccount::operator==(const sSwissAccount& account) const {
    return std::strncmp(szClearing, account.szClearing, sizeof szClearing) == 0 &&
           std::strncmp(szCompte, account.szCompte, sizeof szCompte) == 0;
}
