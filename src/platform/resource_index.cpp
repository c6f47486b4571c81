#include "nvk/platform/resource_index.h"

#include <cstring>

#include "os/api/resource_names.h"

using namespace nvk::os;

namespace {

struct Search {
    const char* Name;
    int Position;
    int Found;
};

BOOL Visit(HMODULE, LPCSTR, LPSTR name, LONG_PTR param) {
    auto* search = reinterpret_cast<Search*>(param);
    const bool same = IS_INTRESOURCE(search->Name)
                          ? name == search->Name
                          : !IS_INTRESOURCE(name) && std::strcmp(name, search->Name) == 0;
    if (same) {
        search->Found = search->Position;
        return FALSE;
    }
    ++search->Position;
    return TRUE;
}

}  // namespace

int FindResourceIndex(HINSTANCE module, const char* type, const char* name) {
    Search search{name, 0, -1};
    EnumResourceNamesA(module, type, Visit, reinterpret_cast<LONG_PTR>(&search));
    return search.Found;
}

int FindIconIndex(HINSTANCE module, DWORD id) {
    const LPCSTR name = MAKEINTRESOURCEA(static_cast<WORD>(id & 0xFFFF));
    const int group = FindResourceIndex(module, RT_GROUP_ICON, name);
    return group >= 0 ? group : FindResourceIndex(module, RT_ICON, name);
}
