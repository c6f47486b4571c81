#include <strings.h>

#include <algorithm>
#include <string>
#include <vector>

#include "os/api/resource_names.h"
#include "os/posix/handle.h"
#include "os/posix/resource_tables.h"

namespace nvk::os {

namespace {

struct Name {
    std::string Text;  // empty for a number
    WORD Number;

    bool operator==(const Name&) const = default;
};

// Texts before numbers, as a resource directory lists them.
bool Before(const Name& a, const Name& b) {
    if (a.Text.empty() != b.Text.empty()) {
        return !a.Text.empty();
    }
    if (!a.Text.empty()) {
        return strcasecmp(a.Text.c_str(), b.Text.c_str()) < 0;
    }
    return a.Number < b.Number;
}

}  // namespace

BOOL EnumResourceNamesA(HMODULE module, LPCSTR type, ENUMRESNAMEPROCA callback, LONG_PTR param) {
    if (type == nullptr || callback == nullptr) {
        posix::SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const std::vector<const ResourceTable*> tables = posix::TablesOf(module);
    std::vector<Name> names;
    for (const ResourceTable* table : tables) {
        for (DWORD i = 0; i < table->Count; ++i) {
            const ResourceEntry& entry = table->Entries[i];
            if (posix::SameId(entry.TypeText, entry.TypeId, type)) {
                names.push_back({entry.NameText != nullptr ? entry.NameText : "", entry.NameId});
            }
        }
    }
    if (names.empty()) {
        posix::SetErrorCode(tables.empty() ? ERROR_RESOURCE_DATA_NOT_FOUND
                                           : ERROR_RESOURCE_TYPE_NOT_FOUND);
        return FALSE;
    }
    std::stable_sort(names.begin(), names.end(), Before);
    names.erase(std::unique(names.begin(), names.end()), names.end());
    for (Name& name : names) {
        LPSTR given = name.Text.empty()
                          ? reinterpret_cast<LPSTR>(static_cast<ULONG_PTR>(name.Number))
                          : name.Text.data();
        if (callback(module, type, given, param) == FALSE) {
            posix::SetErrorCode(ERROR_RESOURCE_ENUM_USER_STOP);
            return FALSE;
        }
    }
    return TRUE;
}

}  // namespace nvk::os
