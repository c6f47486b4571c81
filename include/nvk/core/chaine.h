// Chaine: the string of every interface of the library. One word, the address
// of zero-terminated 8-bit text (ANSI code page) inside a counted ChaineBuffer,
// never null. Copies share the buffer; every change copies first if it is
// shared. Positions and counts are signed, and out-of-range positions give
// the empty value, never an error.
#pragma once

#include <cstdint>

#include "nvk/core/chaine_buffer.h"

class CArchive;
class CString;

class Chaine {
public:
    Chaine();
    Chaine(const Chaine& other) : m_pText(other.m_pText) { nvk::AddReference(Buffer()); }
    // Text, or a string resource id when the upper 16 bits are zero (null is
    // id 0, the empty value).
    Chaine(const char* text);  // NOLINT(google-explicit-constructor): used as a text literal
    // `n` bytes from `bytes`. With `stripZeros`, trailing zero bytes go and
    // the text ends at the first zero; otherwise inner zeros stay.
    Chaine(const void* bytes, int n, bool stripZeros = false);
    explicit Chaine(const CString& text);
    ~Chaine() { nvk::ReleaseBuffer(Buffer()); }

    Chaine& operator=(const Chaine& other) { return Assign(other); }
    Chaine& operator=(const char* text) { return Assign(text); }

    // Shares the other value's buffer; the own reference goes first, which is
    // safe for any two distinct buffers.
    Chaine& Assign(const Chaine& other) {
        if (other.m_pText != m_pText) {
            nvk::ReleaseBuffer(Buffer());
            nvk::AddReference(other.Buffer());
            m_pText = other.m_pText;
        }
        return *this;
    }
    Chaine& Assign(const char* text);
    Chaine& Assign(const void* bytes, int n);
    // Copies at most n characters as strncpy does, then fits the buffer to
    // the first zero.
    Chaine& AssignCount(const char* text, int n);
    void Empty();
    // Resizes to n characters, writes the terminator and returns the
    // writable text; newly exposed bytes are undefined.
    char* SetLength(int n);

    int Length() const { return static_cast<int>(Buffer()->Size) - 1; }
    bool IsEmpty() const { return Buffer()->Size == 1; }
    operator const char*() const { return m_pText; }  // NOLINT(google-explicit-constructor)
    const char* c_str() const { return m_pText; }
    ChaineBuffer* Buffer() const { return ChaineBuffer::FromText(m_pText); }

    Chaine& operator+=(const Chaine& other);
    Chaine& operator+=(const char* text);
    Chaine& operator+=(char c);

    // Byte equality over Size bytes, the terminator with them.
    bool operator==(const Chaine& other) const;
    bool operator==(const char* text) const;
    // Equality that makes equal texts share one block: when equal with
    // different buffers, this value takes the other's.
    bool EqualAndShare(const Chaine& other);

    Chaine Left(int n) const;
    Chaine Right(int n) const;
    Chaine Mid(int pos) const;
    Chaine Mid(int pos, int n) const;

    // Removes and returns the character at pos; 0 at or behind the end.
    char RemoveAt(int pos);
    // Inserts c at pos; behind the end, the gap fills with blanks.
    void InsertAt(int pos, char c);
    void PadLeft(int n, char c);
    void PadRight(int n, char c);
    void ReplaceRange(int pos, int count, const char* text);

    // Writes exactly n bytes into a fixed field. CopyToPadded always ends
    // the field with `pad` when the text fills it; CopyToFixed then copies n
    // characters without pad. Neither adds a terminator of its own.
    void CopyToFixed(char* dest, int n, char pad) const;
    void CopyToPadded(char* dest, int n, char pad) const;

    // Length-prefixed text, as the framework counts its archived strings.
    void Serialize(CArchive& archive);

private:
    explicit Chaine(ChaineBuffer* buffer) : m_pText(buffer->Text()) {}
    void Take(ChaineBuffer* buffer) { m_pText = buffer->Text(); }
    void Append(const char* text, std::uint32_t size);

    friend Chaine operator+(const Chaine& left, const Chaine& right);
    friend Chaine operator+(const Chaine& left, const char* right);
    friend Chaine operator+(const char* left, const Chaine& right);
    friend Chaine operator+(const Chaine& left, char right);
    friend Chaine operator+(char left, const Chaine& right);
    friend Chaine Concatenate(const char* left, std::uint32_t leftLength, const char* right,
                              std::uint32_t rightSize);

    char* m_pText;
};
static_assert(sizeof(Chaine) == sizeof(char*));

Chaine operator+(const Chaine& left, const Chaine& right);
Chaine operator+(const Chaine& left, const char* right);
Chaine operator+(const char* left, const Chaine& right);
Chaine operator+(const Chaine& left, char right);
Chaine operator+(char left, const Chaine& right);

// The archive form: the framework's string length prefix, then the characters
// without a terminator.
CArchive& operator<<(CArchive& archive, const Chaine& value);
CArchive& operator>>(CArchive& archive, Chaine& value);

inline bool operator!=(const Chaine& left, const Chaine& right) {
    return !(left == right);
}
inline bool operator!=(const Chaine& left, const char* right) {
    return !(left == right);
}

// The module's empty value, holding one reference on the empty buffer from
// start-up to the end.
extern const Chaine SharedEmptyChaine;
