#include "paths/path_stores.h"

#include "nvk/core/process_singleton.h"

namespace nvk::paths {

namespace {

template <class T>
struct Store {
    using Object = T;
    static T* Make() { return new T; }
    static void Destroy(T* object) { delete object; }
};

struct LockKind : Store<CCriticalSection> {
    static constexpr const char* Key = "SpecialNVKPathLock";
};
struct PathsKind : Store<FDictionnaryNoCase<Chaine>> {
    static constexpr const char* Key = "SpecialNVKPathPaths";
};
struct RulesKind : Store<FDictionnaryNoCase<SpecialNVKPath::Rule>> {
    static constexpr const char* Key = "SpecialNVKPathRules";
};
struct LegacyDefsKind : Store<PTableau<Chaine>> {
    static constexpr const char* Key = "SpecialNVKPathLegacyDefs";
};
struct LegaciesKind : Store<FSortedMap<SpecialNVKPath::LegacyID, Chaine>> {
    static constexpr const char* Key = "SpecialNVKPathLegacies";
};

}  // namespace

CCriticalSection& Lock() {
    return *ProcessSingleton<LockKind>::Get();
}

FDictionnaryNoCase<Chaine>& MemoryPaths() {
    return *ProcessSingleton<PathsKind>::Get();
}

FDictionnaryNoCase<SpecialNVKPath::Rule>& Rules() {
    return *ProcessSingleton<RulesKind>::Get();
}

PTableau<Chaine>& LegacyDefs() {
    return *ProcessSingleton<LegacyDefsKind>::Get();
}

FSortedMap<SpecialNVKPath::LegacyID, Chaine>& Legacies() {
    return *ProcessSingleton<LegaciesKind>::Get();
}

}  // namespace nvk::paths
