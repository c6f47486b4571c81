// FDictionnary and FDictionnaryNoCase: the sorted maps keyed by Chaine. The
// no-case form is the one in use: "Paths" and "PATHS" are one key, and the
// key keeps the spelling it was first written with.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/core/sorted_map.h"

// Unsorted maps of Chaine ask for byte equality; sorted ones order bytes.
template <>
struct nvk::KeyCompare<Chaine> {
    static int Equal(const Chaine& key, const Chaine& other) { return key == other ? 0 : 1; }
    static int Order(const Chaine& key, const Chaine& other) { return key.Compare(other); }
};

template <class V>
class FDictionnary : public FSortedMap<Chaine, V> {};

template <class V>
class FDictionnaryNoCase : public FDictionnary<V> {
public:
    int Compare(const Chaine& key, const EPair<Chaine, V>& element) const override {
        return key.CompareNoCase(element.Key);
    }
};
