// What the layer adds to modules, resources and paths on Windows, where the
// system has them all: a module's resources are its own, linked in by the
// resource compiler, and a path is already a Windows path.
#include <string>

#include "os/win32/forward.h"

namespace nvk::os {

HMODULE ModuleFromAddress(LPCVOID address) {
    HMODULE module = nullptr;
    ::GetModuleHandleExA(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        static_cast<LPCSTR>(address), &module);
    return module;
}

BOOL PinModule(LPCVOID address) {
    ::HMODULE module = nullptr;
    return ::GetModuleHandleExA(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
        static_cast<LPCSTR>(address), &module);
}

void RegisterResourceTable(HMODULE, const ResourceTable*) {}

void UnregisterResourceTable(const ResourceTable*) {}

namespace {

std::string FullPath(LPCSTR path) {
    char full[MAX_PATH];
    const ::DWORD length = ::GetFullPathNameA(path, MAX_PATH, full, nullptr);
    return length == 0 || length >= MAX_PATH ? std::string() : std::string(full, length);
}

}  // namespace

std::string ToNativePath(LPCSTR windowsPath) {
    return FullPath(windowsPath);
}

std::string ToWindowsPath(LPCSTR nativePath) {
    return FullPath(nativePath);
}

// A link saved on Windows has nothing beside it.
BOOL DeleteLinkCompanions(LPCSTR) {
    return TRUE;
}

int wsprintfA(LPSTR buffer, LPCSTR format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int written = ::wvsprintfA(buffer, format, arguments);
    va_end(arguments);
    return written;
}

// COM is set up for the calling thread on first use, as the shell's link
// objects need it.
HRESULT CoCreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID interfaceId,
                         LPVOID* object) {
    thread_local const ::HRESULT initialized = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    (void)initialized;
    return ::CoCreateInstance(reinterpret_cast<const ::CLSID&>(classId),
                              reinterpret_cast<::IUnknown*>(outer), context,
                              reinterpret_cast<const ::IID&>(interfaceId), object);
}

}  // namespace nvk::os
