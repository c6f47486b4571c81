#include <cstring>

#include "os/api/error.h"
#include "os/posix/dde_instance.h"

namespace nvk::os::dde {

namespace {

// The longest text of a string handle, as of the system's atoms.
constexpr std::size_t kMaxString = 255;

// Windows-1252's upper case of a byte.
unsigned char Upper(unsigned char c) {
    if ((c >= 'a' && c <= 'z') || (c >= 0xE0 && c <= 0xFE && c != 0xF7)) {
        return static_cast<unsigned char>(c - 0x20);
    }
    switch (c) {
        case 0x9A:  // š
        case 0x9C:  // œ
        case 0x9E:  // ž
            return static_cast<unsigned char>(c - 0x10);
        case 0xFF:  // ÿ
            return 0x9F;
        default:
            return c;
    }
}

HSZ AsHsz(std::uintptr_t id) {
    return reinterpret_cast<HSZ>(id);
}

std::uintptr_t IdOf(HSZ hsz) {
    return reinterpret_cast<std::uintptr_t>(hsz);
}

// The FNV-1a hash of `text` from `basis`.
std::uint64_t Fnv(const std::string& text, std::uint64_t basis) {
    std::uint64_t hash = basis;
    for (const char c : text) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3u;
    }
    return hash;
}

}  // namespace

std::string Fold(const std::string& text) {
    std::string folded(text);
    for (char& c : folded) {
        c = static_cast<char>(Upper(static_cast<unsigned char>(c)));
    }
    return folded;
}

// Letters and digits stand for themselves and any other byte is "_XX", after
// "S", so that the element never begins with a digit. A name whose escape
// would pass the bus's 255 characters is "H" and 32 hexadecimal digits of a
// hash; the server checks the name itself on every connection, so that a
// clash of hashes connects nobody to the wrong service.
std::string ServiceBusName(const std::string& folded) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string name = std::string(kInterface) + ".S";
    for (const char c : folded) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
            (byte >= '0' && byte <= '9')) {
            name += c;
        } else {
            name += '_';
            name += kHex[byte >> 4];
            name += kHex[byte & 15];
        }
    }
    if (name.size() <= 255) {
        return name;
    }
    name = std::string(kInterface) + ".H";
    for (const std::uint64_t part :
         {Fnv(folded, 0xCBF29CE484222325u), Fnv(folded, 0x84222325CBF29CE4u)}) {
        for (int shift = 60; shift >= 0; shift -= 4) {
            name += kHex[(part >> shift) & 15];
        }
    }
    return name;
}

HSZ AcquireString(Instance& instance, const std::string& text) {
    if (text.size() > kMaxString) {
        return nullptr;
    }
    std::string folded = Fold(text);
    const auto found = instance.stringIds.find(folded);
    if (found != instance.stringIds.end()) {
        ++instance.strings[found->second].uses;
        return AsHsz(found->second);
    }
    const std::uintptr_t id = instance.nextString++;
    instance.stringIds.emplace(folded, id);
    instance.strings.emplace(id, StringEntry{text, std::move(folded), 1});
    return AsHsz(id);
}

void ReleaseString(Instance& instance, HSZ hsz) {
    const auto found = instance.strings.find(IdOf(hsz));
    if (found != instance.strings.end() && --found->second.uses == 0) {
        instance.stringIds.erase(found->second.folded);
        instance.strings.erase(found);
    }
}

const StringEntry* StringOf(const Instance& instance, HSZ hsz) {
    const auto found = instance.strings.find(IdOf(hsz));
    return found != instance.strings.end() ? &found->second : nullptr;
}

}  // namespace nvk::os::dde

namespace nvk::os {

using namespace dde;

HSZ DdeCreateStringHandleA(DWORD idInst, LPCSTR text, int codePage) {
    const InstancePtr instance = FindInstance(idInst);
    if (instance == nullptr) {
        return nullptr;
    }
    if (text == nullptr || (codePage != 0 && codePage != CP_WINANSI)) {
        instance->lastError = DMLERR_INVALIDPARAMETER;
        return nullptr;
    }
    const HSZ hsz = AcquireString(*instance, text);
    if (hsz == nullptr) {
        instance->lastError = DMLERR_INVALIDPARAMETER;
    }
    return hsz;
}

BOOL DdeFreeStringHandle(DWORD idInst, HSZ hsz) {
    const InstancePtr instance = FindInstance(idInst);
    if (instance == nullptr || StringOf(*instance, hsz) == nullptr) {
        return FALSE;
    }
    ReleaseString(*instance, hsz);
    return TRUE;
}

DWORD DdeQueryStringA(DWORD idInst, HSZ hsz, LPSTR text, DWORD size, int codePage) {
    const InstancePtr instance = FindInstance(idInst);
    if (instance == nullptr) {
        return 0;
    }
    const StringEntry* entry = StringOf(*instance, hsz);
    if (entry == nullptr || (codePage != 0 && codePage != CP_WINANSI)) {
        instance->lastError = DMLERR_INVALIDPARAMETER;
        return 0;
    }
    const auto length = static_cast<DWORD>(entry->text.size());
    if (text == nullptr) {
        return length;
    }
    if (size == 0) {
        return 0;
    }
    const DWORD copied = std::min(length, size - 1);
    std::memcpy(text, entry->text.data(), copied);
    text[copied] = '\0';
    return copied;
}

}  // namespace nvk::os
