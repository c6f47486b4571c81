// Bit flags. Two numberings live side by side and must not be mixed up:
// SetBit, ClearBit and IsBitSet count the lowest bit as 1, bdFlag and CFlag
// count it as 0. Both take the bit number modulo 32, as the processor's
// shifts of a 32-bit word do, so bit 33 of the first family is bit 1.
#pragma once

#include "nvk/nvkutil_export.h"

NVKUTIL_EXPORT void SetBit(long& word, long bit);
NVKUTIL_EXPORT void ClearBit(long& word, long bit);
// Non-zero when the bit is set.
NVKUTIL_EXPORT int IsBitSet(long word, long bit);

// Operations on a word that the object points at and does not own. An object
// that points nowhere reads 0 and ignores changes, rather than fault.
class NVKUTIL_EXPORT bdFlag {
public:
    bdFlag() : m_pFlags(nullptr) {}
    explicit bdFlag(int* word) : m_pFlags(word) {}
    // Copies share the word.
    bdFlag(const bdFlag&) = default;
    // Assignments replace the word's value, never the pointer.
    bdFlag& operator=(int value);
    bdFlag& operator=(const bdFlag& other);
    void SetFlags(int& value) { *this = value; }
    void SetFlags(const bdFlag& other) { *this = other; }

    bool operator[](int bit) const { return Is(bit); }
    bool GetFlag(int bit) const { return Is(bit); }
    bool Is(int bit) const;
    int GetFlags() const { return m_pFlags != nullptr ? *m_pFlags : 0; }

    void SetFlag(int bit);
    void ResetFlag(int bit);
    void SetOpposite(int bit);
    void ResetFlags() { *this = 0; }

    // Bit numbers ending with -1: whether all of them are set (true for an
    // empty list), or one of them (false for an empty list).
    bool IsAllOf(int first, ...) const;
    bool IsOneOf(int first, ...) const;

protected:
    int* m_pFlags;
};

// A bdFlag that carries its own word, or points at another's.
class NVKUTIL_EXPORT CFlag : public bdFlag {
public:
    CFlag() : bdFlag(&m_Flags), m_Flags(0) {}
    CFlag(int value) : bdFlag(&m_Flags), m_Flags(value) {}
    explicit CFlag(int* word) : bdFlag(word), m_Flags(0) {}
    // The copy carries its own word, with the value of the other's.
    CFlag(const CFlag& other) : bdFlag(&m_Flags), m_Flags(other.GetFlags()) {}
    // Writes the other's value through this pointer, then takes the other's
    // own word too.
    CFlag& operator=(const CFlag& other);
    using bdFlag::operator=;

private:
    int m_Flags;
};
