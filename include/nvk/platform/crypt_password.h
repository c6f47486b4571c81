// A short password kept scrambled in a fixed 32-byte buffer, so that it can
// be stored without standing there in clear. This is scrambling, not
// cryptography: the key is the caller's text and travels with the buffer.
//
// The 32 bytes, before every byte has its nibbles swapped, for a password of
// L characters (at most 31) at offset s:
//   0            s itself
//   1 .. s       random bytes
//   s+1 .. s+L   the password, each byte xor the key stream
//   s+L+1        the terminator, that is the key stream byte
//   then         random bytes, short of position 31
//   31           the key stream byte
// The key stream byte of position p is the key's character p modulo its
// length; an empty key gives zeros.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/nvkutil_export.h"

class CArchive;
class CString;

class NVKUTIL_EXPORT CCryptPassword {
public:
    using byte = unsigned char;
    static constexpr int kBufferSize = 32;
    static constexpr int kMaxPassword = kBufferSize - 1;

    CCryptPassword();
    CCryptPassword(const CCryptPassword& other);
    CCryptPassword& operator=(const CCryptPassword& other);
    // An already scrambled buffer; a null key leaves the key empty.
    CCryptPassword(const byte (*buffer)[kBufferSize], const char* key);
    CCryptPassword(const char* password, const char* key);
    virtual ~CCryptPassword();

    void Set(const byte (*buffer)[kBufferSize], const char* key);
    // Scrambles at an offset taken from the clock, so two calls with one
    // password differ in general. Reseeds the C runtime's rand().
    void Set(const char* password, const char* key);

    // The password in clear; a wrong key gives a wrong text, not a failure.
    // Reading stops at the buffer's last position (31) even when the offset
    // in position 0 leaves no room: read on, it would leave the buffer.
    Chaine AsChaine() const;
    CString AsString() const;
    bool Is(const char* text) const;
    bool Exists() const;

    // 64 lower-case hexadecimal digits.
    void PrintTo(CString& out) const;
    void CopyTo(byte (*out)[kBufferSize]) const;
    const byte (*GetBuffer() const)[kBufferSize] { return &m_Buffer; }
    const Chaine& GetKey() const { return m_Key; }

    // The buffers only: keys are not compared, and two scrambles of one
    // password in general differ. Is compares passwords.
    bool operator==(const CCryptPassword& other) const;
    bool operator!=(const CCryptPassword& other) const { return !(*this == other); }
    bool operator==(const byte (*buffer)[kBufferSize]) const;
    bool operator!=(const byte (*buffer)[kBufferSize]) const { return !(*this == buffer); }

    static byte InvertPwdBits(byte value, byte mask) { return value ^ mask; }
    static byte ReverseNibbles(byte value) {
        return static_cast<byte>((value << 4) | (value >> 4));
    }

    // The buffer as 64 upper-case hexadecimal digits, then the key, both in
    // the archive form of the library's string.
    virtual void Serialize(CArchive& archive);

private:
    // Comparing with clear text is Is(); this stays undefined.
    bool operator==(const char* text) const;

    void KeyStream(byte (&stream)[kBufferSize]) const;

    byte m_Buffer[kBufferSize];
    Chaine m_Key;

    static_assert(sizeof m_Buffer == 32);
};
static_assert(sizeof(CCryptPassword) == sizeof(void*) + 32 + sizeof(Chaine));
