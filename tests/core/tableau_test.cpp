#include "nvk/core/tableau.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <stdexcept>
#include <vector>

namespace {

// An element that counts its live instances and can be told to fail a copy.
struct Probe {
    static inline int live = 0;
    static inline int copiesBeforeFailure = -1;

    int value = 0;
    char payload[60] = {};

    Probe() { ++live; }
    explicit Probe(int v) : value(v) { ++live; }
    Probe(const Probe& other) : value(other.value) {
        if (copiesBeforeFailure == 0) {
            throw std::runtime_error("copy failed");
        }
        --copiesBeforeFailure;
        ++live;
    }
    Probe& operator=(const Probe&) = default;
    ~Probe() { --live; }
};

class TableauTest : public ::testing::Test {
protected:
    void SetUp() override {
        Probe::live = 0;
        Probe::copiesBeforeFailure = -1;
    }
    void TearDown() override { EXPECT_EQ(Probe::live, 0) << "elements leaked or destroyed twice"; }
};

std::vector<int> Values(const PTableau<Probe>& t) {
    std::vector<int> values;
    for (int i = 0; i < t.Size(); ++i) {
        values.push_back(t[i].value);
    }
    return values;
}

PTableau<Probe> Make(std::initializer_list<int> values) {
    PTableau<Probe> t;
    for (int v : values) {
        t.Add(Probe(v));
    }
    return t;
}

// Every slot, spare ones included, must name its own piece of memory.
void ExpectDistinctSlots(const PTableau<Probe>& t) {
    const TableauBody* body = t.Body();
    if (body == nullptr) {
        return;
    }
    std::set<void*> seen(body->Slots, body->Slots + body->Capacity);
    EXPECT_EQ(seen.size(), body->Capacity);
}

TEST_F(TableauTest, GrowthIncrements) {
    PTableau<Probe> t;
    std::vector<std::uint32_t> capacities;
    for (int i = 0; i < 10; ++i) {
        t.Add(Probe(i));
        capacities.push_back(t.Body()->Capacity);
    }
    // One element first, then chunks of 4 while Count stays below 32.
    EXPECT_EQ(capacities, (std::vector<std::uint32_t>{1, 5, 5, 5, 5, 9, 9, 9, 9, 13}));
    EXPECT_FALSE(t.Body()->Contiguous);
    // Then an eighth of Count, and 1,024 from 8,193 on.
    for (auto [size, grown] : {std::pair{40, 45u}, std::pair{9000, 10024u}}) {
        PTableau<Probe> big;
        big.SetSize(size);
        big.Add();
        EXPECT_EQ(big.Body()->Capacity, grown);
    }
    // An insertion larger than the increment grows by exactly what it needs.
    PTableau<Probe> small = Make({1, 2, 3});
    small.Insert(10, 1);
    EXPECT_EQ(small.Body()->Capacity, 13u);
    EXPECT_EQ(Values(small), (std::vector<int>{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 3}));
    ExpectDistinctSlots(small);
}

TEST_F(TableauTest, ElementsKeepTheirAddresses) {
    PTableau<Probe> t = Make({0, 1, 2});
    Probe* first = &t[0];
    Probe* last = &t[2];
    for (int i = 0; i < 200; ++i) {
        t.Add(Probe(100));
        t.InsertAt(1, Probe(-i), 2);
    }
    EXPECT_EQ(&t[0], first);
    EXPECT_EQ(&t[t.Size() - 201], last);
    EXPECT_EQ(last->value, 2);
}

TEST_F(TableauTest, RemovedSlotIsReusedByTheNextAppend) {
    PTableau<Probe> t;
    t.SetSize(5);
    Probe* middle = &t[2];
    t.Remove(1, 2);
    EXPECT_EQ(t.Size(), 4);
    EXPECT_EQ(&t.Add(), middle);

    Probe* last = &t[4];
    t.Remove(1, 4);
    EXPECT_EQ(&t.Add(), last);
}

TEST_F(TableauTest, SourcesRepeatAndPositionsAreCut) {
    PTableau<Probe> t = Make({7, 8});
    Probe a(1), b(2);
    const Probe* source[] = {&a, &b};
    t.Insert(3, 0, source, 2);
    EXPECT_EQ(Values(t), (std::vector<int>{1, 2, 1, 7, 8}));
    // Behind the end the gap fills with copies too.
    t.InsertAt(7, Probe(9));
    EXPECT_EQ(Values(t), (std::vector<int>{1, 2, 1, 7, 8, 9, 9, 9}));
    t.Insert(2, 0, source, 0);
    t.Insert(2, -1);
    t.Remove(1, 8);
    EXPECT_EQ(t.Size(), 8);

    PTableau<Probe> m = Make({0, 1, 2});
    EXPECT_TRUE(m.Move(1, 100));
    EXPECT_EQ(Values(m), (std::vector<int>{0, 2, 1}));
    EXPECT_FALSE(m.Move(3, 0));
    EXPECT_FALSE(m.Move(-1, 0));
    EXPECT_TRUE(m.Move(2, -5));  // a negative target is the first place
    EXPECT_EQ(Values(m), (std::vector<int>{1, 0, 2}));
}

TEST_F(TableauTest, CopyOnWriteSeparation) {
    PTableau<Probe> never;
    PTableau<Probe> a = Make({1, 2, 3});
    PTableau<Probe> assigned = a;
    assigned = never;
    EXPECT_EQ(assigned.Body(), nullptr);

    PTableau<Probe> b = a;
    EXPECT_EQ(a.Body(), b.Body());
    EXPECT_EQ(a.Body()->ShareCount, 1u);

    // Const reads share; a write gives the writer a body of its own.
    const PTableau<Probe>& constB = b;
    EXPECT_EQ(constB[1].value, 2);
    EXPECT_EQ(a.Body(), b.Body());
    b[1].value = 20;
    EXPECT_NE(a.Body(), b.Body());
    EXPECT_EQ(Values(a), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(Values(b), (std::vector<int>{1, 20, 3}));

    // Removing everything from a shared array leaves the other holder whole.
    PTableau<Probe> c = a;
    c.Remove(3, 0);
    EXPECT_EQ(c.Body(), nullptr);
    EXPECT_EQ(Values(a), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(a.Body()->ShareCount, 0u);
}

TEST_F(TableauTest, FailedCopiesLeaveTheArrayAsItWas) {
    PTableau<Probe> a = Make({1, 2, 3});
    PTableau<Probe> b = a;
    Probe::copiesBeforeFailure = 2;
    EXPECT_THROW(b[0].value = 5, std::runtime_error);
    Probe::copiesBeforeFailure = -1;
    EXPECT_EQ(a.Body(), b.Body());
    EXPECT_EQ(Values(b), (std::vector<int>{1, 2, 3}));

    PTableau<Probe> c = Make({1, 2, 3});
    Probe::copiesBeforeFailure = 1;
    EXPECT_THROW(c.InsertAt(1, Probe(9), 3), std::runtime_error);
    Probe::copiesBeforeFailure = -1;
    EXPECT_EQ(Values(c), (std::vector<int>{1, 2, 3}));
    ExpectDistinctSlots(c);
}

// Random edits against std::vector, checking order, counts and that no two
// slots ever name the same memory.
TEST_F(TableauTest, RandomEditsMatchAVector) {
    std::mt19937 random(42);
    PTableau<Probe> t;
    PTableau<Probe> snapshot;
    std::vector<int> model;
    std::vector<int> snapshotModel;
    for (int step = 0; step < 4000; ++step) {
        const int size = static_cast<int>(model.size());
        const int pos = size == 0 ? 0 : static_cast<int>(random() % (size + 1));
        const int n = 1 + static_cast<int>(random() % 5);
        switch (random() % 6) {
            case 0:
                t.Add(Probe(step));
                model.push_back(step);
                break;
            case 1:
                t.InsertAt(pos, Probe(step), n);
                model.insert(model.begin() + std::min(pos, size), n, step);
                break;
            case 2: {
                t.Remove(n, pos);
                if (pos < size) {
                    model.erase(model.begin() + pos, model.begin() + std::min(pos + n, size));
                }
                break;
            }
            case 3:
                if (size > 0 && t.Move(pos % size, n * 7)) {
                    const int from = pos % size;
                    const int to = std::min(n * 7, size - 1);
                    const int v = model[from];
                    model.erase(model.begin() + from);
                    model.insert(model.begin() + to, v);
                }
                break;
            case 4:
                snapshot = t;
                snapshotModel = model;
                break;
            case 5:
                t.SetSize(size / 2);
                model.resize(size / 2);
                break;
        }
        ASSERT_EQ(Values(t), model) << "step " << step;
        ExpectDistinctSlots(t);
    }
    EXPECT_EQ(Values(snapshot), snapshotModel);
}

}  // namespace
