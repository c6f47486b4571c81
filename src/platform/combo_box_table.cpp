#include "nvk/platform/combo_box_table.h"

#include "load_text.h"

using namespace nvk::os;

BEGIN_MESSAGE_MAP(CComboBoxTable, CComboBox)
ON_MESSAGE(CB_SETCURSEL, OnCbSetCurSel)
ON_MESSAGE(CB_GETCURSEL, OnCbGetCurSel)
END_MESSAGE_MAP()

CComboBoxTable::CComboBoxTable(const char* text) {
    Init(text, '|', '\n');
}

bool CComboBoxTable::Init(const char* text, char sep1, char sep2) {
    if (text == nullptr || *text == '\0' || m_Table.Init(text, sep1, sep2) == 0) {
        return false;
    }
    Control(CB_RESETCONTENT);
    const int first = m_Table.GetZeroBaseIndex();
    for (int index = first; index <= m_Table.GetMaxIndex(); ++index) {
        Control(CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(m_Table.GetString(index).GetString()));
        Control(CB_SETITEMDATA, static_cast<WPARAM>(index - first), index);
    }
    return true;
}

bool CComboBoxTable::Init(unsigned stringId, char sep1, char sep2) {
    return Init(nvk::LoadText(stringId), sep1, sep2);
}

int CComboBoxTable::GetCurSel() {
    return static_cast<int>(Control(CB_GETITEMDATA, static_cast<WPARAM>(Control(CB_GETCURSEL))));
}

int CComboBoxTable::SetCurSel(int value) {
    const auto count = static_cast<int>(Control(CB_GETCOUNT));
    for (int position = 0; position < count; ++position) {
        if (static_cast<int>(Control(CB_GETITEMDATA, static_cast<WPARAM>(position))) == value) {
            Control(CB_SETCURSEL, static_cast<WPARAM>(position));
            return value;
        }
    }
    Control(CB_SETCURSEL, static_cast<WPARAM>(-1));
    return m_Table.GetZeroBaseIndex() - 1;
}

LRESULT CComboBoxTable::OnCbSetCurSel(WPARAM wParam, LPARAM) {
    return SetCurSel(static_cast<int>(wParam));
}

LRESULT CComboBoxTable::OnCbGetCurSel(WPARAM, LPARAM) {
    return GetCurSel();
}

LRESULT CComboBoxTable::Control(UINT message, WPARAM wParam, LPARAM lParam) {
    return m_hWnd != nullptr ? DefWindowProc(message, wParam, lParam) : 0;
}
