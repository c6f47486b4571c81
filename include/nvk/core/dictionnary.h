// FDictionnary: the sorted map keyed by Chaine, in byte order.
#pragma once

#include <cstring>

#include "nvk/core/chaine.h"
#include "nvk/core/sorted_map.h"

// Unsorted maps of Chaine ask for byte equality; sorted ones order bytes.
template <>
struct nvk::KeyCompare<Chaine> {
    static int Equal(const Chaine& key, const Chaine& other) { return key == other ? 0 : 1; }
    static int Order(const Chaine& key, const Chaine& other) {
        const int order = std::strcmp(key.c_str(), other.c_str());
        return order < 0 ? -1 : (order > 0 ? 1 : 0);
    }
};

template <class V>
class FDictionnary : public FSortedMap<Chaine, V> {};
