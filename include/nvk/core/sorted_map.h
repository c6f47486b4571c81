// ESortedMap and FSortedMap: maps that keep their pairs sorted by key and
// search by bisection, starting from the remembered Cursor. A repeated key
// costs one comparison, and a walk in key order stays near the cursor.
//
// Keys are unique, since every way in goes through FindOrCreate: on an equal
// comparison the pair already there stands, with its key as first written.
#pragma once

#include "nvk/core/associative.h"

template <class Pair>
class ESortedMap : public EAssociative<Pair> {
public:
    using typename EAssociative<Pair>::Key;

    // Brackets the key with at most two comparisons (the cursor, then the
    // first or the last element), then bisects inside the bracket. The
    // answer is the local index the search ended on: the remembered Cursor
    // is written, never read back, so a search returns what it found.
    int Find(const Key& key, int mode = FindExact) override {
        this->m_Array.MakeUnique();
        const int count = this->m_Array.Size();
        if (count == 0) {
            if (mode == FindOrCreate) {
                return this->InsertPair(key, 0);
            }
            return this->Land(-1);
        }
        int start = this->m_Cursor;
        // A cursor behind the end would name spare memory.
        if (start < 0 || start >= count) {
            start = (count - 1) >> 1;
        }
        const int last = count - 1;
        const int atCursor = this->Compare(key, this->Element(start));
        if (atCursor == 0) {
            return this->Land(start);
        }
        if (atCursor < 0) {
            if (start == 0) {
                return BeforeFirst(key, mode);
            }
            const int atFirst = this->Compare(key, this->Element(0));
            if (atFirst < 0) {
                return BeforeFirst(key, mode);
            }
            if (atFirst == 0) {
                return this->Land(0);
            }
            return Bisect(key, mode, 0, start);
        }
        if (start != last) {
            const int atLast = this->Compare(key, this->Element(last));
            if (atLast < 0) {
                return Bisect(key, mode, start, last);
            }
            if (atLast == 0) {
                return this->Land(last);
            }
        }
        return BeyondLast(key, mode);
    }

    // Changes a key and moves its pair to the new key's place. A key beyond
    // the last one is placed one before the end, since FindInsertPos answers
    // the last index there: callers that need such a rename remove and add.
    bool Rename(const Key& oldKey, const Key& newKey) override {
        const int index = Find(oldKey, FindExact);
        if (index == -1 || Find(newKey, FindExact) != -1) {
            return false;
        }
        const int target = Find(newKey, FindInsertPos);
        // The insertion place is the pair itself when the new key lies between
        // its neighbours: the pair stays. Moving it one place back, as for a
        // target behind it, would leave key order, and the key could then be
        // neither found nor kept unique.
        const bool stays = target == index && this->Compare(newKey, this->Element(index)) < 0;
        this->m_Array[index].Key = newKey;
        if (!stays) {
            this->m_Array.Move(index, target >= index ? target - 1 : target);
        }
        return true;
    }

private:
    int BeforeFirst(const Key& key, int mode) {
        switch (mode) {
            case FindAbove:
            case FindInsertPos:
                return this->Land(0);
            case FindOrCreate:
                return this->InsertPair(key, 0);
            default:
                return this->Land(-1);
        }
    }

    int BeyondLast(const Key& key, int mode) {
        const int last = this->m_Array.Size() - 1;
        switch (mode) {
            case FindBelow:
            case FindInsertPos:
                return this->Land(last);
            case FindOrCreate:
                return this->InsertPair(key, last + 1);
            default:
                return this->Land(-1);
        }
    }

    // The key lies strictly between the elements at `low` and `high`. Only
    // -1 and 1 narrow the bracket; any other result is a hit.
    int Bisect(const Key& key, int mode, int low, int high) {
        while (high - low > 1) {
            const int middle = (high + low) >> 1;
            const int result = this->Compare(key, this->Element(middle));
            if (result == -1) {
                high = middle;
            } else if (result == 1) {
                low = middle;
            } else {
                return this->Land(middle);
            }
        }
        switch (mode) {
            case FindAbove:
            case FindInsertPos:
                return this->Land(high);
            case FindBelow:
                return this->Land(low);
            case FindOrCreate:
                return this->InsertPair(key, high);
            default:
                return this->Land(-1);
        }
    }
};

template <class K, class V>
class FSortedMap : public ESortedMap<EPair<K, V>> {
public:
    int Compare(const K& key, const EPair<K, V>& element) const override {
        return nvk::KeyCompare<K>::Order(key, element.Key);
    }
};
