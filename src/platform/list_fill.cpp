#include "nvk/platform/list_fill.h"

#include "load_text.h"

namespace {

template <typename Box>
void Fill(Box& box, const CString& text, char sep) {
    int start = 0;
    for (int end = text.Find(sep); end >= 0; end = text.Find(sep, start)) {
        box.AddString(text.Mid(start, end - start));
        start = end + 1;
    }
    box.AddString(text.Mid(start));
}

}  // namespace

void FillComboBox(CComboBox& box, CString text, char sep) {
    Fill(box, text, sep);
}

void FillComboBox(CComboBox& box, unsigned id, char sep) {
    Fill(box, nvk::LoadText(id), sep);
}

void FillListBox(CListBox& box, CString text, char sep) {
    Fill(box, text, sep);
}

void FillListBox(CListBox& box, unsigned id, char sep) {
    Fill(box, nvk::LoadText(id), sep);
}
