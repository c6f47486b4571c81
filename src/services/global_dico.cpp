#include "nvk/services/global_dico.h"

#include "nvk/core/process_singleton.h"
#include "os/api/sync.h"

namespace {

struct DicoKind {
    using Object = GlobalDico;
    static constexpr const char* Key = "ProcessDico";
    static GlobalDico* Make() { return new GlobalDico; }
    static void Destroy(GlobalDico* dico) { delete dico; }
};

}  // namespace

GlobalDico::GlobalDico() {
    nvk::os::InitializeCriticalSection(&m_Section);
}

GlobalDico::~GlobalDico() {
    nvk::os::DeleteCriticalSection(&m_Section);
}

GlobalDico& GlobalDico::Get() {
    return *nvk::ProcessSingleton<DicoKind>::Get();
}

void GlobalDico::Enter() {
    nvk::os::EnterCriticalSection(&m_Section);
}

void GlobalDico::Leave() {
    nvk::os::LeaveCriticalSection(&m_Section);
}

void GlobalDico::SetValue(const Chaine& key, const Chaine& value) {
    Enter();
    Get(key) = value;
    Leave();
}

bool GlobalDico::RemoveValue(const Chaine& key) {
    Enter();
    const bool removed = Remove(key);
    Leave();
    return removed;
}

Chaine GetDicoValue(const Chaine& key, const Chaine& defaultValue) {
    GlobalDico& dico = GlobalDico::Get();
    // The value is shared while the lock is held: an entry that another
    // thread removes just after would otherwise take its buffer along.
    Chaine value;
    dico.Enter();
    if (dico.Find(key, FindExact) != -1) {
        value = dico.GetValue(dico.Find(key, FindOrCreate));
    } else {
        value = defaultValue;
    }
    dico.Leave();
    return value;
}

bool ExistDicoValue(const Chaine& key) {
    GlobalDico& dico = GlobalDico::Get();
    dico.Enter();
    const bool exists = dico.Find(key, FindExact) != -1;
    dico.Leave();
    return exists;
}
