#include "nvk/platform/dde_thread.h"

#include "nvk/afx/message_box.h"
#include "nvk/context/string_load.h"
#include "nvk/core/process_singleton.h"
#include "os/api/message_box.h"
#include "os/api/sync.h"
#include "platform/dde_support.h"

namespace {

using namespace nvk::os;

struct DDEMapKind {
    using Object = TypeThreadToData;
    static constexpr const char* Key = "MapDDEDatas";
    static Object* Make() {
        auto* map = new TypeThreadToData(10);
        map->InitHashTable(17);
        return map;
    }
    static void Destroy(Object* map) { delete map; }
};

TypeThreadToData& ThreadMap() {
    return *nvk::ProcessSingleton<DDEMapKind>::Get();
}

// DDEInitialize's flags for a thread that only asks: APPCMD_CLIENTONLY,
// APPCMD_FILTERINITS, CBF_FAIL_ALLSVRXACTIONS, CBF_SKIP_ALLNOTIFICATIONS.
constexpr DWORD kClientOnly = 0x3FF030;

// The text of each DDEML error, by string id.
unsigned ErrorString(UINT error) {
    static constexpr unsigned kStrings[] = {14501, 14502, 14503, 14504, 14505, 14506,
                                            14507, 14508, 14509, 14511, 14510, 14512,
                                            14513, 14514, 14515, 14516, 14517, 14518};
    const UINT index = error - DMLERR_ADVACKTIMEOUT;
    return error >= DMLERR_ADVACKTIMEOUT && index < std::size(kStrings) ? kStrings[index] : 14519;
}

constexpr unsigned kCaption = 14520;

CString LoadText(unsigned id) {
    Chaine text;
    nvk::LoadString(text, id, nvk::FindStringModule(id));
    return CString(text.c_str());
}

}  // namespace

namespace nvk::dde {

// The map is one for the process while every thread adds and removes its
// own entry: look-up, insertion and removal run under the process lock, as
// threads starting DDE together would otherwise corrupt the map's buckets.
sgThreadData* ThreadData() {
    TypeThreadToData& map = ThreadMap();
    ProcessLock lock;
    const DWORD thread = GetCurrentThreadId();
    sgThreadData* data = nullptr;
    if (!map.Lookup(thread, data)) {
        data = new sgThreadData;
        map.SetAt(thread, data);
    }
    return data;
}

HSZ StringHandle(const CString& text) {
    sgThreadData* data = ThreadData();
    CObject* handle = nullptr;
    if (!data->Strings.Lookup(text, handle)) {
        handle = reinterpret_cast<CObject*>(DdeCreateStringHandleA(data->idInst, text, CP_WINANSI));
        data->Strings.SetAt(text, handle);
    }
    return reinterpret_cast<HSZ>(handle);
}

unsigned LastError() {
    return DdeGetLastError(ThreadData()->idInst);
}

CString ErrorText(unsigned error) {
    return LoadText(ErrorString(error));
}

void ShowError() {
    MessageBoxA(nullptr, ErrorText(LastError()), LoadText(kCaption), MB_ICONASTERISK);
}

CString QueryName(HSZ hsz, int room) {
    CString name;
    DdeQueryStringA(ThreadData()->idInst, hsz, name.GetBuffer(room), static_cast<DWORD>(room),
                    CP_WINANSI);
    name.ReleaseBuffer();
    return name;
}

}  // namespace nvk::dde

void DDEInitialize(bool bClientOnly) {
    sgThreadData* data = nvk::dde::ThreadData();
    if (data->bInitialized == 0) {
        data->bInitialized = 1;
        DWORD id = 0;
        DdeInitializeA(&id, nvk::dde::Callback, bClientOnly ? kClientOnly : 0, 0);
        data->idInst = id;
    }
}

void DDECleanUp() {
    sgThreadData* data = nvk::dde::ThreadData();
    if (data->idInst != 0) {
        DdeUninitialize(data->idInst);
    }
    data->idInst = 0;
    delete[] data->pDefaultBuffer;
    data->pDefaultBuffer = nullptr;
    {
        ProcessLock lock;
        ThreadMap().RemoveKey(GetCurrentThreadId());
    }
    delete data;
}
