#include "nvk/platform/text_pieces.h"

void LoadTabString(CString* out, int count, CString text) {
    for (int i = 0;; ++i) {
        const int end = text.Find('|');
        if (end < 0) {
            out[i] = text;
            return;
        }
        out[i] = text.Left(end);
        if (i + 1 >= count) {
            return;
        }
        text = text.Mid(end + 1);
    }
}

void SplitName(CString& name, CString& left, CString& right) {
    // A copy, since the name may be one of the parts.
    const CString whole = name;
    const int point = whole.Find('.');
    if (point < 0) {
        left = whole;
        right.Empty();
        return;
    }
    left = whole.Left(point);
    right = whole.Mid(point + 1);
}

int SplitNameEx(CString& name, CString& a, CString& b, CString& c) {
    const CString whole = name;
    const int point = whole.Find('.');
    if (point < 0) {
        a = whole;
        b.Empty();
        c.Empty();
        return 0;
    }
    a = whole.Left(point);
    CString rest = whole.Mid(point + 1);
    SplitName(rest, b, c);
    return 1;
}

void Trim(CString& text) {
    text.Replace(" ", "");
    text.Replace("\t", "");
}
