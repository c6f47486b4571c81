// CLink: shell links to a program or a file, made, resolved and deleted
// through the system's shell link object. On POSIX the link file is in
// Windows' format wherever it is put, with a desktop entry beside it in the
// user's desktop or applications folder.
#pragma once

#include "nvk/afx/cstring.h"
#include "nvk/nvkutil_export.h"
#include "nvk/os/types.h"

namespace nvk::os {
struct IShellLinkA;
}

class NVKUTIL_EXPORT CLink {
public:
    CLink();
    // Copies take the last result, the owner window and the running
    // operation's object, not the conversion buffer.
    CLink(const CLink& other);
    CLink& operator=(const CLink& other);
    virtual ~CLink();

    // Writes the link file `link` to `target`, replacing any; the other texts
    // may be null or empty. False when the target is the link itself or the
    // link object can't be made; the result of saving is GetResult().
    bool Create(const char* target, const char* link, const char* arguments,
                const char* description, const char* iconPath, int iconIndex);
    bool CreateLink(const char* target, const char* link, const char* description);
    // 1 when the link could be read and its file was removed, else 0.
    int DeleteLink(const char* link);
    // The link's target in its long form into `out`: 1 then, 0 when the link
    // is missing or unreadable, its target is missing, or is the link itself.
    // Without `bShowUI`, the resolving shows no dialog.
    int ResolveIt(const char* link, CString& out, int bShowUI);

    void SethWnd(nvk::os::HWND window) { m_hWnd = window; }
    // The last result of the link object.
    nvk::os::HRESULT GetResult() const { return m_hr; }

private:
    bool CreateInstance();
    // The text in the conversion buffer, or null when nothing converted.
    const nvk::os::WCHAR* AsUnicode(const char* text);
    void DisplayError();
    // The owner window, the calling thread's main window until one is set.
    nvk::os::HWND GethWnd();
    void ReleaseLink();

    nvk::os::WCHAR m_Wide[nvk::os::MAX_PATH];
    nvk::os::HRESULT m_hr;
    nvk::os::HWND m_hWnd;
    nvk::os::IShellLinkA* m_pLink;
};
