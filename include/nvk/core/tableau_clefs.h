// PTableauClefs: the keyed form of an array. The same handle word as the
// PTableau it derives from, plus a remembered position that is copied along
// with it and reads -1 in a value that was never searched. This library only
// stores and passes such values; the applications build them.
#pragma once

#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"

// Names the key type, its comparison and how a key is passed.
template <class Key, class Comparator, class Argument>
struct PTableauClefsRootS {
    using KeyType = Key;
    using Compare = Comparator;
    using ArgumentType = Argument;
};

// Orders texts without regard to case.
struct StandardNCComp {
    int operator()(const Chaine& a, const Chaine& b) const { return a.CompareNoCase(b); }
};

template <class Root>
class PTableauClefs : public PTableau<typename Root::KeyType> {
public:
    int Cursor() const { return m_Cursor; }

private:
    int m_Cursor = -1;
};
