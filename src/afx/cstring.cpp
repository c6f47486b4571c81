#include "nvk/afx/cstring.h"

#include "afx/text_format.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

// C-locale classification, so that bytes of the upper half are left alone.
bool IsBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
char ToUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
char ToLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

int Sign(int value) {
    return (value > 0) - (value < 0);
}

std::string_view View(const char* text) {
    return text != nullptr ? std::string_view(text) : std::string_view();
}

}  // namespace

CString::CString(const char* text) : m_text(View(text)) {}

CString::CString(const char* text, int length) {
    if (text != nullptr && length > 0) {
        m_text.assign(text, static_cast<std::size_t>(length));
    }
}

CString::CString(char c, int repeat) {
    if (repeat > 0) {
        m_text.assign(static_cast<std::size_t>(repeat), c);
    }
}

CString& CString::operator=(const char* text) {
    // View() copes with text pointing into our own buffer: assign copies first.
    m_text.assign(View(text));
    return *this;
}

CString& CString::operator=(char c) {
    m_text.assign(1, c);
    return *this;
}

char CString::GetAt(int index) const {
    return index >= 0 && index < GetLength() ? m_text[static_cast<std::size_t>(index)] : '\0';
}

void CString::SetAt(int index, char c) {
    if (index >= 0 && index < GetLength()) {
        m_text[static_cast<std::size_t>(index)] = c;
    }
}

CString& CString::operator+=(const CString& text) {
    m_text += text.m_text;
    return *this;
}

CString& CString::operator+=(const char* text) {
    m_text.append(View(text));
    return *this;
}

CString& CString::operator+=(char c) {
    m_text += c;
    return *this;
}

int CString::Compare(const CString& text) const {
    return Sign(m_text.compare(text.m_text));
}

int CString::Compare(const char* text) const {
    return Sign(std::strcmp(m_text.c_str(), text != nullptr ? text : ""));
}

int CString::CompareNoCase(const char* text) const {
    const auto* a = reinterpret_cast<const unsigned char*>(m_text.c_str());
    const auto* b = reinterpret_cast<const unsigned char*>(text != nullptr ? text : "");
    for (;; ++a, ++b) {
        const int ca = static_cast<unsigned char>(ToLower(static_cast<char>(*a)));
        const int cb = static_cast<unsigned char>(ToLower(static_cast<char>(*b)));
        if (ca != cb || ca == 0) {
            return Sign(ca - cb);
        }
    }
}

CString CString::Left(int count) const {
    return Mid(0, count);
}

CString CString::Right(int count) const {
    const int n = std::clamp(count, 0, GetLength());
    return Mid(GetLength() - n, n);
}

CString CString::Mid(int first) const {
    return Mid(first, GetLength());
}

CString CString::Mid(int first, int count) const {
    first = std::clamp(first, 0, GetLength());
    count = std::clamp(count, 0, GetLength() - first);
    return CString(m_text.data() + first, count);
}

int CString::Find(char c, int start) const {
    start = std::max(start, 0);
    if (start >= GetLength()) {
        return -1;
    }
    const auto at = m_text.find(c, static_cast<std::size_t>(start));
    return at == Text::npos ? -1 : static_cast<int>(at);
}

int CString::Find(const char* text, int start) const {
    start = std::max(start, 0);
    if (text == nullptr || start > GetLength()) {
        return -1;
    }
    const auto at = m_text.find(text, static_cast<std::size_t>(start));
    return at == Text::npos ? -1 : static_cast<int>(at);
}

int CString::ReverseFind(char c) const {
    const auto at = m_text.rfind(c);
    return at == Text::npos ? -1 : static_cast<int>(at);
}

void CString::MakeUpper() {
    std::transform(m_text.begin(), m_text.end(), m_text.begin(), ToUpper);
}

void CString::MakeLower() {
    std::transform(m_text.begin(), m_text.end(), m_text.begin(), ToLower);
}

void CString::MakeReverse() {
    std::reverse(m_text.begin(), m_text.end());
}

void CString::TrimLeft() {
    m_text.erase(m_text.begin(), std::find_if_not(m_text.begin(), m_text.end(), IsBlank));
}

void CString::TrimLeft(char c) {
    m_text.erase(0, m_text.find_first_not_of(c));
}

void CString::TrimLeft(const char* set) {
    m_text.erase(0, m_text.find_first_not_of(View(set)));
}

void CString::TrimRight() {
    m_text.erase(std::find_if_not(m_text.rbegin(), m_text.rend(), IsBlank).base(), m_text.end());
}

void CString::TrimRight(char c) {
    // npos + 1 is 0: a text made only of `c` becomes empty.
    m_text.erase(m_text.find_last_not_of(c) + 1);
}

void CString::TrimRight(const char* set) {
    m_text.erase(m_text.find_last_not_of(View(set)) + 1);
}

int CString::Replace(char from, char to) {
    int count = 0;
    for (char& c : m_text) {
        if (c == from) {
            c = to;
            ++count;
        }
    }
    return count;
}

int CString::Replace(const char* from, const char* to) {
    const std::string_view old = View(from);
    if (old.empty()) {
        return 0;
    }
    const std::string_view replacement = View(to);
    Text result;
    int count = 0;
    std::size_t done = 0;
    for (std::size_t at = m_text.find(old); at != Text::npos; at = m_text.find(old, done)) {
        result.append(m_text, done, at - done).append(replacement);
        done = at + old.size();
        ++count;
    }
    if (count > 0) {
        result.append(m_text, done);
        m_text = std::move(result);
    }
    return count;
}

int CString::Insert(int index, char c) {
    index = std::clamp(index, 0, GetLength());
    m_text.insert(static_cast<std::size_t>(index), 1, c);
    return GetLength();
}

int CString::Delete(int index, int count) {
    // The framework takes a negative index as 0.
    index = std::max(index, 0);
    if (index < GetLength() && count > 0) {
        m_text.erase(static_cast<std::size_t>(index), static_cast<std::size_t>(count));
    }
    return GetLength();
}

void CString::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
}

void CString::FormatV(const char* format, va_list args) {
    if (format == nullptr) {
        m_text.clear();
        return;
    }
    const std::string text = nvk::afx::FormatText(format, args);
    m_text.assign(text.data(), text.size());
}

char* CString::GetBuffer(int minLength) {
    if (minLength > GetLength()) {
        // The caller may write up to minLength characters and a terminator;
        // std::string keeps a zero at data()[size()].
        m_text.resize(static_cast<std::size_t>(minLength));
    }
    return m_text.data();
}

char* CString::GetBufferSetLength(int length) {
    m_text.resize(static_cast<std::size_t>(std::max(length, 0)));
    return m_text.data();
}

void CString::ReleaseBuffer(int newLength) {
    if (newLength < 0) {
        newLength = static_cast<int>(std::strlen(m_text.c_str()));
    }
    m_text.resize(std::min(static_cast<std::size_t>(newLength), m_text.size()));
}

CString operator+(const CString& left, const CString& right) {
    CString result(left);
    result += right;
    return result;
}

CString operator+(const CString& left, const char* right) {
    CString result(left);
    result += right;
    return result;
}

CString operator+(const char* left, const CString& right) {
    CString result(left);
    result += right;
    return result;
}

CString operator+(const CString& left, char right) {
    CString result(left);
    result += right;
    return result;
}

CString operator+(char left, const CString& right) {
    CString result(left);
    result += right;
    return result;
}
