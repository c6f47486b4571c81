#include "nvk/context/init_registry.h"

#include <cstring>

namespace nvk {

InitRegistry::~InitRegistry() {
    if (m_Level < 4) {
        RunLevel(4);
    }
}

InitRegistry& InitRegistry::Module() {
    // Made at first use, after the block storage is up, so that its
    // tear-down runs before the storage goes.
    static InitRegistry registry;
    return registry;
}

bool InitRegistry::Register(const EInitInfos& info) {
    std::lock_guard guard(m_Lock);
    if (m_Entries.Find(info.Id, FindExact) != -1) {
        return false;
    }
    m_Entries.GetValue(m_Entries.Find(info.Id, FindOrCreate)) = info;
    return true;
}

// Depth first: an entry's registered dependencies stand in the order before
// it. The mark is set on the way in, so a cycle ends where it closes.
void InitRegistry::Visit(int index) {
    EInitInfos& entry = m_Entries.GetValue(index);
    if (entry.Visited) {
        return;
    }
    entry.Visited = true;
    for (const char* rest = entry.Dependencies; rest != nullptr && *rest != '\0';) {
        const char* end = std::strchr(rest, ';');
        const int length = static_cast<int>(end != nullptr ? end - rest : std::strlen(rest));
        const int dependency = m_Entries.Find(EInitObjectID(rest, length), FindExact);
        if (dependency != -1) {
            Visit(dependency);
        }
        rest = end != nullptr ? end + 1 : nullptr;
    }
    m_Order.Add(entry.Id);
}

bool InitRegistry::RunLevel(int level) {
    std::lock_guard guard(m_Lock);
    if (m_Level >= level) {
        return true;
    }
    m_Level = level;
    for (int i = 0; i < m_Entries.Count(); ++i) {
        Visit(i);
    }
    bool succeeded = true;
    for (int i = m_Order.Size() - 1; i >= 0; --i) {
        const int index = m_Entries.Find(m_Order[i], FindExact);
        if (index == -1) {
            continue;
        }
        // A callback may register further entries, which moves indices.
        const EInitInfos& entry = m_Entries.GetValue(index);
        const EInitCallback callback = entry.Callback;
        if (callback != nullptr && !callback(level, entry.Context)) {
            succeeded = false;
        }
    }
    return succeeded;
}

}  // namespace nvk
