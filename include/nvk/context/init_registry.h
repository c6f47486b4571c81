// The init-object registry: objects made on demand that must go at a
// controlled moment and in dependency order, rather than in the order of the
// atexit list. Each module has one (Module()); its destructor runs level 4,
// the tear-down, if nothing has yet.
#pragma once

#include <mutex>

#include "nvk/context/init_infos.h"
#include "nvk/core/sorted_map.h"
#include "nvk/core/tableau.h"

namespace nvk {

class InitRegistry {
public:
    InitRegistry() = default;
    ~InitRegistry();
    InitRegistry(const InitRegistry&) = delete;
    InitRegistry& operator=(const InitRegistry&) = delete;

    // The registry of this module, made at its first use.
    static InitRegistry& Module();

    // Adds a copy of `info`; false if its id is already there, in which case
    // the first registration stands.
    bool Register(const EInitInfos& info);

    // Brings every entry to `level`, calling the callbacks from the last in
    // order to the first, so that an entry goes before what it depends on.
    // A level at or below the one reached does nothing. True unless a
    // callback returned false; the run goes on after one does.
    bool RunLevel(int level);

    int Level() const { return m_Level; }
    const PTableau<EInitObjectID>& Order() const { return m_Order; }

private:
    void Visit(int index);

    // Registrations come from the first calls of the values the registry
    // releases, on whatever thread makes them, so the entries are changed and
    // walked under this lock. Recursive: a callback may register.
    std::recursive_mutex m_Lock;
    FSortedMap<EInitObjectID, EInitInfos> m_Entries;
    PTableau<EInitObjectID> m_Order;
    int m_Level = 0;
};

}  // namespace nvk
