// CString: the framework's 8-bit string with value semantics, used at the
// library's older interfaces. Text is bytes in the ANSI code page; case
// mapping and blank tests are those of the C locale (ASCII only), which is
// what the framework's own string does in a program that never changes its
// locale. Positions are signed: a position out of range gives -1 from the
// searches and the empty or whole value from the extractions, never a fault.
#pragma once

#include <cstdarg>
#include <string>

#include "nvk/afx/allocator.h"
#include "nvk/nvkafx_export.h"

class NVKAFX_EXPORT CString {
public:
    CString() = default;
    CString(const char* text);  // null gives the empty string
    CString(const char* text, int length);
    explicit CString(char c, int repeat = 1);
    CString(const CString&) = default;
    CString(CString&&) noexcept = default;
    CString& operator=(const CString&) = default;
    CString& operator=(CString&&) noexcept = default;
    CString& operator=(const char* text);
    CString& operator=(char c);

    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }

    // The text, zero-terminated, valid until the next change.
    operator const char*() const { return m_text.c_str(); }
    const char* GetString() const { return m_text.c_str(); }

    // Out-of-range positions read 0 and write nothing.
    char GetAt(int index) const;
    char operator[](int index) const { return GetAt(index); }
    void SetAt(int index, char c);

    CString& operator+=(const CString& text);
    CString& operator+=(const char* text);
    CString& operator+=(char c);

    // -1, 0 or 1, comparing unsigned bytes; the NoCase form folds A-Z to a-z.
    // Two CStrings compare their whole contents, zero bytes included.
    int Compare(const CString& text) const;
    int Compare(const char* text) const;
    int CompareNoCase(const char* text) const;

    CString Left(int count) const;
    CString Right(int count) const;
    CString Mid(int first) const;
    CString Mid(int first, int count) const;

    // Positions, or -1. A negative start counts as 0.
    int Find(char c, int start = 0) const;
    int Find(const char* text, int start = 0) const;
    int ReverseFind(char c) const;

    void MakeUpper();
    void MakeLower();
    void MakeReverse();
    // Blanks are space, tab, line feed, vertical tab, form feed and return.
    void TrimLeft();
    void TrimLeft(char c);
    void TrimLeft(const char* set);
    void TrimRight();
    void TrimRight(char c);
    void TrimRight(const char* set);
    void Trim() {
        TrimRight();
        TrimLeft();
    }
    // The number of replacements; an empty `from` replaces nothing.
    int Replace(char from, char to);
    int Replace(const char* from, const char* to);
    int Insert(int index, char c);
    int Delete(int index, int count = 1);

    // printf-style, whatever the length of the result, in the library's own
    // dialect ("%I64d", "%S" of WCHAR text, ...): no printf attribute, since
    // the compiler would check it against the C library's.
    void Format(const char* format, ...);
    void FormatV(const char* format, va_list args);

    // Room for at least `minLength` characters and a terminator, the current
    // text in front. ReleaseBuffer ends the direct access and sets the length:
    // to `newLength`, or to the first zero when it is -1.
    char* GetBuffer(int minLength = 0);
    char* GetBufferSetLength(int length);
    void ReleaseBuffer(int newLength = -1);

private:
    // Every allocation goes through the framework's allocator, so that
    // exhausted memory leaves any operation as CMemoryException*.
    using Text =
        std::basic_string<char, std::char_traits<char>, nvk::afx::FrameworkAllocator<char>>;
    Text m_text;
};

NVKAFX_EXPORT CString operator+(const CString& left, const CString& right);
NVKAFX_EXPORT CString operator+(const CString& left, const char* right);
NVKAFX_EXPORT CString operator+(const char* left, const CString& right);
NVKAFX_EXPORT CString operator+(const CString& left, char right);
NVKAFX_EXPORT CString operator+(char left, const CString& right);

inline bool operator==(const CString& left, const CString& right) {
    return left.Compare(right) == 0;
}
inline bool operator==(const CString& left, const char* right) {
    return left.Compare(right) == 0;
}
inline bool operator==(const char* left, const CString& right) {
    return right.Compare(left) == 0;
}
inline bool operator!=(const CString& left, const CString& right) {
    return !(left == right);
}
inline bool operator!=(const CString& left, const char* right) {
    return !(left == right);
}
inline bool operator!=(const char* left, const CString& right) {
    return !(left == right);
}
inline bool operator<(const CString& left, const CString& right) {
    return left.Compare(right) < 0;
}
inline bool operator<(const CString& left, const char* right) {
    return left.Compare(right) < 0;
}
inline bool operator<(const char* left, const CString& right) {
    return right.Compare(left) > 0;
}
inline bool operator>(const CString& left, const CString& right) {
    return right < left;
}
inline bool operator<=(const CString& left, const CString& right) {
    return !(right < left);
}
inline bool operator>=(const CString& left, const CString& right) {
    return !(left < right);
}
