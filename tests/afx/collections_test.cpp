#include <gtest/gtest.h>

#include <list>
#include <map>
#include <random>
#include <string>

#include "nvk/afx/map.h"
#include "nvk/afx/ob_list.h"

namespace {

struct Item : CObject {
    explicit Item(int v) : value(v) {}
    int value;
};

std::list<CObject*> Contents(const CObList& list) {
    std::list<CObject*> contents;
    for (POSITION position = list.GetHeadPosition(); position != nullptr;) {
        contents.push_back(list.GetNext(position));
    }
    std::list<CObject*> backwards;
    for (POSITION position = list.GetTailPosition(); position != nullptr;) {
        backwards.push_front(list.GetPrev(position));
    }
    EXPECT_EQ(contents, backwards);
    return contents;
}

// Random insertions and removals at both ends and in the middle, with a
// block of three nodes, so that blocks fill, empty and come back.
TEST(CObListTest, AgainstAModel) {
    Item items[8] = {Item(0), Item(1), Item(2), Item(3), Item(4), Item(5), Item(6), Item(7)};
    std::mt19937 random(7);
    CObList list(3);
    std::list<CObject*> model;
    for (int step = 0; step < 3000; ++step) {
        CObject* item = &items[random() % 8];
        const int index = model.empty() ? 0 : static_cast<int>(random() % model.size());
        auto at = std::next(model.begin(), index);
        switch (random() % 7) {
            case 0:
                list.AddHead(item);
                model.push_front(item);
                break;
            case 1:
                list.AddTail(item);
                model.push_back(item);
                break;
            case 2:
                list.InsertBefore(list.FindIndex(index), item);
                model.insert(at, item);
                break;
            case 3:
                list.InsertAfter(list.FindIndex(index), item);
                model.insert(model.empty() ? model.end() : std::next(at), item);
                break;
            case 4:
                if (!model.empty()) {
                    list.RemoveAt(list.FindIndex(index));
                    model.erase(at);
                }
                break;
            case 5:
                if (!model.empty()) {
                    EXPECT_EQ(list.RemoveHead(), model.front());
                    model.pop_front();
                }
                break;
            default:
                if (random() % 50 == 0) {
                    list.RemoveAll();
                    model.clear();
                }
        }
        ASSERT_EQ(list.GetCount(), static_cast<int>(model.size()));
        if (step % 97 == 0) {
            ASSERT_EQ(Contents(list), model);
        }
    }
    ASSERT_EQ(Contents(list), model);
    EXPECT_EQ(list.FindIndex(list.GetCount()), nullptr);
    EXPECT_EQ(list.FindIndex(-1), nullptr);
    const auto first = std::find(model.begin(), model.end(), &items[3]);
    POSITION found = list.Find(&items[3]);
    EXPECT_EQ(found == nullptr, first == model.end());
    if (found != nullptr) {
        EXPECT_EQ(list.Find(&items[3], found) == nullptr,
                  std::find(std::next(first), model.end(), &items[3]) == model.end());
    }
}

// Keys that share buckets of a small table, removed and walked.
TEST(CMapTest, AgainstAModel) {
    CMap<std::uint32_t, std::uint32_t, int, int> map(2);
    map.InitHashTable(5);
    std::map<std::uint32_t, int> model;
    std::mt19937 random(11);
    for (int step = 0; step < 2000; ++step) {
        const std::uint32_t key = (random() % 40) << 4;
        if (random() % 3 == 0) {
            EXPECT_EQ(map.RemoveKey(key), model.erase(key) > 0);
        } else {
            map[key] = step;
            model[key] = step;
        }
        ASSERT_EQ(map.GetCount(), static_cast<int>(model.size()));
    }
    std::map<std::uint32_t, int> walked;
    for (POSITION position = map.GetStartPosition(); position != nullptr;) {
        std::uint32_t key = 0;
        int value = 0;
        map.GetNextAssoc(position, key, value);
        EXPECT_TRUE(walked.emplace(key, value).second);
    }
    EXPECT_EQ(walked, model);
    EXPECT_EQ(map.GetHashTableSize(), 5u);
    int value = 0;
    EXPECT_FALSE(map.Lookup(1, value));
}

TEST(CMapTest, TextKeys) {
    CMapStringToOb map;
    EXPECT_EQ(map.GetHashTableSize(), 17u);
    Item a(1), b(2);
    map.SetAt("Cours", &a);
    map.SetAt(CString("Sol") + "de", &b);
    map.SetAt("cours", &b);
    CObject* found = nullptr;
    ASSERT_TRUE(map.Lookup(std::string("Cours").c_str(), found));
    EXPECT_EQ(found, &a);
    ASSERT_TRUE(map.Lookup("Solde", found));
    EXPECT_EQ(found, &b);
    EXPECT_EQ(map.GetCount(), 3);
    EXPECT_TRUE(map.RemoveKey("cours"));
    EXPECT_FALSE(map.Lookup("cours", found));
    map.RemoveAll();
    EXPECT_TRUE(map.IsEmpty());
    EXPECT_EQ(map.GetStartPosition(), nullptr);
}

}  // namespace
