// Small cuttings of texts that the interface code shares.
#pragma once

#include "nvk/afx/cstring.h"
#include "nvk/nvkutil_export.h"

// Cuts `text` at each "|" into out[0], out[1]...: stops after the last piece
// or after `count` pieces, drops any rest, and leaves the other slots as they
// were. out[0] is always written, even when `count` is 0 or less.
NVKUTIL_EXPORT void LoadTabString(CString* out, int count, CString text);

// Cuts at the first ".": without one, `left` is the name and `right` empty.
NVKUTIL_EXPORT void SplitName(CString& name, CString& left, CString& right);
// `a` up to the first ".", and the rest cut by SplitName into `b` and `c`.
// Without any ".", `a` is the name, `b` and `c` are empty, and the result is
// 0; otherwise 1.
NVKUTIL_EXPORT int SplitNameEx(CString& name, CString& a, CString& b, CString& c);

// Removes every blank and every tab, wherever they stand in the text.
NVKUTIL_EXPORT void Trim(CString& text);
