// CStatusText: a guard over the text of the main window's status bar. It
// keeps the text the bar showed when it was made, shows its own, and puts the
// kept text back when it ends or on Restore. After Restore the kept text is
// empty, so a guard restored by hand clears the bar when it ends.
#pragma once

#include "nvk/afx/cstring.h"
#include "nvk/nvkutil_export.h"

class CStatusBar;

class NVKUTIL_EXPORT CStatusText : public CString {
public:
    CStatusText();
    explicit CStatusText(unsigned stringId);
    CStatusText(const char* text);
    CStatusText(const CStatusText& other) = default;
    CStatusText& operator=(const CStatusText& other) = default;
    ~CStatusText();

    void SetText(unsigned stringId);
    void SetText(const char* text);
    void Restore();

private:
    // The status bar of the calling thread's main window, found once; null
    // when there is none, and then nothing is shown.
    CStatusBar* GetStatusBar();
    bool GetStatusText(CString& text);
    void SetStatusText(const char* text);
    void Save();

    CStatusBar* m_pStatusBar = nullptr;
};
