// CComboBoxTable: a combo box over a CStringTable. Each item's data is the
// table index of its entry, and the selection is told and set in table
// indices, also by CB_GETCURSEL and CB_SETCURSEL sent from outside.
#pragma once

#include "nvk/afx/list_controls.h"
#include "nvk/nvkutil_export.h"
#include "nvk/platform/string_table.h"

class NVKUTIL_EXPORT CComboBoxTable : public CComboBox {
public:
    CComboBoxTable() = default;
    // The table of `text`, with the separators "|" and newline; with no
    // window yet, only the table is filled.
    explicit CComboBoxTable(const char* text);

    // Fills the table and the control; false for an empty text.
    bool Init(const char* text, char sep1, char sep2);
    bool Init(unsigned stringId, char sep1, char sep2);

    // The selected table index (CB_ERR without a selection).
    int GetCurSel();
    // Selects the entry of table index `value` and returns it; without one,
    // clears the selection and returns GetZeroBaseIndex() - 1.
    int SetCurSel(int value);
    int GetZeroBaseIndex() const { return m_Table.GetZeroBaseIndex(); }
    const CStringTable& GetTable() const { return m_Table; }

    void Disable() { EnableWindow(false); }
    void Enable() { EnableWindow(true); }

protected:
    nvk::os::LRESULT OnCbSetCurSel(nvk::os::WPARAM wParam, nvk::os::LPARAM lParam);
    nvk::os::LRESULT OnCbGetCurSel(nvk::os::WPARAM wParam, nvk::os::LPARAM lParam);

    DECLARE_MESSAGE_MAP()

private:
    // The control itself, past this class's map, so that the handlers' own
    // messages do not come back to them. Nothing without a window.
    nvk::os::LRESULT Control(nvk::os::UINT message, nvk::os::WPARAM wParam = 0,
                             nvk::os::LPARAM lParam = 0);

    CStringTable m_Table;
};
