// CWinApp: the application object of the framework, as far as the library
// asks it: its name, its registry key and profile name, and the key of its
// settings in the registry.
#pragma once

#include "nvk/afx/cstring.h"
#include "nvk/nvkafx_export.h"
#include "nvk/os/types.h"

class NVKAFX_EXPORT CWinApp {
public:
    // The one application object of the process; the last one made.
    explicit CWinApp(const char* appName = nullptr);
    virtual ~CWinApp();
    CWinApp(const CWinApp&) = delete;
    CWinApp& operator=(const CWinApp&) = delete;

    // Settings go to HKEY_CURRENT_USER\Software\<key>\<profile name>; the
    // profile name is the application's name.
    void SetRegistryKey(const char* key);
    // That key, created when missing, for the caller to close; null when no
    // registry key is set or it can't be opened.
    nvk::os::HKEY GetAppRegistryKey();

    CString m_pszAppName;
    CString m_pszRegistryKey;
    CString m_pszProfileName;
};

// The application object, or null.
NVKAFX_EXPORT CWinApp* AfxGetApp();
