// CStringTable: a table of texts packed in one string, as string resources
// carry them: "base<sep1>entry<sep2>entry<sep2>...", or the entries alone for
// a table that starts at 0.
//
// The bounds follow the packed text, not the entries: without a base the
// indices run from 0 to the number of separators (a text that ends in a
// separator has an empty last entry); with one they run from the base to the
// number of separators less one. A base above 0 thus shortens the table, and
// its last entries cannot be reached: callers count on that arithmetic.
#pragma once

#include "nvk/afx/cstring.h"
#include "nvk/nvkutil_export.h"

class NVKUTIL_EXPORT CStringTable {
public:
    CStringTable();
    CStringTable(const char* text, char sep1, char sep2);
    // The text is string resource `stringId`.
    CStringTable(unsigned stringId, char sep1, char sep2);
    CStringTable(const CStringTable&) = default;
    CStringTable& operator=(const CStringTable&) = default;

    // 0 for an empty text, which leaves the table empty; 1 otherwise.
    int Init(const char* text, char sep1, char sep2);

    // The entry at `index`, empty outside the table. The reference is to one
    // buffer of the table, which the next call overwrites.
    CString& GetString(int index);
    // The index of the first entry equal to `text`, or GetZeroBaseIndex() - 1.
    int GetIndex(const char* text) const;

    int GetZeroBaseIndex() const { return m_First; }
    int GetMaxIndex() const { return m_Last; }
    bool IsValid() const { return m_First <= m_Last && !m_Text.IsEmpty(); }

private:
    // Calls `visit(index, start, length)` for each entry of the table in
    // order, until it returns true; the index of that entry, or m_First - 1.
    template <typename Visit>
    int Walk(Visit visit) const;

    int m_First;
    int m_Last;
    char m_Sep1;
    char m_Sep2;
    CString m_Text;
    CString m_Work;
};
