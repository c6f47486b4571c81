#include "nvk/core/process_singleton.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "os/api/sync.h"

namespace {

using namespace nvk::os;

// Reads the process's table the way every module copy finds it: by name.
class Table {
public:
    Table() {
        char name[64];
        std::snprintf(name, sizeof name, "NVK_EProcessSingleton_Mapping_%d_%x", 1006,
                      static_cast<unsigned>(GetCurrentProcessId()));
        m_Mapping = OpenFileMappingA(FILE_MAP_WRITE, FALSE, name);
        if (m_Mapping != nullptr) {
            m_Section = static_cast<SingletonSection*>(
                MapViewOfFile(m_Mapping, FILE_MAP_WRITE, 0, 0, sizeof(SingletonSection)));
        }
    }
    ~Table() {
        if (m_Mapping != nullptr) {
            UnmapViewOfFile(m_Section);
            CloseHandle(m_Mapping);
        }
    }
    bool Exists() const { return m_Section != nullptr; }
    const SingletonSection& operator*() const { return *m_Section; }
    int SlotOf(const SingletonRecord* record) const {
        for (std::uint32_t i = 0; i < m_Section->SlotCount; ++i) {
            if (m_Section->Slots[i] == record) {
                return static_cast<int>(i);
            }
        }
        return -1;
    }

private:
    HANDLE m_Mapping = nullptr;
    SingletonSection* m_Section = nullptr;
};

TEST(ProcessSingleton, HandlesOfOneKeyShareOneRecordAndCaseMakesAnother) {
    EProcessSingleton first("Test.Key");
    EProcessSingleton second("Test.Key");
    EProcessSingleton other("test.key");
    ASSERT_NE(first.Record(), nullptr);
    EXPECT_EQ(first.Record(), second.Record());
    EXPECT_NE(first.Record(), other.Record());
    EXPECT_EQ(first.Record()->RefCount, 2);
    EXPECT_STREQ(first.Record()->Name, "Test.Key");
    EXPECT_EQ(first.Record()->Object, nullptr);  // a handle never makes the object
}

TEST(ProcessSingleton, FreedSlotIsReusedLowestFirstAndTableNeverShrinks) {
    auto a = std::make_unique<EProcessSingleton>("Test.A");
    auto b = std::make_unique<EProcessSingleton>("Test.B");
    auto c = std::make_unique<EProcessSingleton>("Test.C");
    Table table;
    ASSERT_TRUE(table.Exists());
    const std::uint32_t slots = (*table).SlotCount;
    const std::uint32_t refs = (*table).TotalRefs;
    const int slotA = table.SlotOf(a->Record());
    const int slotB = table.SlotOf(b->Record());

    b.reset();
    a.reset();
    EXPECT_EQ((*table).SlotCount, slots);
    EXPECT_EQ((*table).TotalRefs, refs - 2);
    EXPECT_EQ((*table).Slots[slotA], nullptr);
    EXPECT_EQ((*table).Slots[slotB], nullptr);

    EProcessSingleton again("Test.B");
    EXPECT_EQ(table.SlotOf(again.Record()), std::min(slotA, slotB));
    EXPECT_EQ(again.Record()->Object, nullptr);
    EXPECT_EQ((*table).SlotCount, slots);
}

TEST(ProcessSingleton, LockIsRecursiveAndExcludesOtherThreads) {
    HANDLE outer = EProcessSingleton::Lock();
    HANDLE inner = EProcessSingleton::Lock();
    ASSERT_NE(outer, nullptr);
    DWORD seen = 0;
    std::thread([&] { seen = WaitForSingleObject(outer, 10); }).join();
    EXPECT_EQ(seen, WAIT_TIMEOUT);
    EProcessSingleton::Unlock(inner);
    EProcessSingleton::Unlock(outer);
    EProcessSingleton::Unlock(nullptr);  // a null token is ignored
    std::thread([&] {
        seen = WaitForSingleObject(outer, 1000);
        ReleaseMutex(outer);
    }).join();
    EXPECT_EQ(seen, WAIT_OBJECT_0);
}

struct Counted {
    static inline int made = 0;
    int value = 42;
};

struct CountedKind {
    using Object = Counted;
    static constexpr const char* Key = "Test.Counted";
    static Object* Make() {
        ++Counted::made;
        return new Counted;
    }
    static void Destroy(Object* object) { delete object; }
};

TEST(ProcessSingleton, AccessorMakesTheObjectOnceAndFindsItByKey) {
    Counted* object = nvk::ProcessSingleton<CountedKind>::Get();
    EXPECT_EQ(nvk::ProcessSingleton<CountedKind>::Get(), object);
    EXPECT_EQ(Counted::made, 1);
    EXPECT_EQ(object->value, 42);
    // A handle of another module finds the same object under the key.
    EProcessSingleton handle("Test.Counted");
    EXPECT_EQ(handle.Record()->Object, object);
    EXPECT_EQ(handle.Record()->RefCount, 2);
}

}  // namespace
