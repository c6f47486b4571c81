// CMap: the framework's hash map, a table of buckets of singly linked
// associations. The table is made on the first insertion, with 17 buckets
// unless InitHashTable chose another size; associations come from blocks of
// `nBlockSize`. The order of a walk is the table's, not the keys'.
#pragma once

#include <cstdint>
#include <type_traits>

#include "nvk/afx/cstring.h"
#include "nvk/afx/object.h"
#include "nvk/afx/plex.h"
#include "nvk/nvkafx_export.h"

// The bucket of a key before the modulo: integers and pointers by their
// value without the low four bits, as the framework hashes them.
template <class ARG_KEY>
unsigned HashKey(ARG_KEY key) {
    if constexpr (std::is_pointer_v<ARG_KEY>) {
        return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(key) >> 4);
    } else {
        return static_cast<unsigned>(static_cast<std::uintptr_t>(key) >> 4);
    }
}

// Text hashes on its bytes, so that equal texts meet in one bucket.
inline unsigned HashKey(const char* key) {
    unsigned hash = 0;
    for (; *key != '\0'; ++key) {
        hash = (hash << 5) + hash + static_cast<unsigned char>(*key);
    }
    return hash;
}

template <class KEY, class ARG_KEY, class VALUE, class ARG_VALUE>
class CMap : public CObject {
public:
    explicit CMap(int nBlockSize = 10) : m_Pool(nBlockSize) {}
    ~CMap() override { RemoveAll(); }
    CMap(const CMap&) = delete;
    CMap& operator=(const CMap&) = delete;

    int GetCount() const { return m_nCount; }
    int GetSize() const { return m_nCount; }
    bool IsEmpty() const { return m_nCount == 0; }
    unsigned GetHashTableSize() const { return m_nHashTableSize; }

    bool Lookup(ARG_KEY key, VALUE& value) const {
        unsigned bucket = 0;
        CAssoc* assoc = GetAssocAt(key, bucket);
        if (assoc == nullptr) {
            return false;
        }
        value = assoc->value;
        return true;
    }

    // The value of `key`, made default when the key is new.
    VALUE& operator[](ARG_KEY key) {
        unsigned bucket = 0;
        if (CAssoc* assoc = GetAssocAt(key, bucket)) {
            return assoc->value;
        }
        if (m_pHashTable == nullptr) {
            InitHashTable(m_nHashTableSize);
        }
        CAssoc* assoc = m_Pool.New(key, m_pHashTable[bucket]);
        m_pHashTable[bucket] = assoc;
        ++m_nCount;
        return assoc->value;
    }

    void SetAt(ARG_KEY key, ARG_VALUE newValue) { (*this)[key] = newValue; }

    bool RemoveKey(ARG_KEY key) {
        if (m_pHashTable == nullptr) {
            return false;
        }
        for (CAssoc** link = &m_pHashTable[Bucket(key)]; *link != nullptr; link = &(*link)->pNext) {
            if ((*link)->key == key) {
                CAssoc* assoc = *link;
                *link = assoc->pNext;
                m_Pool.Delete(assoc);
                if (--m_nCount == 0) {
                    RemoveAll();
                }
                return true;
            }
        }
        return false;
    }

    void RemoveAll() {
        if (m_pHashTable != nullptr) {
            for (unsigned bucket = 0; bucket < m_nHashTableSize; ++bucket) {
                for (CAssoc* assoc = m_pHashTable[bucket]; assoc != nullptr;) {
                    CAssoc* next = assoc->pNext;
                    m_Pool.Delete(assoc);
                    assoc = next;
                }
            }
            nvk::afx::FreeBytes(m_pHashTable);
            m_pHashTable = nullptr;
        }
        m_nCount = 0;
        m_Pool.FreeBlocks();
    }

    // Sets the number of buckets of an empty map; the table is made now
    // when `allocNow`, otherwise on the first insertion.
    void InitHashTable(unsigned hashSize, bool allocNow = true) {
        if (m_pHashTable != nullptr) {
            nvk::afx::FreeBytes(m_pHashTable);
            m_pHashTable = nullptr;
        }
        m_nHashTableSize = hashSize > 0 ? hashSize : 1;
        if (allocNow) {
            m_pHashTable =
                static_cast<CAssoc**>(nvk::afx::AllocateBytes(sizeof(CAssoc*) * m_nHashTableSize));
            for (unsigned bucket = 0; bucket < m_nHashTableSize; ++bucket) {
                m_pHashTable[bucket] = nullptr;
            }
        }
    }

    POSITION GetStartPosition() const { return m_nCount == 0 ? nullptr : BEFORE_START_POSITION; }

    // The association at `position`, which then moves to the next, null
    // after the last.
    void GetNextAssoc(POSITION& position, KEY& key, VALUE& value) const {
        CAssoc* assoc = reinterpret_cast<CAssoc*>(position);
        if (position == BEFORE_START_POSITION) {
            assoc = FirstFrom(0);
        }
        key = assoc->key;
        value = assoc->value;
        CAssoc* next = assoc->pNext;
        if (next == nullptr) {
            next = FirstFrom(Bucket(assoc->key) + 1);
        }
        position = reinterpret_cast<POSITION>(next);
    }

private:
    struct CAssoc {
        CAssoc(ARG_KEY k, CAssoc* next) : pNext(next), key(k), value() {}
        CAssoc* pNext;
        KEY key;
        VALUE value;
    };

    // Overload resolution picks the text hash for text keys.
    unsigned Bucket(ARG_KEY key) const { return HashKey(key) % m_nHashTableSize; }

    CAssoc* GetAssocAt(ARG_KEY key, unsigned& bucket) const {
        bucket = Bucket(key);
        if (m_pHashTable == nullptr) {
            return nullptr;
        }
        for (CAssoc* assoc = m_pHashTable[bucket]; assoc != nullptr; assoc = assoc->pNext) {
            if (assoc->key == key) {
                return assoc;
            }
        }
        return nullptr;
    }

    CAssoc* FirstFrom(unsigned bucket) const {
        for (; bucket < m_nHashTableSize; ++bucket) {
            if (m_pHashTable[bucket] != nullptr) {
                return m_pHashTable[bucket];
            }
        }
        return nullptr;
    }

    CAssoc** m_pHashTable = nullptr;
    unsigned m_nHashTableSize = 17;
    int m_nCount = 0;
    nvk::afx::NodePool<CAssoc> m_Pool;
};

// The framework's map of texts to objects; it owns neither.
class NVKAFX_EXPORT CMapStringToOb : public CMap<CString, const char*, CObject*, CObject*> {
public:
    explicit CMapStringToOb(int nBlockSize = 10) : CMap(nBlockSize) {}
    // Out of line, so that the library's copy of the class (its vtable among
    // it) is the one every module imports.
    ~CMapStringToOb() override;
};
