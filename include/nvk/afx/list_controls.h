// CComboBox and CListBox: the framework's objects over the system's combo and
// list box controls. Every call is a message to the control, so a class that
// maps one of them sees the calls of its own code too.
#pragma once

#include "nvk/afx/window.h"
#include "nvk/nvkafx_export.h"

class NVKAFX_EXPORT CComboBox : public CWnd {
public:
    bool Create(nvk::os::DWORD style, const nvk::os::RECT& rect, CWnd* parent, nvk::os::UINT id);

    // Positions, or CB_ERR.
    int AddString(const char* text);
    int InsertString(int index, const char* text);
    int DeleteString(unsigned index);
    void ResetContent();
    int GetCount() const;
    int GetCurSel() const;
    int SetCurSel(int index);
    nvk::os::DWORD_PTR GetItemData(int index) const;
    int SetItemData(int index, nvk::os::DWORD_PTR data);
    void GetLBText(int index, CString& text) const;
    int GetLBTextLen(int index) const;
    int FindStringExact(int startAfter, const char* text) const;
};

class NVKAFX_EXPORT CListBox : public CWnd {
public:
    bool Create(nvk::os::DWORD style, const nvk::os::RECT& rect, CWnd* parent, nvk::os::UINT id);

    // Positions, or LB_ERR.
    int AddString(const char* text);
    int InsertString(int index, const char* text);
    int DeleteString(unsigned index);
    void ResetContent();
    int GetCount() const;
    int GetCurSel() const;
    int SetCurSel(int index);
    nvk::os::DWORD_PTR GetItemData(int index) const;
    int SetItemData(int index, nvk::os::DWORD_PTR data);
    void GetText(int index, CString& text) const;
    int GetTextLen(int index) const;
    int FindStringExact(int startAfter, const char* text) const;
};
