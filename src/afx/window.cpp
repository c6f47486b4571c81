#include "nvk/afx/window.h"

#include <map>
#include <mutex>

#include "os/api/window.h"

using namespace nvk::os;

namespace {

// Windows whose messages go to an object: the handle map of the process.
std::mutex& MapLock() {
    static std::mutex lock;
    return lock;
}

std::map<HWND, CWnd*>& HandleMap() {
    static std::map<HWND, CWnd*> map;
    return map;
}

// The class of plain framework windows: everything they answer is in their
// maps, and the rest is the default.
const char* FrameworkClass() {
    static const char* name = [] {
        WNDCLASSA windowClass{};
        windowClass.lpfnWndProc = DefWindowProcA;
        windowClass.lpszClassName = "AfxWnd";
        RegisterClassA(&windowClass);
        return "AfxWnd";
    }();
    return name;
}

}  // namespace

CWnd::CWnd() : m_hWnd(nullptr), m_pfnSuper(nullptr) {}

CWnd::~CWnd() {
    if (m_hWnd != nullptr) {
        DestroyWindow();
    }
}

bool CWnd::CreateEx(DWORD exStyle, const char* className, const char* windowName, DWORD style,
                    const RECT& rect, CWnd* parent, UINT id) {
    HWND window =
        CreateWindowExA(exStyle, className != nullptr ? className : FrameworkClass(), windowName,
                        style, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                        parent != nullptr ? parent->m_hWnd : nullptr,
                        reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), nullptr, nullptr);
    if (window == nullptr) {
        return false;
    }
    SubclassWindow(window);
    return true;
}

bool CWnd::DestroyWindow() {
    return m_hWnd != nullptr && ::nvk::os::DestroyWindow(m_hWnd) != FALSE;
}

bool CWnd::SubclassWindow(HWND window) {
    if (m_hWnd != nullptr || !IsWindow(window)) {
        return false;
    }
    {
        std::lock_guard lock(MapLock());
        HandleMap()[window] = this;
    }
    m_hWnd = window;
    m_pfnSuper = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CWnd::AfxWndProc)));
    return true;
}

HWND CWnd::UnsubclassWindow() {
    HWND window = m_hWnd;
    if (window == nullptr) {
        return nullptr;
    }
    SetWindowLongPtrA(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_pfnSuper));
    {
        std::lock_guard lock(MapLock());
        HandleMap().erase(window);
    }
    m_hWnd = nullptr;
    m_pfnSuper = nullptr;
    return window;
}

CWnd* CWnd::FromHandlePermanent(HWND window) {
    std::lock_guard lock(MapLock());
    auto found = HandleMap().find(window);
    return found != HandleMap().end() ? found->second : nullptr;
}

LRESULT CWnd::AfxWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    CWnd* object = FromHandlePermanent(window);
    if (object == nullptr) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    const LRESULT result = object->WindowProc(message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        // The window is gone: the object lets go of it.
        {
            std::lock_guard lock(MapLock());
            HandleMap().erase(window);
        }
        object->m_hWnd = nullptr;
        object->m_pfnSuper = nullptr;
        object->PostNcDestroy();
    }
    return result;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    for (const AFX_MSGMAP* map = GetMessageMap(); map != nullptr;
         map = map->pfnGetBaseMap != nullptr ? map->pfnGetBaseMap() : nullptr) {
        for (const AFX_MSGMAP_ENTRY* entry = map->lpEntries; entry->pfn != nullptr; ++entry) {
            if (entry->nMessage == message) {
                return (this->*entry->pfn)(wParam, lParam);
            }
        }
    }
    return DefWindowProc(message, wParam, lParam);
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (m_pfnSuper != nullptr) {
        return CallWindowProcA(m_pfnSuper, m_hWnd, message, wParam, lParam);
    }
    return DefWindowProcA(m_hWnd, message, wParam, lParam);
}

const AFX_MSGMAP* CWnd::GetMessageMap() const {
    return GetThisMessageMap();
}

const AFX_MSGMAP* CWnd::GetThisMessageMap() {
    static const AFX_MSGMAP_ENTRY entries[] = {{0, nullptr}};
    static const AFX_MSGMAP map = {nullptr, entries};
    return &map;
}

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) const {
    return SendMessageA(m_hWnd, message, wParam, lParam);
}

void CWnd::SetWindowText(const char* text) {
    SetWindowTextA(m_hWnd, text);
}

void CWnd::GetWindowText(CString& text) const {
    const int length = GetWindowTextLength();
    GetWindowTextA(m_hWnd, text.GetBufferSetLength(length), length + 1);
    text.ReleaseBuffer();
}

int CWnd::GetWindowTextLength() const {
    return GetWindowTextLengthA(m_hWnd);
}

bool CWnd::EnableWindow(bool enable) {
    return ::nvk::os::EnableWindow(m_hWnd, enable ? TRUE : FALSE) != FALSE;
}

bool CWnd::IsWindowEnabled() const {
    return ::nvk::os::IsWindowEnabled(m_hWnd) != FALSE;
}

void CWnd::UpdateWindow() {
    ::nvk::os::UpdateWindow(m_hWnd);
}

int CWnd::GetDlgCtrlID() const {
    return ::nvk::os::GetDlgCtrlID(m_hWnd);
}

CWnd* CWnd::GetParent() const {
    return FromHandlePermanent(::nvk::os::GetParent(m_hWnd));
}

CWinThread* AfxGetThread() {
    thread_local CWinThread thread;
    return &thread;
}

CWnd* AfxGetMainWnd() {
    return AfxGetThread()->GetMainWnd();
}
