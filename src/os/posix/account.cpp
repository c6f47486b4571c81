#include "os/api/account.h"

#include <pwd.h>
#include <unistd.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "os/posix/handle.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

constexpr BYTE kRevision = 1;
constexpr BYTE kNtAuthority = 5;
constexpr DWORD kNonUnique = 21;
constexpr int kSubAuthorities = 5;  // 21, three of the machine, the uid

// The binary SID, as Windows lays it out: revision, count, a 48-bit
// big-endian authority, then the sub-authorities.
struct Sid {
    BYTE Revision;
    BYTE SubAuthorityCount;
    BYTE IdentifierAuthority[6];
    DWORD SubAuthority[kSubAuthorities];
};
static_assert(sizeof(Sid) == 28);

// Three words of the machine id: systemd's, else D-Bus's; zeros on a
// machine that has neither, which still gives every user a SID of its own.
void MachineWords(DWORD words[3]) {
    words[0] = words[1] = words[2] = 0;
    for (const char* file : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
        std::ifstream in(file);
        std::string id;
        if (in >> id && id.size() >= 24) {
            for (int i = 0; i < 3; ++i) {
                words[i] =
                    static_cast<DWORD>(std::strtoul(id.substr(8 * i, 8).c_str(), nullptr, 16));
            }
            return;
        }
    }
}

std::string MachineName() {
    char name[256] = {};
    if (gethostname(name, sizeof name - 1) != 0) {
        return "LOCALHOST";
    }
    std::string text(name);
    text = text.substr(0, text.find('.'));
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

bool FindUid(const char* name, uid_t& uid) {
    std::vector<char> scratch(4096);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwnam_r(name, &entry, scratch.data(), scratch.size(), &found) != 0 || found == nullptr) {
        return false;
    }
    uid = found->pw_uid;
    return true;
}

}  // namespace

BOOL LookupAccountNameA(LPCSTR systemName, LPCSTR accountName, PSID sid, LPDWORD sidSize,
                        LPSTR domain, LPDWORD domainSize, SID_NAME_USE* use) {
    if (accountName == nullptr || sidSize == nullptr || domainSize == nullptr ||
        (systemName != nullptr && systemName[0] != '\0')) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    uid_t uid = 0;
    if (!FindUid(accountName, uid)) {
        SetErrorCode(ERROR_NONE_MAPPED);
        return FALSE;
    }
    const std::string machine = MachineName();
    const auto domainRoom = static_cast<DWORD>(machine.size() + 1);
    if (sid == nullptr || *sidSize < sizeof(Sid) || domain == nullptr || *domainSize < domainRoom) {
        *sidSize = sizeof(Sid);
        *domainSize = domainRoom;
        SetErrorCode(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    Sid made = {kRevision, kSubAuthorities, {0, 0, 0, 0, 0, kNtAuthority}, {kNonUnique}};
    MachineWords(&made.SubAuthority[1]);
    made.SubAuthority[4] = static_cast<DWORD>(uid);
    std::memcpy(sid, &made, sizeof made);
    *sidSize = sizeof(Sid);
    std::memcpy(domain, machine.c_str(), domainRoom);
    *domainSize = domainRoom - 1;
    if (use != nullptr) {
        *use = SidTypeUser;
    }
    return TRUE;
}

BOOL ConvertSidToStringSidA(PSID sid, LPSTR* text) {
    if (sid == nullptr || text == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const auto* bytes = static_cast<const BYTE*>(sid);
    const BYTE count = bytes[1];
    if (bytes[0] != kRevision || count > 15) {
        SetErrorCode(ERROR_INVALID_SID);
        return FALSE;
    }
    std::uint64_t authority = 0;
    for (int i = 0; i < 6; ++i) {
        authority = authority << 8 | bytes[2 + i];
    }
    std::string out = "S-1-" + std::to_string(authority);
    for (int i = 0; i < count; ++i) {
        DWORD word = 0;
        std::memcpy(&word, bytes + 8 + 4 * i, 4);
        out += "-" + std::to_string(word);
    }
    auto* copy = static_cast<char*>(std::malloc(out.size() + 1));
    if (copy == nullptr) {
        SetErrorCode(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    std::memcpy(copy, out.c_str(), out.size() + 1);
    *text = copy;
    return TRUE;
}

HLOCAL LocalFree(HLOCAL memory) {
    std::free(memory);
    return nullptr;
}

}  // namespace nvk::os
