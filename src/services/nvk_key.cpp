#include "nvk/services/nvk_key.h"

#include <cstring>
#include <ctime>

namespace {

using Bytes = unsigned char[8];

std::uint64_t FromBytes(const Bytes bytes) {
    std::uint64_t value = 0;
    std::memcpy(&value, bytes, 8);
    return value;
}

// The clock as a 32-bit count of seconds, written little-endian whatever the
// machine's order, so that keys read the same everywhere.
void PutClock(Bytes bytes) {
    const auto now = static_cast<std::uint32_t>(std::time(nullptr));
    for (int i = 0; i < 4; ++i) {
        bytes[3 + i] = static_cast<unsigned char>(now >> (8 * i));
    }
}

int HexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

}  // namespace

CNVKKey::CNVKKey() {
    Bytes bytes = {};
    PutClock(bytes);
    m_Value = FromBytes(bytes);
}

CNVKKey::CNVKKey(const Chaine& text) : m_Value(0) {
    FromString(text);
}

CNVKKey::CNVKKey(const char* text) : m_Value(0) {
    FromString(Chaine(text));
}

CNVKKey::CNVKKey(const CString& text) : m_Value(0) {
    FromString(Chaine(text));
}

CNVKKey::operator Chaine() const {
    Bytes bytes;
    std::memcpy(bytes, &m_Value, 8);
    Chaine text;
    return text.FromHex(bytes, 8).Lower();
}

CNVKKey::operator CString() const {
    return CString(static_cast<Chaine>(*this).c_str());
}

void CNVKKey::FromString(const Chaine& text) {
    if (text.Length() != 16) {
        m_Value = 0;
        return;
    }
    Bytes bytes;
    for (int i = 0; i < 8; ++i) {
        const int high = HexDigit(text.c_str()[2 * i]);
        const int low = HexDigit(text.c_str()[2 * i + 1]);
        if (high < 0 || low < 0) {
            m_Value = 0;
            return;
        }
        bytes[i] = static_cast<unsigned char>(high << 4 | low);
    }
    m_Value = FromBytes(bytes);
}

std::uint64_t CNVKKey::GenerateUniqueKey(const char* extension, const char* name) {
    Bytes bytes = {};
    if (extension != nullptr) {
        const char* ext = extension[0] == '.' ? extension + 1 : extension;
        for (int i = 0; i < 3 && ext[i] != '\0'; ++i) {
            bytes[i] = static_cast<unsigned char>(ext[i]);
        }
    }
    PutClock(bytes);
    if (name != nullptr) {
        for (const char* p = name; *p != '\0'; ++p) {
            bytes[7] = static_cast<unsigned char>(bytes[7] + static_cast<unsigned char>(*p));
        }
    }
    return FromBytes(bytes);
}
