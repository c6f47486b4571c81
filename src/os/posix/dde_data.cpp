#include <algorithm>
#include <cstring>
#include <mutex>
#include <unordered_map>

#include "os/posix/dde_instance.h"

namespace nvk::os::dde {

namespace {

struct DataObject {
    DWORD instance;
    std::vector<BYTE> bytes;
    UINT format;
    bool appOwned;
};

// Data handles are given to functions that take no instance, from any
// thread: one table for the process. Handle values are never reused, so a
// stale one is refused rather than read.
struct DataTable {
    std::mutex lock;
    std::unordered_map<std::uintptr_t, DataObject> objects;
    std::uintptr_t next = 0x100;
};

DataTable& Table() {
    static DataTable* table = new DataTable;  // lives past every instance's end
    return *table;
}

std::uintptr_t IdOf(HDDEDATA data) {
    return reinterpret_cast<std::uintptr_t>(data);
}

}  // namespace

HDDEDATA MakeData(DWORD instance, const BYTE* bytes, std::size_t size, UINT format, bool appOwned) {
    DataObject object{instance, std::vector<BYTE>(bytes, bytes + size), format, appOwned};
    DataTable& table = Table();
    std::lock_guard hold(table.lock);
    const std::uintptr_t id = table.next++;
    table.objects.emplace(id, std::move(object));
    return reinterpret_cast<HDDEDATA>(id);
}

bool ReadData(HDDEDATA data, std::vector<BYTE>& bytes, UINT& format) {
    DataTable& table = Table();
    std::lock_guard hold(table.lock);
    const auto found = table.objects.find(IdOf(data));
    if (found == table.objects.end()) {
        return false;
    }
    bytes = found->second.bytes;
    format = found->second.format;
    return true;
}

void ReleaseUsedData(HDDEDATA data) {
    DataTable& table = Table();
    std::lock_guard hold(table.lock);
    const auto found = table.objects.find(IdOf(data));
    if (found != table.objects.end() && !found->second.appOwned) {
        table.objects.erase(found);
    }
}

void FreeInstanceData(DWORD instance) {
    DataTable& table = Table();
    std::lock_guard hold(table.lock);
    std::erase_if(table.objects,
                  [instance](const auto& entry) { return entry.second.instance == instance; });
}

}  // namespace nvk::os::dde

namespace nvk::os {

using namespace dde;

HDDEDATA DdeCreateDataHandle(DWORD idInst, LPBYTE source, DWORD size, DWORD offset, HSZ /*item*/,
                             UINT format, UINT command) {
    const InstancePtr instance = FindInstance(idInst);
    if (instance == nullptr) {
        return nullptr;
    }
    std::vector<BYTE> bytes(static_cast<std::size_t>(offset) + size);
    if (source != nullptr && size > 0) {
        std::memcpy(bytes.data() + offset, source, size);
    }
    return MakeData(idInst, bytes.data(), bytes.size(), format, (command & HDATA_APPOWNED) != 0);
}

DWORD DdeGetData(HDDEDATA data, LPBYTE destination, DWORD size, DWORD offset) {
    DataTable& table = Table();
    std::lock_guard hold(table.lock);
    const auto found = table.objects.find(IdOf(data));
    if (found == table.objects.end()) {
        return 0;
    }
    const std::vector<BYTE>& bytes = found->second.bytes;
    if (destination == nullptr) {
        return static_cast<DWORD>(bytes.size());
    }
    if (offset >= bytes.size()) {
        return 0;
    }
    const std::size_t copied = std::min<std::size_t>(size, bytes.size() - offset);
    if (copied > 0) {
        std::memcpy(destination, bytes.data() + offset, copied);
    }
    return static_cast<DWORD>(copied);
}

BOOL DdeFreeDataHandle(HDDEDATA data) {
    DataTable& table = Table();
    std::lock_guard hold(table.lock);
    return table.objects.erase(IdOf(data)) > 0 ? TRUE : FALSE;
}

}  // namespace nvk::os
