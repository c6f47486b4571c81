#include "nvk/context/string_load.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "nvk/context/loc.h"
#include "os/api/module.h"
#include "os/api/nls.h"
#include "os/api/resource.h"

namespace nvk {

// The library's resources, compiled from its resource scripts.
extern const os::ResourceTable LibraryResources;

namespace {

// Keeps the library's table registered under the module that carries it, for
// as long as the module is loaded.
struct TableRegistration {
    TableRegistration() : Module(os::ModuleFromAddress(&LibraryResources)) {
        os::RegisterResourceTable(Module, &LibraryResources);
    }
    ~TableRegistration() { os::UnregisterResourceTable(&LibraryResources); }
    TableRegistration(const TableRegistration&) = delete;
    TableRegistration& operator=(const TableRegistration&) = delete;

    os::HMODULE Module;
};

// A string table's UTF-16 units, as the system's wide calls take them.
using WideText = std::basic_string<os::WCHAR>;

// String `place` of a block: each place is a 16-bit length and that many
// units. A walk that leaves the block, or an empty block, gives nothing.
bool ReadBlock(os::HMODULE module, os::HRSRC resource, unsigned place, WideText& text) {
    text.clear();
    os::DWORD size = os::SizeofResource(module, resource);
    if (size == 0) {
        return false;
    }
    os::HGLOBAL data = os::LoadResource(module, resource);
    if (data == nullptr) {
        return false;
    }
    const auto* units = static_cast<const os::WCHAR*>(os::LockResource(data));
    std::size_t count = size / 2;
    std::size_t at = 0;
    for (unsigned i = 0; i < place && at < count; ++i) {
        at += 1 + units[at];
    }
    if (at < count) {
        std::size_t length = units[at];
        length = std::min(length, count - at - 1);
        text.assign(units + at + 1, length);
    }
    os::FreeResource(data);
    return !text.empty();
}

// The text in the ANSI code page; the wide buffer is taken with its
// terminator, as the system's loader hands it over.
Chaine ToAnsi(const WideText& text) {
    constexpr os::DWORD kCompositeCheck = 0x200;
    const int size = static_cast<int>(text.size()) + 1;
    const int n = os::WideCharToMultiByte(os::CP_ACP, kCompositeCheck, text.c_str(), size, nullptr,
                                          0, nullptr, nullptr);
    Chaine value;
    if (n > 1) {
        char* out = value.SetLength(n - 1);
        os::WideCharToMultiByte(os::CP_ACP, kCompositeCheck, text.c_str(), size, out, n, nullptr,
                                nullptr);
    }
    return value;
}

}  // namespace

os::HMODULE LibraryModule() {
    static TableRegistration registration;
    return registration.Module;
}

os::HMODULE FindStringModule(unsigned id) {
    os::HMODULE library = LibraryModule();
    if (os::FindResourceA(nullptr, os::MAKEINTRESOURCEA(StringBlock(id)), os::RT_STRING) !=
        nullptr) {
        return nullptr;
    }
    return library;
}

bool LoadStringIn(Chaine& value, unsigned id, os::HMODULE module, std::uint16_t language) {
    os::LPCSTR block = os::MAKEINTRESOURCEA(StringBlock(id));
    WideText text;
    bool loaded = false;
    if (os::HRSRC resource = os::FindResourceExA(module, os::RT_STRING, block, language)) {
        loaded = ReadBlock(module, resource, id & 15, text);
    } else if (language != 0) {
        if (os::HRSRC any = os::FindResourceA(module, block, os::RT_STRING)) {
            loaded = ReadBlock(module, any, id & 15, text);
        }
    }
    value = ToAnsi(text);
    return loaded;
}

bool LoadString(Chaine& value, unsigned id, os::HMODULE module) {
    return LoadStringIn(value, id, module, ELoc::Get().GetLangID());
}

}  // namespace nvk
