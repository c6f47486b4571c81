#include "nvk/platform/string_table.h"

#include <cstdlib>
#include <cstring>

#include "load_text.h"

CStringTable::CStringTable() : m_First(0), m_Last(-1), m_Sep1('\0'), m_Sep2('\0') {}

CStringTable::CStringTable(const char* text, char sep1, char sep2) : CStringTable() {
    Init(text, sep1, sep2);
}

CStringTable::CStringTable(unsigned stringId, char sep1, char sep2) : CStringTable() {
    Init(nvk::LoadText(stringId), sep1, sep2);
}

int CStringTable::Init(const char* text, char sep1, char sep2) {
    m_First = 0;
    m_Last = -1;
    m_Sep1 = sep1;
    m_Sep2 = sep2;
    m_Text = text;
    if (m_Text.IsEmpty()) {
        return 0;
    }
    const int base = m_Text.Find(sep1);
    if (base >= 0) {
        m_First = std::atoi(m_Text.Left(base));
        m_Text = m_Text.Mid(base + 1);
    } else {
        m_Last = 0;
    }
    for (int i = 0; i < m_Text.GetLength(); ++i) {
        if (m_Text[i] == sep2) {
            ++m_Last;
        }
    }
    return 1;
}

template <typename Visit>
int CStringTable::Walk(Visit visit) const {
    int start = 0;
    for (int index = m_First; index <= m_Last; ++index) {
        int end = m_Text.Find(m_Sep2, start);
        if (end < 0) {
            end = m_Text.GetLength();
        }
        if (visit(start, end - start)) {
            return index;
        }
        if (end >= m_Text.GetLength()) {
            break;
        }
        start = end + 1;
    }
    return m_First - 1;
}

CString& CStringTable::GetString(int index) {
    m_Work.Empty();
    if (index < m_First || index > m_Last) {
        return m_Work;
    }
    int wanted = m_First;
    Walk([&](int start, int length) {
        if (wanted++ != index) {
            return false;
        }
        m_Work = m_Text.Mid(start, length);
        return true;
    });
    return m_Work;
}

int CStringTable::GetIndex(const char* text) const {
    const char* wanted = text != nullptr ? text : "";
    const int size = static_cast<int>(std::strlen(wanted));
    return Walk([&](int start, int length) {
        return length == size && std::memcmp(m_Text.GetString() + start, wanted, size) == 0;
    });
}
