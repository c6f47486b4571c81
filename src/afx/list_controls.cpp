#include "nvk/afx/list_controls.h"

using namespace nvk::os;

namespace {

// The two controls answer the same requests under different numbers.
struct Messages {
    UINT Add, Insert, Delete, Reset, Count, GetSel, SetSel, Text, TextLength, GetData, SetData,
        FindExact;
};

constexpr Messages kCombo = {CB_ADDSTRING,    CB_INSERTSTRING, CB_DELETESTRING, CB_RESETCONTENT,
                             CB_GETCOUNT,     CB_GETCURSEL,    CB_SETCURSEL,    CB_GETLBTEXT,
                             CB_GETLBTEXTLEN, CB_GETITEMDATA,  CB_SETITEMDATA,  CB_FINDSTRINGEXACT};
constexpr Messages kList = {LB_ADDSTRING,  LB_INSERTSTRING, LB_DELETESTRING, LB_RESETCONTENT,
                            LB_GETCOUNT,   LB_GETCURSEL,    LB_SETCURSEL,    LB_GETTEXT,
                            LB_GETTEXTLEN, LB_GETITEMDATA,  LB_SETITEMDATA,  LB_FINDSTRINGEXACT};

int Send(const CWnd& control, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return static_cast<int>(control.SendMessage(message, wParam, lParam));
}

LPARAM Text(const char* text) {
    return reinterpret_cast<LPARAM>(text);
}

void ItemText(const CWnd& control, const Messages& m, int index, CString& text) {
    const int length = Send(control, m.TextLength, static_cast<WPARAM>(index));
    if (length < 0) {
        text.Empty();
        return;
    }
    Send(control, m.Text, static_cast<WPARAM>(index),
         reinterpret_cast<LPARAM>(text.GetBufferSetLength(length)));
    text.ReleaseBuffer(length);
}

}  // namespace

#define NVK_LIST_CONTROL(Class, m, className, TextName, TextLenName)                          \
    bool Class::Create(DWORD style, const RECT& rect, CWnd* parent, UINT id) {                \
        return CreateEx(0, className, nullptr, style, rect, parent, id);                      \
    }                                                                                         \
    int Class::AddString(const char* text) {                                                  \
        return Send(*this, m.Add, 0, Text(text));                                             \
    }                                                                                         \
    int Class::InsertString(int index, const char* text) {                                    \
        return Send(*this, m.Insert, static_cast<WPARAM>(index), Text(text));                 \
    }                                                                                         \
    int Class::DeleteString(unsigned index) {                                                 \
        return Send(*this, m.Delete, index);                                                  \
    }                                                                                         \
    void Class::ResetContent() {                                                              \
        Send(*this, m.Reset);                                                                 \
    }                                                                                         \
    int Class::GetCount() const {                                                             \
        return Send(*this, m.Count);                                                          \
    }                                                                                         \
    int Class::GetCurSel() const {                                                            \
        return Send(*this, m.GetSel);                                                         \
    }                                                                                         \
    int Class::SetCurSel(int index) {                                                         \
        return Send(*this, m.SetSel, static_cast<WPARAM>(index));                             \
    }                                                                                         \
    DWORD_PTR Class::GetItemData(int index) const {                                           \
        return static_cast<DWORD_PTR>(SendMessage(m.GetData, static_cast<WPARAM>(index)));    \
    }                                                                                         \
    int Class::SetItemData(int index, DWORD_PTR data) {                                       \
        return Send(*this, m.SetData, static_cast<WPARAM>(index), static_cast<LPARAM>(data)); \
    }                                                                                         \
    void Class::TextName(int index, CString& text) const {                                    \
        ItemText(*this, m, index, text);                                                      \
    }                                                                                         \
    int Class::TextLenName(int index) const {                                                 \
        return Send(*this, m.TextLength, static_cast<WPARAM>(index));                         \
    }                                                                                         \
    int Class::FindStringExact(int startAfter, const char* text) const {                      \
        return Send(*this, m.FindExact, static_cast<WPARAM>(startAfter), Text(text));         \
    }

NVK_LIST_CONTROL(CComboBox, kCombo, "COMBOBOX", GetLBText, GetLBTextLen)
NVK_LIST_CONTROL(CListBox, kList, "LISTBOX", GetText, GetTextLen)
