#include "nvk/platform/link.h"

#include <cstring>
#include <vector>

#include "nvk/afx/exceptions.h"
#include "nvk/afx/file.h"
#include "nvk/afx/message_box.h"
#include "nvk/afx/window.h"
#include "nvk/files/file_operations.h"
#include "os/api/directory.h"
#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/nls.h"
#include "os/api/shell_link.h"

using namespace nvk::os;

namespace {

const char* OrEmpty(const char* text) {
    return text != nullptr ? text : "";
}

bool Exists(const char* path) {
    return GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES;
}

// The long form of a path: a buffer of MAX_PATH first, and one of the exact
// size when the name needs more.
CString LongName(const char* path) {
    char buffer[MAX_PATH];
    const unsigned length = TranslateIntoLongName(path, buffer, sizeof buffer);
    if (length < sizeof buffer) {
        return buffer;
    }
    std::vector<char> large(length + 1);
    TranslateIntoLongName(path, large.data(), length + 1);
    return large.data();
}

}  // namespace

CLink::CLink() : m_Wide{}, m_hr(S_OK), m_hWnd(nullptr), m_pLink(nullptr) {}

CLink::CLink(const CLink& other)
    : m_Wide{}, m_hr(other.m_hr), m_hWnd(other.m_hWnd), m_pLink(other.m_pLink) {}

CLink& CLink::operator=(const CLink& other) {
    m_hr = other.m_hr;
    m_hWnd = other.m_hWnd;
    m_pLink = other.m_pLink;
    return *this;
}

CLink::~CLink() = default;

bool CLink::CreateInstance() {
    m_pLink = nullptr;
    m_hr = CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                            reinterpret_cast<LPVOID*>(&m_pLink));
    return SUCCEEDED(m_hr);
}

void CLink::ReleaseLink() {
    if (m_pLink != nullptr) {
        m_pLink->Release();
        m_pLink = nullptr;
    }
}

const WCHAR* CLink::AsUnicode(const char* text) {
    std::memset(m_Wide, 0, sizeof m_Wide);
    const int converted = MultiByteToWideChar(CP_ACP, 0, OrEmpty(text), -1, m_Wide, MAX_PATH);
    return converted > 0 ? m_Wide : nullptr;
}

void CLink::DisplayError() {
    CString text;
    text.Format("CLink error : %ld", static_cast<long>(m_hr));
    // The owner and the caption are the application's box's to give.
    GethWnd();
    AfxMessageBox(text, MB_ICONHAND);
}

HWND CLink::GethWnd() {
    if (m_hWnd == nullptr) {
        if (CWnd* main = AfxGetMainWnd()) {
            m_hWnd = main->GetSafeHwnd();
        }
    }
    return m_hWnd;
}

bool CLink::Create(const char* target, const char* link, const char* arguments,
                   const char* description, const char* iconPath, int iconIndex) {
    if (AreEqualsFiles(target, link) != 0) {
        return false;
    }
    if (Exists(link)) {
        DeleteFileA(link);
    }
    if (!CreateInstance()) {
        return false;
    }
    m_pLink->SetPath(target);
    if (*OrEmpty(arguments) != '\0') {
        m_pLink->SetArguments(arguments);
    }
    if (*OrEmpty(description) != '\0') {
        m_pLink->SetDescription(description);
    }
    if (*OrEmpty(iconPath) != '\0') {
        m_pLink->SetIconLocation(iconPath, iconIndex);
    }
    IPersistFile* file = nullptr;
    m_hr = m_pLink->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file));
    if (FAILED(m_hr)) {
        ReleaseLink();
        return false;
    }
    m_hr = file->Save(AsUnicode(link), TRUE);
    file->Release();
    ReleaseLink();
    return true;
}

bool CLink::CreateLink(const char* target, const char* link, const char* description) {
    return Create(target, link, nullptr, description, nullptr, 0);
}

int CLink::DeleteLink(const char* link) {
    if (!CreateInstance()) {
        return 0;
    }
    IPersistFile* file = nullptr;
    m_hr = m_pLink->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file));
    int removed = 0;
    if (SUCCEEDED(m_hr)) {
        m_hr = file->Load(AsUnicode(link), STGM_READ);
        char path[MAX_PATH];
        WIN32_FIND_DATAA found;
        if (SUCCEEDED(m_hr)) {
            m_hr = m_pLink->GetPath(path, MAX_PATH, &found, SLGP_SHORTPATH);
        }
        if (SUCCEEDED(m_hr)) {
            try {
                CFile::Remove(link);
                // What saving put beside the link (the desktop entry on
                // POSIX) goes with it.
                DeleteLinkCompanions(link);
                removed = 1;
            } catch (CFileException* error) {
                error->Delete();
            }
        }
        file->Release();
    }
    ReleaseLink();
    return removed;
}

int CLink::ResolveIt(const char* link, CString& out, int bShowUI) {
    out.Empty();
    if (!Exists(link)) {
        return 0;
    }
    char full[MAX_PATH];
    const DWORD length = GetFullPathNameA(link, MAX_PATH, full, nullptr);
    if (length == 0 || length >= MAX_PATH || !CreateInstance()) {
        return 0;
    }
    IPersistFile* file = nullptr;
    m_hr = m_pLink->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file));
    if (FAILED(m_hr)) {
        ReleaseLink();
        return 0;
    }
    int resolved = 0;
    m_hr = file->Load(AsUnicode(full), STGM_READWRITE);
    if (SUCCEEDED(m_hr)) {
        m_hr = m_pLink->Resolve(GethWnd(), SLR_UPDATE | (bShowUI == 0 ? SLR_NO_UI : 0));
    }
    if (SUCCEEDED(m_hr)) {
        char path[MAX_PATH];
        WIN32_FIND_DATAA found;
        m_hr = m_pLink->GetPath(path, MAX_PATH, &found, SLGP_SHORTPATH);
        if (FAILED(m_hr)) {
            DisplayError();
        } else {
            out = path;
        }
        if (SUCCEEDED(m_hr) && Exists(out)) {
            char description[MAX_PATH];
            m_hr = m_pLink->GetDescription(description, MAX_PATH);
            if (FAILED(m_hr)) {
                DisplayError();
            }
            if (AreEqualsFiles(link, out) == 0) {
                out = LongName(out);
                resolved = 1;
            }
        }
    }
    file->Release();
    ReleaseLink();
    return resolved;
}
