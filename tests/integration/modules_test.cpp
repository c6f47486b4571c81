// Two modules with their own copies of the frame act as one: same singletons
// by key, strings made in one and freed in the other, objects that outlive
// the module that made them.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "module.h"
#include "nvk/core/block_storage.h"
#include "nvk/core/chaine.h"
#include "os/api/module.h"

namespace {

using namespace nvk::os;

class Module {
public:
    explicit Module(const char* path) : m_Handle(LoadLibraryA(path)) {}
    ~Module() {
        if (m_Handle != nullptr) {
            FreeLibrary(m_Handle);
        }
    }
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    bool Loaded() const { return m_Handle != nullptr; }
    template <class Fn>
    Fn Entry(const char* name) const {
        return reinterpret_cast<Fn>(GetProcAddress(m_Handle, name));
    }

private:
    HMODULE m_Handle;
};

TEST(Modules, ShareSingletonsAndFreeEachOthersStrings) {
    Module a(NVK_TEST_MODULE_A);
    Module b(NVK_TEST_MODULE_B);
    ASSERT_TRUE(a.Loaded());
    ASSERT_TRUE(b.Loaded());

    EXPECT_EQ(a.Entry<StorageFn>("Storage")(), BlockStorage());
    EXPECT_EQ(b.Entry<StorageFn>("Storage")(), BlockStorage());
    int* shared = a.Entry<SharedObjectFn>("SharedObject")();
    EXPECT_EQ(b.Entry<SharedObjectFn>("SharedObject")(), shared);
    EXPECT_EQ(*shared, 'a');  // made by the first module to ask

    const char* fromA = a.Entry<MakeTextFn>("MakeText")("short");
    const char* fromB = b.Entry<MakeTextFn>("MakeText")(std::string(200, 'x').c_str());
    EXPECT_STREQ(fromA, "short (made in a)");
    EXPECT_EQ(ChaineBuffer::FromText(fromB)->Capacity % 2, 1u);  // a heap block
    b.Entry<FreeTextFn>("FreeText")(fromA);
    a.Entry<FreeTextFn>("FreeText")(fromB);
}

TEST(Modules, AnObjectOutlivesTheModuleThatMadeIt) {
    Module b(NVK_TEST_MODULE_B);
    // b holds the block storage too, so a's strings outlive a.
    b.Entry<StorageFn>("Storage")();
    int* shared = nullptr;
    const char* text = nullptr;
    {
        Module a(NVK_TEST_MODULE_A);
        shared = a.Entry<SharedObjectFn>("SharedObject")();
        EXPECT_EQ(b.Entry<SharedObjectFn>("SharedObject")(), shared);
        text = a.Entry<MakeTextFn>("MakeText")("kept");
    }
    // Module a is gone; its object and its string live on with b.
    EXPECT_EQ(*shared, 'a');
    EXPECT_EQ(b.Entry<SharedObjectFn>("SharedObject")(), shared);
    EXPECT_STREQ(text, "kept (made in a)");
    b.Entry<FreeTextFn>("FreeText")(text);
}

TEST(Modules, AnEmptyValueOutlivesTheModuleThatMadeIt) {
    const char* empty = nullptr;
    {
        Module a(NVK_TEST_MODULE_A);
        empty = a.Entry<MakeEmptyFn>("MakeEmpty")();
    }
    // Every copy of the frame shares the one empty buffer of the process.
    EXPECT_EQ(ChaineBuffer::FromText(empty), SharedEmptyChaine.Buffer());
    EXPECT_STREQ(empty, "");
    EXPECT_EQ(ChaineBuffer::FromText(empty)->Size, 1u);
    Module b(NVK_TEST_MODULE_B);
    b.Entry<FreeTextFn>("FreeText")(empty);
    EXPECT_TRUE(Chaine().IsEmpty());
}

TEST(Modules, LoadAndUnloadManyTimes) {
    Chaine survivor("made here");
    for (int round = 0; round < 40; ++round) {
        Module a(NVK_TEST_MODULE_A);
        ASSERT_TRUE(a.Loaded());
        const char* text = a.Entry<MakeTextFn>("MakeText")("round");
        EXPECT_EQ(*a.Entry<SharedObjectFn>("SharedObject")(), 'a');
        a.Entry<FreeTextFn>("FreeText")(text);
    }
    EXPECT_STREQ(survivor + "!", "made here!");
}

int PageCount(const FBlockStorage* storage) {
    int count = 0;
    for (const PageRecord* page = storage->FirstPage(); page != nullptr; page = page->Next) {
        ++count;
    }
    return count;
}

// Each module copy keeps free blocks per thread; whichever copy and thread
// frees a block, it goes back to the one storage when the thread ends.
TEST(Modules, BlocksMadeAndFreedInOtherModulesOnEndedThreadsAreUsedAgain) {
    Module a(NVK_TEST_MODULE_A);
    Module b(NVK_TEST_MODULE_B);
    const auto make = a.Entry<MakeTextFn>("MakeText");
    const auto free = b.Entry<FreeTextFn>("FreeText");
    const auto round = [&] {
        std::vector<const char*> texts;
        std::thread([&] {
            for (int i = 0; i < 300; ++i) {
                texts.push_back(make("short"));
            }
        }).join();
        std::thread([&] {
            for (const char* text : texts) {
                free(text);
            }
        }).join();
    };
    round();
    const int pages = PageCount(BlockStorage());
    for (int i = 0; i < 30; ++i) {
        round();
    }
    EXPECT_EQ(PageCount(BlockStorage()), pages);
}

TEST(Modules, AThreadOutlivesTheModuleItUsed) {
    auto a = std::make_unique<Module>(NVK_TEST_MODULE_A);
    const auto make = a->Entry<MakeTextFn>("MakeText");
    const auto free = a->Entry<FreeTextFn>("FreeText");
    std::atomic<int> step{0};
    const char* kept = nullptr;
    std::thread worker([&] {
        free(make("dropped"));  // a block in the thread's cache of module a
        kept = make("kept");
        step.store(1);
        while (step.load() != 2) {
            std::this_thread::yield();
        }
    });
    while (step.load() != 1) {
        std::this_thread::yield();
    }
    a.reset();
    step.store(2);
    worker.join();  // the cache goes back as the thread ends
    Module b(NVK_TEST_MODULE_B);
    EXPECT_STREQ(kept, "kept (made in a)");
    b.Entry<FreeTextFn>("FreeText")(kept);
}

}  // namespace
