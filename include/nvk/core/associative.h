// EAssociative: a map held as a PTableau of EPair, searched linearly. It is
// the root of the map family: the sorted maps derive from it and replace
// Find, Rename and Compare, which are virtual so that each instantiation
// brings its own comparison.
//
// `Cursor` is the index the last search ended on, or -1; the next search
// starts there. A search therefore changes the map, which is why no map may
// be read by two threads at once. Every search also separates a shared array
// before it reads an element.
#pragma once

#include <utility>

#include "nvk/core/key_compare.h"
#include "nvk/core/pair.h"
#include "nvk/core/tableau.h"

// The modes of Find. On a hit every mode returns the index of the key; they
// differ on a miss. Any other value behaves as FindExact.
enum FindMode : int {
    FindExact = 0,      // -1
    FindAbove = 1,      // the first key above, or -1
    FindBelow = 2,      // the last key below, or -1
    FindOrCreate = 3,   // inserts a default value under the key
    FindInsertPos = 4,  // where the key belongs
};

template <class Pair>
class EAssociative {
public:
    using Key = typename Pair::KeyType;
    using Value = typename Pair::ValueType;

    EAssociative() = default;
    EAssociative(const EAssociative&) = default;
    EAssociative& operator=(const EAssociative&) = default;
    virtual ~EAssociative() = default;

    // Changes a key; false when `oldKey` is absent or `newKey` present.
    virtual bool Rename(const Key& oldKey, const Key& newKey) {
        const int index = Find(oldKey, FindExact);
        if (index == -1 || Find(newKey, FindExact) != -1) {
            return false;
        }
        m_Array[index].Key = newKey;
        return true;
    }

    // 0 when `key` is the key of `element`; any other value otherwise.
    virtual int Compare(const Key& key, const Pair& element) const {
        return nvk::KeyCompare<Key>::Equal(key, element.Key);
    }

    // Tries the remembered position, then scans from the start. A miss in
    // FindOrCreate appends the key; FindOrCreate and FindInsertPos then answer
    // the last index.
    virtual int Find(const Key& key, int mode = FindExact) {
        m_Array.MakeUnique();
        const int count = m_Array.Size();
        const int start = m_Cursor;
        if (start >= 0 && start < count && Compare(key, Element(start)) == 0) {
            return start;
        }
        for (int i = 0; i < count; ++i) {
            if (Compare(key, Element(i)) == 0) {
                return Land(i);
            }
        }
        if (mode == FindOrCreate) {
            return InsertPair(key, count);
        }
        if (mode == FindInsertPos) {
            return Land(count - 1);
        }
        return Land(-1);
    }

    // The value under `key`, made (default) if the key is new: this is how a
    // map is written.
    Value& operator[](const Key& key) { return Get(key); }
    Value& Get(const Key& key) { return m_Array[Find(key, FindOrCreate)].Value; }

    bool Exist(const Key& key) { return Find(key, FindExact) != -1; }

    // Pairs by index, 0 to Count() - 1, which walks a sorted map in key
    // order. The index is not checked.
    const Key& GetKey(int i) const { return m_Array[i].Key; }
    const Value& GetValue(int i) const { return m_Array[i].Value; }
    Value& GetValue(int i) { return m_Array[i].Value; }
    int Count() const { return m_Array.Size(); }

    // Removes the pair of `key` if there is one. The remembered position
    // goes back to -1 either way, as it may now lie behind the end.
    bool Remove(const Key& key) {
        const int index = Find(key, FindExact);
        if (index != -1) {
            m_Array.Remove(1, index);
        }
        m_Cursor = -1;
        return index != -1;
    }
    void RemoveAll() {
        m_Array.RemoveAll();
        m_Cursor = -1;
    }

    int Cursor() const { return m_Cursor; }
    const PTableau<Pair>& Array() const { return m_Array; }

protected:
    const Pair& Element(int i) const { return m_Array[i]; }

    // Inserts a default value under `key` at `index` and leaves the cursor
    // on it. The pair is built once and copied in.
    int InsertPair(const Key& key, int index) {
        m_Array.InsertAt(index, Pair{key, Value()});
        return Land(index);
    }

    // Leaves the cursor on `index` and answers `index` itself, not the
    // member read back.
    int Land(int index) {
        m_Cursor = index;
        return index;
    }

    PTableau<Pair> m_Array;
    int m_Cursor = -1;
};
