// CStringArray: the framework's growable array of strings.
#pragma once

#include <vector>

#include "nvk/afx/cstring.h"
#include "nvk/nvkafx_export.h"

class NVKAFX_EXPORT CStringArray {
public:
    int GetSize() const { return static_cast<int>(m_Strings.size()); }
    int GetCount() const { return GetSize(); }
    bool IsEmpty() const { return m_Strings.empty(); }
    const CString& GetAt(int index) const { return m_Strings[static_cast<std::size_t>(index)]; }
    CString& operator[](int index) { return m_Strings[static_cast<std::size_t>(index)]; }
    const CString& operator[](int index) const { return GetAt(index); }
    int Add(const CString& text) {
        m_Strings.push_back(text);
        return GetSize() - 1;
    }
    // Grows the array with empty strings up to `index` where needed.
    void SetAtGrow(int index, const CString& text) {
        if (index >= GetSize()) {
            m_Strings.resize(static_cast<std::size_t>(index) + 1);
        }
        m_Strings[static_cast<std::size_t>(index)] = text;
    }
    void RemoveAll() { m_Strings.clear(); }

private:
    std::vector<CString> m_Strings;
};
