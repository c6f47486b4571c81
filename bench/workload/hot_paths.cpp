// A fixed workload of the string's and the block storage's hot paths, each
// case beside the same work done by its peer (std::string, malloc), for an
// instruction counter: scripts/bench.sh --callgrind counts what Measured runs,
// which, unlike a timing, doesn't move with the machine's load.
//
//   hot_paths_workload list       one line a case: "<case> | <subject>"
//   hot_paths_workload <n>        runs case n kIterations times in Measured
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "nvk/core/block_storage.h"
#include "nvk/core/chaine.h"

namespace {

constexpr int kIterations = 20000;
// Blocks live at once in an alloc+free round, as in the timed benchmark.
constexpr int kBurst = 16;

// Keeps the compiler from dropping work whose result nobody reads.
template <class T>
void Escape(T& value) {
    asm volatile("" : : "r"(&value) : "memory");
}

std::string TextOf(int length) {
    return std::string(static_cast<std::size_t>(length), 'k');
}

template <class String, int Length>
void ConstructDestroy(int n) {
    const std::string text = TextOf(Length);
    for (int i = 0; i < n; ++i) {
        String value(text.c_str());
        Escape(value);
    }
}

template <class String, int Length>
void Copy(int n) {
    const String source(TextOf(Length).c_str());
    for (int i = 0; i < n; ++i) {
        String copy(source);
        Escape(copy);
    }
}

template <class String, int Length>
void Assign(int n) {
    const String first(TextOf(Length).c_str());
    const String second(TextOf(Length).c_str());
    String target(first);
    for (int i = 0; i < n; ++i) {
        target = second;
        Escape(target);
        target = first;
        Escape(target);
    }
}

template <class String, int Length>
void Equality(int n) {
    const std::string text = TextOf(Length);
    const String a(text.c_str());
    const String b(text.c_str());
    for (int i = 0; i < n; ++i) {
        bool same = a == b;
        Escape(same);
    }
}

template <int Size>
void Pool(int n) {
    ChaineBuffer* blocks[kBurst];
    for (int i = 0; i < n; ++i) {
        FBlockStorage* storage = BlockStorage();
        for (auto& block : blocks) {
            block = storage->PoolAlloc(Size);
        }
        Escape(blocks);
        for (ChaineBuffer* block : blocks) {
            storage->PoolFree(block);
        }
    }
}

template <int Size>
void Malloc(int n) {
    void* blocks[kBurst];
    for (int i = 0; i < n; ++i) {
        for (auto& block : blocks) {
            block = std::malloc(Size + 12);
        }
        Escape(blocks);
        for (void* block : blocks) {
            std::free(block);
        }
    }
}

struct Case {
    std::string Name;
    void (*Body)(int);
    int OperationsPerIteration;
};

template <template <class, int> class Body>
void AddStringCases(std::vector<Case>& cases, const char* name, int operations) {
    const auto add = [&](int length, void (*ours)(int), void (*peer)(int)) {
        const std::string base = std::string(name) + " " + std::to_string(length) + " bytes | ";
        cases.push_back({base + "Chaine", ours, operations});
        cases.push_back({base + "std::string", peer, operations});
    };
    add(8, Body<Chaine, 8>::Run, Body<std::string, 8>::Run);
    add(32, Body<Chaine, 32>::Run, Body<std::string, 32>::Run);
    add(64, Body<Chaine, 64>::Run, Body<std::string, 64>::Run);
    add(200, Body<Chaine, 200>::Run, Body<std::string, 200>::Run);
}

#define NVK_CASE(Name)                                      \
    template <class String, int Length>                     \
    struct Name##Case {                                     \
        static void Run(int n) { Name<String, Length>(n); } \
    };
NVK_CASE(ConstructDestroy)
NVK_CASE(Copy)
NVK_CASE(Assign)
NVK_CASE(Equality)
#undef NVK_CASE

std::vector<Case> Cases() {
    std::vector<Case> cases;
    AddStringCases<ConstructDestroyCase>(cases, "construct+destroy", 1);
    AddStringCases<CopyCase>(cases, "copy", 1);
    AddStringCases<AssignCase>(cases, "assign", 2);
    AddStringCases<EqualityCase>(cases, "equality", 1);
    const auto addBlocks = [&](int size, void (*ours)(int), void (*peer)(int)) {
        const std::string base = "alloc+free " + std::to_string(size) + " bytes | ";
        cases.push_back({base + "PoolAlloc", ours, kBurst});
        cases.push_back({base + "malloc", peer, kBurst});
    };
    addBlocks(16, Pool<16>, Malloc<16>);
    addBlocks(32, Pool<32>, Malloc<32>);
    addBlocks(64, Pool<64>, Malloc<64>);
    return cases;
}

// The only function the counter looks into.
__attribute__((noinline)) void Measured(void (*body)(int), int n) {
    body(n);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<Case> cases = Cases();
    if (argc == 2 && std::string(argv[1]) == "list") {
        for (const Case& c : cases) {
            std::printf("%s\n", c.Name.c_str());
        }
        return 0;
    }
    const int index = argc == 2 ? std::atoi(argv[1]) : -1;
    if (index < 0 || index >= static_cast<int>(cases.size())) {
        std::fprintf(stderr, "usage: hot_paths_workload list | <case number>\n");
        return 2;
    }
    const Case& c = cases[static_cast<std::size_t>(index)];
    // Warmed up outside the count: the storage's first pages, the allocator's
    // first chunks.
    c.Body(kIterations / 10);
    Measured(c.Body, kIterations);
    std::printf("%d\n", kIterations * c.OperationsPerIteration);
    return 0;
}
