#include "nvk/context/init_registry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// What the callbacks saw, as "name@level".
struct Journal {
    std::vector<std::string> calls;
};

struct Entry {
    Journal* journal;
    std::string name;
    bool result = true;
};

bool Record(int level, void* context) {
    auto* entry = static_cast<Entry*>(context);
    entry->journal->calls.push_back(entry->name + "@" + std::to_string(level));
    return entry->result;
}

TEST(InitInfosTest, IdsAreCutAndCompareWithoutCase) {
    const std::string longName(70, 'x');
    EXPECT_EQ(std::string(EInitInfos(Record, nullptr, longName.c_str(), nullptr, 0).Id.Text()),
              std::string(63, 'x'));
    EXPECT_EQ(std::string(EInitInfos(Record, nullptr, longName.c_str(), nullptr, 521).Id.Text()),
              std::string(55, 'x') + "(000521)");
    EXPECT_STREQ(EInitInfos(Record, nullptr, "ChaineFile", nullptr, 521).Id.Text(),
                 "ChaineFile(000521)");

    EXPECT_EQ(EInitObjectID::CompareNoCase(EInitObjectID("Paths"), EInitObjectID("PATHS")), 0);
    EXPECT_LT(EInitObjectID::CompareNoCase(EInitObjectID("a"), EInitObjectID("B")), 0);
    EXPECT_EQ(nvk::KeyCompare<EInitObjectID>::Order(EInitObjectID("z"), EInitObjectID("a")), 1);
}

TEST(InitRegistryTest, FirstRegistrationStands) {
    Journal journal;
    Entry first{&journal, "first"};
    Entry second{&journal, "second"};
    {
        nvk::InitRegistry registry;
        EXPECT_TRUE(registry.Register(EInitInfos(Record, &first, "Cache", nullptr, 0)));
        EXPECT_FALSE(registry.Register(EInitInfos(Record, &second, "CACHE", nullptr, 0)));
        EXPECT_TRUE(registry.RunLevel(1));
    }
    // The destructor ran the tear-down level.
    EXPECT_EQ(journal.calls, (std::vector<std::string>{"first@1", "first@4"}));
}

TEST(InitRegistryTest, DependantsGoFirst) {
    Journal journal;
    Entry a{&journal, "a"}, b{&journal, "b"}, c{&journal, "c"}, d{&journal, "d", false};
    nvk::InitRegistry registry;
    // a needs b and c, b needs c; "missing" is not registered and is ignored.
    registry.Register(EInitInfos(Record, &a, "A", "B;missing;c", 0));
    registry.Register(EInitInfos(Record, &b, "B", "C", 0));
    registry.Register(EInitInfos(Record, &c, "C", "", 0));
    registry.Register(EInitInfos(Record, &d, "D", nullptr, 0));

    EXPECT_FALSE(registry.RunLevel(2));  // d fails, the others still run
    ASSERT_EQ(registry.Order().Size(), 4);
    EXPECT_STREQ(registry.Order()[0].Text(), "C");
    EXPECT_STREQ(registry.Order()[1].Text(), "B");
    EXPECT_STREQ(registry.Order()[2].Text(), "A");
    EXPECT_STREQ(registry.Order()[3].Text(), "D");
    EXPECT_EQ(journal.calls, (std::vector<std::string>{"d@2", "a@2", "b@2", "c@2"}));

    journal.calls.clear();
    EXPECT_TRUE(registry.RunLevel(1));
    EXPECT_TRUE(registry.RunLevel(2));
    EXPECT_TRUE(journal.calls.empty());
    EXPECT_EQ(registry.Level(), 2);
}

TEST(InitRegistryTest, CycleIsCutNotLooped) {
    Journal journal;
    Entry a{&journal, "a"}, b{&journal, "b"};
    nvk::InitRegistry registry;
    registry.Register(EInitInfos(Record, &a, "A", "B", 0));
    registry.Register(EInitInfos(Record, &b, "B", "A", 0));
    EXPECT_TRUE(registry.RunLevel(4));
    EXPECT_EQ(journal.calls, (std::vector<std::string>{"a@4", "b@4"}));
}

}  // namespace
