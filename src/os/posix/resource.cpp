// Resources over the tables that modules carry. A lookup takes the tables of
// the module under the lock and searches them without it: tables are constant
// data, and a module unregisters its own only as it goes away.
#include "os/api/resource.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <vector>

#include "os/api/error.h"
#include "os/api/locale.h"
#include "os/api/module.h"
#include "os/api/nls.h"
#include "os/posix/handle.h"
#include "os/posix/resource_tables.h"

namespace nvk::os {

namespace {

using posix::SetErrorCode;

// A resource's handle is the address of its entry in the module's table.
using Entry = const ResourceEntry*;

HRSRC HandleOf(Entry entry) {
    return reinterpret_cast<HRSRC>(const_cast<ResourceEntry*>(entry));
}

Entry EntryOf(HRSRC resource) {
    return reinterpret_cast<Entry>(resource);
}

struct Registration {
    HMODULE Module;
    const ResourceTable* Table;
};

std::mutex& RegistryLock() {
    static std::mutex lock;
    return lock;
}

std::vector<Registration>& Registry() {
    static std::vector<Registration> registry;
    return registry;
}

// "#123" names the number 123, as MAKEINTRESOURCEA(123) does.
bool AsNumber(LPCSTR id, unsigned long& number) {
    if (IS_INTRESOURCE(id)) {
        number = reinterpret_cast<ULONG_PTR>(id);
        return true;
    }
    if (id[0] != '#' || id[1] < '0' || id[1] > '9') {
        return false;
    }
    char* end = nullptr;
    number = std::strtoul(id + 1, &end, 10);
    return *end == '\0' && number <= 0xFFFF;
}

// The module's entries of one type and name, ordered by language. The error
// is set for the first of module, type and name that is missing.
std::vector<Entry> Candidates(HMODULE module, LPCSTR type, LPCSTR name) {
    std::vector<Entry> found;
    if (type == nullptr || name == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return found;
    }
    std::vector<const ResourceTable*> tables = posix::TablesOf(module);
    bool typeSeen = false;
    for (const ResourceTable* table : tables) {
        for (DWORD i = 0; i < table->Count; ++i) {
            const ResourceEntry& entry = table->Entries[i];
            if (posix::SameId(entry.TypeText, entry.TypeId, type)) {
                typeSeen = true;
                if (posix::SameId(entry.NameText, entry.NameId, name)) {
                    found.push_back(&entry);
                }
            }
        }
    }
    std::stable_sort(found.begin(), found.end(),
                     [](Entry a, Entry b) { return a->Language < b->Language; });
    if (found.empty()) {
        SetErrorCode(tables.empty() ? ERROR_RESOURCE_DATA_NOT_FOUND
                     : typeSeen     ? ERROR_RESOURCE_NAME_NOT_FOUND
                                    : ERROR_RESOURCE_TYPE_NOT_FOUND);
    }
    return found;
}

Entry InLanguage(const std::vector<Entry>& candidates, WORD language) {
    for (Entry entry : candidates) {
        if (entry->Language == language) {
            return entry;
        }
    }
    return nullptr;
}

Entry InPrimaryLanguage(const std::vector<Entry>& candidates, WORD language) {
    for (Entry entry : candidates) {
        if (PRIMARYLANGID(entry->Language) == PRIMARYLANGID(language)) {
            return entry;
        }
    }
    return nullptr;
}

}  // namespace

namespace posix {

bool SameId(LPCSTR storedText, WORD storedId, LPCSTR asked) {
    unsigned long number = 0;
    if (AsNumber(asked, number)) {
        return storedText == nullptr && storedId == number;
    }
    return storedText != nullptr && strcasecmp(storedText, asked) == 0;
}

std::vector<const ResourceTable*> TablesOf(HMODULE module) {
    std::vector<const ResourceTable*> tables;
    {
        std::lock_guard lock(RegistryLock());
        for (const Registration& entry : Registry()) {
            if (entry.Module == module) {
                tables.push_back(entry.Table);
            }
        }
    }
    if (tables.empty()) {
        DWORD error = GetLastError();
        FARPROC symbol = GetProcAddress(module, kResourceTableSymbol);
        SetErrorCode(error);
        if (symbol != nullptr) {
            tables.push_back(reinterpret_cast<const ResourceTable*>(symbol));
        }
    }
    return tables;
}

}  // namespace posix

void RegisterResourceTable(HMODULE module, const ResourceTable* table) {
    if (table == nullptr) {
        return;
    }
    std::lock_guard lock(RegistryLock());
    Registry().push_back({module, table});
}

void UnregisterResourceTable(const ResourceTable* table) {
    std::lock_guard lock(RegistryLock());
    std::erase_if(Registry(), [table](const Registration& entry) { return entry.Table == table; });
}

HRSRC FindResourceExA(HMODULE module, LPCSTR type, LPCSTR name, WORD language) {
    if (language == MAKELANGID(LANG_NEUTRAL, SUBLANG_NEUTRAL)) {
        return FindResourceA(module, name, type);
    }
    std::vector<Entry> candidates = Candidates(module, type, name);
    if (candidates.empty()) {
        return nullptr;
    }
    // Windows takes the language asked for, then its primary language, then
    // the neutral one: a neutral resource stands for every language.
    for (WORD tried :
         {language, static_cast<WORD>(MAKELANGID(PRIMARYLANGID(language), SUBLANG_NEUTRAL)),
          static_cast<WORD>(LANG_NEUTRAL)}) {
        if (Entry entry = InLanguage(candidates, tried)) {
            SetErrorCode(ERROR_SUCCESS);
            return HandleOf(entry);
        }
    }
    SetErrorCode(ERROR_RESOURCE_LANG_NOT_FOUND);
    return nullptr;
}

HRSRC FindResourceA(HMODULE module, LPCSTR name, LPCSTR type) {
    std::vector<Entry> candidates = Candidates(module, type, name);
    if (candidates.empty()) {
        return nullptr;
    }
    auto thread = static_cast<WORD>(GetThreadLocale() & 0xFFFF);
    Entry entry = InLanguage(candidates, LANG_NEUTRAL);
    if (entry == nullptr) {
        entry = InLanguage(candidates, thread);
    }
    if (entry == nullptr) {
        entry = InLanguage(candidates, MAKELANGID(PRIMARYLANGID(thread), SUBLANG_NEUTRAL));
    }
    if (entry == nullptr) {
        entry = InPrimaryLanguage(candidates, thread);
    }
    for (WORD language : {static_cast<WORD>(GetUserDefaultLCID() & 0xFFFF),
                          GetSystemDefaultLangID(), WORD{0x0409}}) {
        if (entry == nullptr) {
            entry = InLanguage(candidates, language);
        }
    }
    if (entry == nullptr) {
        entry = candidates.front();
    }
    SetErrorCode(ERROR_SUCCESS);
    return HandleOf(entry);
}

HGLOBAL LoadResource(HMODULE /*module*/, HRSRC resource) {
    if (resource == nullptr) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    // Resources are read-only; the Win32 signatures hand them out writable.
    return const_cast<void*>(EntryOf(resource)->Data);
}

DWORD SizeofResource(HMODULE /*module*/, HRSRC resource) {
    if (resource == nullptr) {
        SetErrorCode(ERROR_INVALID_HANDLE);
        return 0;
    }
    return EntryOf(resource)->Size;
}

LPVOID LockResource(HGLOBAL data) {
    return data;
}

BOOL FreeResource(HGLOBAL /*data*/) {
    return FALSE;
}

BOOL EnumResourceLanguagesA(HMODULE module, LPCSTR type, LPCSTR name, ENUMRESLANGPROCA callback,
                            LONG_PTR param) {
    if (callback == nullptr) {
        SetErrorCode(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::vector<Entry> candidates = Candidates(module, type, name);
    if (candidates.empty()) {
        return FALSE;
    }
    int last = -1;
    for (Entry entry : candidates) {
        if (entry->Language == last) {
            continue;
        }
        last = entry->Language;
        if (!callback(module, type, name, entry->Language, param)) {
            break;
        }
    }
    SetErrorCode(ERROR_SUCCESS);
    return TRUE;
}

}  // namespace nvk::os
