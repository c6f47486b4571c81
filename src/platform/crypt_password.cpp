#include "nvk/platform/crypt_password.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "nvk/afx/archive.h"
#include "nvk/afx/cstring.h"

CCryptPassword::CCryptPassword() : m_Buffer{} {}

CCryptPassword::CCryptPassword(const CCryptPassword& other) = default;

CCryptPassword& CCryptPassword::operator=(const CCryptPassword& other) = default;

CCryptPassword::CCryptPassword(const byte (*buffer)[kBufferSize], const char* key) {
    Set(buffer, key);
}

CCryptPassword::CCryptPassword(const char* password, const char* key) {
    Set(password, key);
}

CCryptPassword::~CCryptPassword() = default;

void CCryptPassword::KeyStream(byte (&stream)[kBufferSize]) const {
    const int length = m_Key.Length();
    for (int p = 0; p < kBufferSize; ++p) {
        stream[p] = length > 0 ? static_cast<byte>(m_Key.c_str()[p % length]) : 0;
    }
}

void CCryptPassword::Set(const byte (*buffer)[kBufferSize], const char* key) {
    if (buffer != nullptr) {
        std::memcpy(m_Buffer, *buffer, kBufferSize);
    } else {
        std::memset(m_Buffer, 0, kBufferSize);
    }
    m_Key = key != nullptr ? key : "";
}

void CCryptPassword::Set(const char* password, const char* key) {
    m_Key = key != nullptr ? key : "";
    KeyStream(m_Buffer);
    const std::size_t given = password != nullptr ? std::strlen(password) : 0;
    byte clear[kBufferSize] = {};
    const int length = static_cast<int>(std::min<std::size_t>(given, kMaxPassword));
    if (length > 0) {
        std::memcpy(clear, password, length);
    }

    const int room = kBufferSize - static_cast<int>(std::min<std::size_t>(given + 1, kMaxPassword));
    const int offset = room > 1 ? static_cast<int>(static_cast<std::uint32_t>(std::time(nullptr)) %
                                                   static_cast<std::uint32_t>(room))
                                : 0;
    m_Buffer[0] = static_cast<byte>(offset);
    std::srand(static_cast<unsigned>(offset));
    int p = 1;
    for (; p <= offset; ++p) {
        m_Buffer[p] = static_cast<byte>(std::rand());
    }
    // The password and its terminator; a password of 31 has no room for it.
    for (int i = 0; i <= length && p < kBufferSize; ++i, ++p) {
        m_Buffer[p] = InvertPwdBits(clear[i], m_Buffer[p]);
    }
    // One position short of the room left, so the last byte keeps the key
    // stream.
    for (int n = room - offset - 2; n > 0; --n, ++p) {
        m_Buffer[p] = static_cast<byte>(std::rand());
    }
    for (byte& b : m_Buffer) {
        b = ReverseNibbles(b);
    }
}

Chaine CCryptPassword::AsChaine() const {
    byte stream[kBufferSize];
    KeyStream(stream);
    char text[kMaxPassword];
    int length = 0;
    for (int p = ReverseNibbles(m_Buffer[0]) + 1; p < kBufferSize && length < kMaxPassword; ++p) {
        const byte c = InvertPwdBits(ReverseNibbles(m_Buffer[p]), stream[p]);
        if (c == 0) {
            break;
        }
        text[length++] = static_cast<char>(c);
    }
    return Chaine(text, length);
}

CString CCryptPassword::AsString() const {
    const Chaine text = AsChaine();
    return CString(text.c_str(), text.Length());
}

bool CCryptPassword::Is(const char* text) const {
    return AsChaine() == (text != nullptr ? text : "");
}

bool CCryptPassword::Exists() const {
    return !AsChaine().IsEmpty();
}

void CCryptPassword::PrintTo(CString& out) const {
    Chaine hex;
    hex.FromHex(m_Buffer, kBufferSize).Lower();
    out = hex.c_str();
}

void CCryptPassword::CopyTo(byte (*out)[kBufferSize]) const {
    std::memcpy(*out, m_Buffer, kBufferSize);
}

bool CCryptPassword::operator==(const CCryptPassword& other) const {
    return *this == &other.m_Buffer;
}

bool CCryptPassword::operator==(const byte (*buffer)[kBufferSize]) const {
    return std::memcmp(m_Buffer, *buffer, kBufferSize) == 0;
}

void CCryptPassword::Serialize(CArchive& archive) {
    if (archive.IsStoring()) {
        Chaine hex;
        archive << hex.FromHex(m_Buffer, kBufferSize) << m_Key;
        return;
    }
    Chaine hex;
    archive >> hex >> m_Key;
    // A short text fills only the beginning of a cleared buffer.
    hex.ToBytes(m_Buffer, kBufferSize);
}
