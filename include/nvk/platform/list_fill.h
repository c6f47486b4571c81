// Filling list and combo boxes from one text cut at a separator. Each piece
// is added, the one after the last separator too, even when it is empty.
#pragma once

#include "nvk/afx/list_controls.h"
#include "nvk/nvkutil_export.h"

NVKUTIL_EXPORT void FillComboBox(CComboBox& box, CString text, char sep);
// The text is string resource `id`.
NVKUTIL_EXPORT void FillComboBox(CComboBox& box, unsigned id, char sep);
NVKUTIL_EXPORT void FillListBox(CListBox& box, CString text, char sep);
NVKUTIL_EXPORT void FillListBox(CListBox& box, unsigned id, char sep);
