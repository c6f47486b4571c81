// Chaine values filled from the system: locale comparison, code pages, the
// environment and the user's name.
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "nvk/context/string_load.h"
#include "nvk/core/chaine.h"
#include "os/api/environment.h"
#include "os/api/nls.h"
#include "os/api/user.h"

namespace os = nvk::os;

int Chaine::CompareLocale(const Chaine& other, os::DWORD flags, os::LCID lcid) const {
    return os::CompareStringA(lcid, flags, m_pText, Length(), other.m_pText, other.Length()) - 2;
}

Chaine& Chaine::AnsiToOem() {
    Take(nvk::MakeUnique(Buffer()));
    os::CharToOemA(m_pText, m_pText);
    return *this;
}

Chaine& Chaine::OemToAnsi() {
    Take(nvk::MakeUnique(Buffer()));
    os::OemToCharA(m_pText, m_pText);
    return *this;
}

Chaine& Chaine::ToCodePage(os::UINT codePage) {
    const int length = Length();
    if (length == 0) {
        return *this;
    }
    const std::unique_ptr<os::WCHAR, decltype(&std::free)> wide(
        static_cast<os::WCHAR*>(std::malloc(sizeof(os::WCHAR) * static_cast<std::size_t>(length))),
        &std::free);
    if (!wide) {
        return *this;
    }
    const int count = os::MultiByteToWideChar(os::CP_ACP, 0, m_pText, length, wide.get(), length);
    if (count <= 0) {
        return *this;
    }
    Take(nvk::MakeUnique(Buffer()));
    // UTF-8 has a form for every character and takes no default character.
    const char* blank = codePage == os::CP_UTF8 ? nullptr : " ";
    os::WideCharToMultiByte(codePage, 0, wide.get(), count, m_pText, length, blank, nullptr);
    return *this;
}

Chaine::Chaine(os::UINT id, os::HINSTANCE module) : Chaine() {
    LoadString(id, module);
}

bool Chaine::LoadString(os::UINT id) {
    // From the module whose resources hold the string's block, as the
    // framework finds it.
    return nvk::LoadString(*this, id, nvk::FindStringModule(id));
}

bool Chaine::LoadString(os::UINT id, os::HINSTANCE module) {
    return nvk::LoadString(*this, id, module);
}

Chaine& Chaine::FormatId(os::UINT id, os::HINSTANCE module, ...) {
    Chaine format;
    if (!format.LoadString(id, module)) {
        Empty();
        return *this;
    }
    va_list args;
    va_start(args, module);
    FormatV(format, args);
    va_end(args);
    return *this;
}

Chaine& Chaine::GetEnv(const char* name) {
    Chaine value;
    // The variable may change between the two calls: try until it fits.
    for (os::DWORD room = 64;;) {
        char* text = value.SetLength(static_cast<int>(room) - 1);
        const os::DWORD got = os::GetEnvironmentVariableA(name, text, room);
        if (got == 0) {
            Empty();
            return *this;
        }
        if (got < room) {
            return Assign(Chaine(text, static_cast<int>(got)));
        }
        room = got;
    }
}

Chaine& Chaine::ExpandEnv() {
    Chaine expanded;
    for (os::DWORD room = static_cast<os::DWORD>(Length()) + 64;;) {
        char* text = expanded.SetLength(static_cast<int>(room) - 1);
        const os::DWORD needed = os::ExpandEnvironmentStringsA(m_pText, text, room);
        if (needed == 0) {
            return *this;
        }
        if (needed <= room) {
            return Assign(Chaine(text, static_cast<int>(needed) - 1));
        }
        room = needed;
    }
}

Chaine& Chaine::GetUserName() {
    char name[257];
    os::DWORD size = sizeof name;
    if (os::GetUserNameA(name, &size)) {
        return Assign(name);
    }
    Empty();
    return *this;
}
