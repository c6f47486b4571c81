#include "nvk/afx/win_app.h"

#include "os/api/registry.h"

namespace os = nvk::os;

namespace {

CWinApp* g_pApp = nullptr;

}  // namespace

CWinApp::CWinApp(const char* appName) : m_pszAppName(appName), m_pszProfileName(appName) {
    g_pApp = this;
}

CWinApp::~CWinApp() {
    if (g_pApp == this) {
        g_pApp = nullptr;
    }
}

void CWinApp::SetRegistryKey(const char* key) {
    m_pszRegistryKey = key;
    if (m_pszProfileName.IsEmpty()) {
        m_pszProfileName = m_pszAppName;
    }
}

os::HKEY CWinApp::GetAppRegistryKey() {
    if (m_pszRegistryKey.IsEmpty()) {
        return nullptr;
    }
    CString path = "Software\\";
    path += m_pszRegistryKey;
    path += "\\";
    path += m_pszProfileName;
    os::HKEY key = nullptr;
    if (os::RegCreateKeyExA(os::HKEY_CURRENT_USER, path, 0, nullptr, 0, os::KEY_ALL_ACCESS, nullptr,
                            &key, nullptr) != os::ERROR_SUCCESS) {
        return nullptr;
    }
    return key;
}

CWinApp* AfxGetApp() {
    return g_pApp;
}
