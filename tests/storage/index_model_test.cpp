// Every key type against a model of its order: few distinct keys from the
// whole range of the type, so that equal keys spread over many small pages;
// the walk must deliver keys in order as it stands (never sorted), and the
// file must reopen sound after every refused change.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "storage_support.h"

namespace nvk::test {
namespace {

using Key = std::vector<char>;

struct KeyType {
    int type;
    int size;
};

template <class T>
T Number(const Key& key) {
    T value{};
    std::memcpy(&value, key.data(), sizeof value);
    return value;
}

template <class T>
int Sign(T a, T b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

int Bytes(const char* a, std::size_t na, const char* b, std::size_t nb) {
    const auto* x = reinterpret_cast<const unsigned char*>(a);
    const auto* y = reinterpret_cast<const unsigned char*>(b);
    return std::lexicographical_compare(x, x + na, y, y + nb)   ? -1
           : std::lexicographical_compare(y, y + nb, x, x + na) ? 1
                                                                : 0;
}

// The order each type stands for, written plainly.
int ModelOrder(KeyType t, const Key& a, const Key& b) {
    switch (t.type) {
        case 0:
            return Bytes(a.data(), strnlen(a.data(), t.size), b.data(), strnlen(b.data(), t.size));
        case 1:
            return t.size == 1   ? Sign(Number<std::int8_t>(a), Number<std::int8_t>(b))
                   : t.size == 2 ? Sign(Number<std::int16_t>(a), Number<std::int16_t>(b))
                                 : Sign(Number<std::int32_t>(a), Number<std::int32_t>(b));
        case 2:
            return Sign(Number<double>(a), Number<double>(b));
        case 4:
        case 5:
        case 12:
            return Sign(Number<std::int32_t>(a), Number<std::int32_t>(b));
        case 14:
            return Sign(Number<std::uint8_t>(a), Number<std::uint8_t>(b));
        case 15:
            return Sign(Number<std::int16_t>(a), Number<std::int16_t>(b));
        case 16:
            return Sign(Number<std::uint16_t>(a), Number<std::uint16_t>(b));
        case 18:
            return Sign(Number<std::uint32_t>(a), Number<std::uint32_t>(b));
        case 20:
        case 29:
            return Sign(Number<std::int64_t>(a), Number<std::int64_t>(b));
        case 23:  // whole numbers only: the type is as fine as a unit
            return Sign(Number<float>(a), Number<float>(b));
        default:
            return Bytes(a.data(), t.size, b.data(), t.size);
    }
}

// A key over the whole range of its type, padded as careful callers do.
Key RandomKey(KeyType t, std::mt19937& random) {
    Key key(t.size + 16, 0);
    for (int i = 0; i < t.size; ++i) {
        key[i] = static_cast<char>(random());
    }
    if (t.type == 0 && random() % 2 == 0) {
        key[random() % t.size] = 0;  // shorter strings, and some that fill the key
    }
    if (t.type == 2) {
        while (std::isnan(Number<double>(key))) {
            key[7] = static_cast<char>(random());
        }
    }
    if (t.type == 23) {
        // Whole numbers: small ones, and large ones where every float is whole.
        float value = static_cast<float>(static_cast<std::int32_t>(random()) >> (random() % 32));
        if (random() % 2 == 0) {
            value = std::ldexp(static_cast<float>(random() % 0x1000000), random() % 104);
        }
        std::memcpy(key.data(), &value, 4);
    }
    return key;
}

struct Entry {
    Key key;
    std::uint32_t value;
};

class ModelIndex {
public:
    ModelIndex(KeyType t, bool duplicates) : m_Type(t), m_Duplicates(duplicates) {
        EIndexFile index;
        EXPECT_EQ(1, index.Create(m_Path.c_str(), 12 + 4 * (t.size + 4)));  // 4 entries a page
        EXPECT_EQ(1, index.Open(m_Path.c_str()));
        EXPECT_EQ(1, index.CreateIndex(t.size, t.type, duplicates));
        index.Close();
        Reopen();
    }

    void Reopen() {
        m_Index.Close();
        ASSERT_EQ(1, m_Index.Open(m_Path.c_str()));
    }

    bool Present(const Key& key) const {
        return std::any_of(m_Model.begin(), m_Model.end(),
                           [&](const Entry& e) { return ModelOrder(m_Type, e.key, key) == 0; });
    }

    void Insert(const Key& key, std::uint32_t value) {
        const bool refused = !m_Duplicates && Present(key);
        Key copy = key;
        ASSERT_EQ(refused ? 1 : 0, m_Index.Insere(1, copy.data(), value));
        if (refused) {
            Reopen();
        } else {
            m_Model.push_back({key, value});
        }
    }

    void Remove(std::size_t at) {
        Key copy = m_Model[at].key;
        ASSERT_EQ(0, m_Index.Delete(1, copy.data(), m_Model[at].value));
        m_Model.erase(m_Model.begin() + static_cast<long>(at));
    }

    // The old key goes in any case; the new one is refused as a duplicate.
    void Update(std::size_t at, const Key& key) {
        const Entry old = m_Model[at];
        m_Model.erase(m_Model.begin() + static_cast<long>(at));
        const bool refused = !m_Duplicates && Present(key);
        Key oldKey = old.key;
        Key newKey = key;
        ASSERT_EQ(refused ? 1 : 0, m_Index.Update(1, oldKey.data(), newKey.data(), old.value));
        if (refused) {
            Reopen();
        } else {
            m_Model.push_back({key, old.value});
        }
    }

    // The walk in key order, the entries those of the model, searches that
    // find what is there.
    void Verify(const std::vector<Key>& keys) {
        ASSERT_EQ("", m_Index.Check());
        ASSERT_EQ(m_Model.size(), m_Index.Nombre(1));
        std::vector<Entry> walk;
        for (unsigned long v = m_Index.First(1); v != 0 && walk.size() <= m_Model.size();
             v = m_Index.Next()) {
            Key key(static_cast<const char*>(m_Index.AdrCle()),
                    static_cast<const char*>(m_Index.AdrCle()) + m_Type.size);
            key.resize(m_Type.size + 16, 0);
            if (!walk.empty()) {
                ASSERT_LE(ModelOrder(m_Type, walk.back().key, key), 0) << "at " << walk.size();
            }
            walk.push_back({key, static_cast<std::uint32_t>(v)});
        }
        ASSERT_EQ(m_Model.size(), walk.size());
        for (const Entry& e : m_Model) {
            ASSERT_TRUE(std::any_of(walk.begin(), walk.end(),
                                    [&](const Entry& w) {
                                        return w.value == e.value &&
                                               ModelOrder(m_Type, w.key, e.key) == 0;
                                    }))
                << "value " << e.value;
        }
        for (const Key& k : keys) {
            Key probe = k;
            const unsigned long found = m_Index.Equal(1, probe.data());
            if (!Present(k)) {
                ASSERT_EQ(0u, found);
                continue;
            }
            // The first of the equal keys in the walk.
            const auto first = std::find_if(walk.begin(), walk.end(), [&](const Entry& w) {
                return ModelOrder(m_Type, w.key, k) == 0;
            });
            ASSERT_EQ(first->value, found);
        }
    }

    std::size_t Size() const { return m_Model.size(); }

private:
    KeyType m_Type;
    bool m_Duplicates;
    TempPath m_Path{"model.idx"};
    CheckedIndex m_Index;
    std::vector<Entry> m_Model;
};

TEST(IndexModel, EveryKeyTypeKeepsItsOrder) {
    const KeyType types[] = {{0, 6},  {1, 1},  {1, 2},  {1, 4},   {1, 8},  {2, 8},  {4, 4},
                             {5, 4},  {12, 4}, {14, 1}, {15, 2},  {16, 2}, {18, 4}, {20, 8},
                             {29, 8}, {23, 4}, {99, 5}, {255, 3}, {0, 12}, {0, 40}};
    std::mt19937 random(7);
    for (const KeyType t : types) {
        for (bool duplicates : {false, true}) {
            SCOPED_TRACE("type " + std::to_string(t.type) + " size " + std::to_string(t.size) +
                         (duplicates ? " duplicates" : " unique"));
            std::vector<Key> keys;
            for (int i = 0; i < 8; ++i) {
                keys.push_back(RandomKey(t, random));
            }
            ModelIndex index(t, duplicates);
            std::uint32_t serial = 1;
            for (int round = 0; round < 300; ++round) {
                const unsigned action = random() % 8;
                const Key& key = keys[random() % keys.size()];
                if (index.Size() == 0 || action < 4) {
                    index.Insert(key, serial++);
                } else if (action < 6) {
                    index.Remove(random() % index.Size());
                } else {
                    index.Update(random() % index.Size(), key);
                }
                if (::testing::Test::HasFatalFailure()) {
                    return;
                }
                if (round % 30 == 0) {
                    index.Verify(keys);
                    if (::testing::Test::HasFatalFailure()) {
                        return;
                    }
                }
            }
            index.Verify(keys);
            while (index.Size() != 0) {
                index.Remove(random() % index.Size());
            }
            index.Verify(keys);
        }
    }
}

}  // namespace
}  // namespace nvk::test
