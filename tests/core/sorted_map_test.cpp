#include "nvk/core/sorted_map.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

namespace {

using Map = FSortedMap<unsigned, int>;

// Counts the comparisons a search makes.
class CountingMap : public Map {
public:
    int Compare(const unsigned& key, const EPair<unsigned, int>& element) const override {
        ++comparisons;
        return Map::Compare(key, element);
    }
    mutable int comparisons = 0;
};

template <class M>
std::vector<unsigned> Keys(const M& map) {
    std::vector<unsigned> keys;
    for (int i = 0; i < map.Count(); ++i) {
        keys.push_back(map.GetKey(i));
    }
    return keys;
}

template <class M>
void Fill(M& map, std::initializer_list<unsigned> keys) {
    for (unsigned key : keys) {
        map[key] = static_cast<int>(key) * 10;
    }
}

TEST(SortedMapTest, ModesOnAMiss) {
    Map map;
    for (int mode = FindExact; mode <= FindInsertPos + 1; ++mode) {
        if (mode != FindOrCreate) {
            EXPECT_EQ(map.Find(5, mode), -1) << "mode " << mode;
        }
    }
    EXPECT_EQ(map.Find(5, FindOrCreate), 0);
    EXPECT_EQ(map.Cursor(), 0);
    map.RemoveAll();

    Fill(map, {30, 10, 20});
    EXPECT_EQ(Keys(map), (std::vector<unsigned>{10, 20, 30}));
    struct Case {
        unsigned key;
        int mode, expected;
    };
    // clang-format off
    const Case cases[] = {
        {25, FindAbove, 2}, {25, FindBelow, 1}, {35, FindAbove, -1}, {5, FindBelow, -1},
        {5, FindAbove, 0}, {35, FindBelow, 2}, {25, FindInsertPos, 2}, {5, FindInsertPos, 0},
        {35, FindInsertPos, 2}, {25, FindExact, -1}, {20, FindAbove, 1}, {10, FindBelow, 0},
        {25, 7, -1}, {15, FindInsertPos, 1}, {30, FindExact, 2},
    };
    // clang-format on
    // Each case from every starting cursor, since the bracket depends on it.
    for (const Case& c : cases) {
        for (unsigned start : {0u, 10u, 20u, 30u}) {
            map.Find(start);
            const int found = map.Find(c.key, c.mode);
            EXPECT_EQ(found, c.expected) << c.key << " mode " << c.mode << " from " << start;
            EXPECT_EQ(map.Cursor(), found);
        }
    }
    EXPECT_EQ(map.Count(), 3);
}

TEST(SortedMapTest, CursorMakesRepeatsCheap) {
    CountingMap map;
    for (unsigned key = 0; key < 1000; key += 2) {
        map[key] = 1;
    }
    auto cost = [&map](unsigned key, int expected) {
        map.comparisons = 0;
        EXPECT_EQ(map.Find(key), expected);
        return map.comparisons;
    };
    map.Find(500);
    EXPECT_EQ(cost(500, 250), 1);
    // A miss forgets the cursor, and the next search starts from the middle.
    EXPECT_LE(cost(501, -1), 10);
    EXPECT_EQ(map.Cursor(), -1);
    EXPECT_EQ(cost(498, 249), 1);
    // Bracketing costs at most two comparisons before the bisection.
    EXPECT_EQ(cost(0, 0), 2);
    EXPECT_EQ(cost(998, 499), 2);
}

TEST(SortedMapTest, WritesKeepKeyOrderAndUniqueness) {
    std::mt19937 random(7);
    Map map;
    std::map<unsigned, int> model;
    for (int i = 0; i < 3000; ++i) {
        const unsigned key = random() % 500;
        if (random() % 4 == 0) {
            EXPECT_EQ(map.Remove(key), model.erase(key) == 1);
        } else {
            map[key] += 1;
            model[key] += 1;
        }
    }
    ASSERT_EQ(map.Count(), static_cast<int>(model.size()));
    int i = 0;
    for (const auto& [key, value] : model) {
        EXPECT_EQ(map.GetKey(i), key);
        EXPECT_EQ(map.GetValue(i), value);
        ++i;
    }
}

std::vector<unsigned> Renamed(std::initializer_list<unsigned> keys, unsigned from, unsigned to) {
    Map map;
    Fill(map, keys);
    EXPECT_TRUE(map.Rename(from, to));
    return Keys(map);
}

TEST(SortedMapTest, Rename) {
    Map map;
    Fill(map, {1, 2, 3});
    EXPECT_FALSE(map.Rename(1, 3));
    EXPECT_FALSE(map.Rename(7, 8));
    EXPECT_EQ(Keys(map), (std::vector<unsigned>{1, 2, 3}));
    EXPECT_TRUE(map.Rename(1, 25));
    EXPECT_EQ(Keys(map), (std::vector<unsigned>{2, 25, 3}));
    EXPECT_EQ(map.GetValue(1), 10);

    EXPECT_EQ(Renamed({5, 6, 7}, 7, 1), (std::vector<unsigned>{1, 5, 6}));
    // Lowered but still above its predecessor: the pair stays where it is.
    EXPECT_EQ(Renamed({10, 20, 30}, 20, 15), (std::vector<unsigned>{10, 15, 30}));
    EXPECT_EQ(Renamed({10, 20, 30}, 30, 25), (std::vector<unsigned>{10, 20, 25}));
    // A key above all others lands one before the end, deliberately.
    EXPECT_EQ(Renamed({1, 2, 3}, 1, 100), (std::vector<unsigned>{2, 100, 3}));
    EXPECT_EQ(Renamed({1, 2, 3}, 3, 4), (std::vector<unsigned>{1, 4, 2}));
}

// Renames to keys below the greatest one keep the map in key order: each
// change is checked against a std::map, and every key is then found.
TEST(SortedMapTest, RenamesKeepKeyOrder) {
    std::mt19937 random(11);
    Map map;
    std::map<unsigned, int> model;
    for (int i = 0; i < 4000; ++i) {
        const unsigned key = random() % 40;
        const unsigned other = random() % 40;
        switch (random() % 3) {
            case 0:
                EXPECT_EQ(map.Remove(key), model.erase(key) == 1);
                break;
            case 1:
                map[key] = static_cast<int>(i);
                model[key] = static_cast<int>(i);
                break;
            default: {
                const bool possible = model.count(key) == 1 && model.count(other) == 0;
                if (!model.empty() && other > model.rbegin()->first) {
                    break;  // the deliberate case, tested above
                }
                ASSERT_EQ(map.Rename(key, other), possible) << key << " to " << other;
                if (possible) {
                    model[other] = model[key];
                    model.erase(key);
                }
            }
        }
        ASSERT_EQ(map.Count(), static_cast<int>(model.size()));
        int index = 0;
        for (const auto& [k, value] : model) {
            ASSERT_EQ(map.GetKey(index), k) << "after operation " << i;
            ASSERT_EQ(map.GetValue(index), value);
            ++index;
        }
        for (const auto& entry : model) {
            ASSERT_TRUE(map.Exist(entry.first));
        }
    }
}

TEST(SortedMapTest, SearchSeparatesASharedArray) {
    Map map;
    Fill(map, {1, 2});
    Map copy = map;
    EXPECT_EQ(copy.Array().Body(), map.Array().Body());
    EXPECT_TRUE(copy.Exist(1));
    EXPECT_NE(copy.Array().Body(), map.Array().Body());
    copy[1] = 99;
    EXPECT_EQ(map.GetValue(0), 10);

    // Remove forgets the cursor, which may now lie behind the end.
    EXPECT_EQ(map.Find(2), 1);
    EXPECT_TRUE(map.Remove(2));
    EXPECT_EQ(map.Cursor(), -1);
}

// A comparator whose results are not normalised: 2 ends a bisection as a hit.
class RawCompareMap : public Map {
public:
    int Compare(const unsigned& key, const EPair<unsigned, int>& element) const override {
        const int order = Map::Compare(key, element);
        return order == 1 ? 2 : order;
    }
};

TEST(SortedMapTest, UnnormalisedResultEndsBisection) {
    RawCompareMap map;
    Fill(map, {10, 20, 30, 40, 50, 60, 70});
    // Bracketed by 0 and the middle (40), the first bisection step (20)
    // answers 2 for a key above it, and that counts as found.
    map.Find(40);
    EXPECT_EQ(map.Find(25, FindExact), 1);
}

TEST(AssociativeTest, LinearSearchModes) {
    EAssociative<EPair<unsigned, int>> map;
    EXPECT_EQ(map.Find(1, FindInsertPos), -1);
    EXPECT_EQ(map.Find(3, FindOrCreate), 0);
    EXPECT_EQ(map.Find(1, FindOrCreate), 1);
    map[2] = 20;
    EXPECT_EQ(Keys(map), (std::vector<unsigned>{3, 1, 2}));  // insertion order
    EXPECT_EQ(map.Find(9, FindInsertPos), 2);
    EXPECT_EQ(map.Cursor(), 2);
    EXPECT_EQ(map.Find(9, FindAbove), -1);
    EXPECT_EQ(map.Cursor(), -1);
    EXPECT_EQ(map.Count(), 3);

    EXPECT_TRUE(map.Rename(1, 5));
    EXPECT_FALSE(map.Rename(5, 2));
    EXPECT_EQ(Keys(map), (std::vector<unsigned>{3, 5, 2}));
}

}  // namespace
