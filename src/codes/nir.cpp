#include "nvk/codes/nir.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "codes/code_text.h"
#include "nvk/core/big_number.h"

namespace {

using nvk::codes::FieldText;

// The number with the Corsican department and the first provisional mark
// replaced by digits; the length does not change.
struct ModifiedNumber {
    explicit ModifiedNumber(const CNIR& nir) : length(nvk::codes::FieldLength(nir.szNum)) {
        std::memcpy(text, nir.szNum, length);
        text[length] = 0;
        if (length >= 7 && text[5] == '2' && (text[6] == 'A' || text[6] == 'B')) {
            text[5] = '1';
            text[6] = text[6] == 'A' ? '9' : '8';
        }
        if (char* mark = std::strstr(text, "PROVIS"); mark != nullptr) {
            std::memcpy(mark, "796592", 6);
        }
    }

    bool IsDigits() const {
        return std::strspn(text, "0123456789") == static_cast<std::size_t>(length);
    }

    char text[sizeof(CNIR::szNum) + 1];
    int length;
};

}  // namespace

bool CNIR::Set(const Chaine& text) {
    if (text.Length() > 13) {
        return Set(text.Left(13), text.Mid(13));
    }
    Chaine num = text;
    num.PadRight(13, '0');
    return Set(num, Chaine());
}

bool CNIR::Set(const Chaine& num, const Chaine& key) {
    nvk::codes::StoreField(szKey, key.Length() == 2 ? key : Chaine("0"));
    nvk::codes::StoreField(szNum, num);
    return IsValid();
}

bool CNIR::Set(const Chaine& num, int key) {
    char text[16];
    std::snprintf(text, sizeof text, "%02d", key);
    return Set(num, Chaine(text));
}

Chaine CNIR::iGetKey() const {
    return FieldText(szKey);
}

int CNIR::GetStoredKey() const {
    const Chaine key = iGetKey();
    return key.IsInt() ? key.ToInt() : 0;
}

bool CNIR::IsTemporary() const {
    return FieldText(szNum).Find("PROVIS") >= 0;
}

Chaine CNIR::iGetModifiedNum() const {
    const ModifiedNumber num(*this);
    return Chaine(num.text, num.length);
}

int CNIR::iGetValidKey() const {
    return 97 - EBigNumber(iGetModifiedNum()).Modulo(97);
}

bool CNIR::IsValid() const {
    // Only a number of digits can be valid, and at most 13 digits fit a
    // 64-bit word: the key is then worked out without the big number.
    const ModifiedNumber num(*this);
    if (!num.IsDigits()) {
        return false;
    }
    std::uint64_t value = 0;
    for (int i = 0; i < num.length; ++i) {
        value = value * 10 + static_cast<unsigned>(num.text[i] - '0');
    }
    return GetStoredKey() == 97 - static_cast<int>(value % 97);
}

Chaine CNIR::GetDisplay(char separator) const {
    const Chaine num = FieldText(szNum);
    if (separator == 0) {
        return num;
    }
    return num + separator + (IsValid() ? iGetKey() : Chaine("00"));
}

void CNIR::GetDisplay(CString& out, char separator) const {
    const Chaine display = GetDisplay(separator);
    out = CString(display.c_str(), display.Length());
}
