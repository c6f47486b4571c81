// Filling list and combo boxes from one text cut at a separator. Each piece
// is added, the one after the last separator too, even when it is empty.
#pragma once

#include "nvk/afx/list_controls.h"

void FillComboBox(CComboBox& box, CString text, char sep);
// The text is string resource `id`.
void FillComboBox(CComboBox& box, unsigned id, char sep);
void FillListBox(CListBox& box, CString text, char sep);
void FillListBox(CListBox& box, unsigned id, char sep);
