// A fixed workload of the string's, the block storage's and the INI file's hot
// paths, each case beside the same work done by its peer (std::string,
// malloc, inih), for an
// instruction counter: scripts/bench.sh --callgrind counts what Measured runs,
// which, unlike a timing, doesn't move with the machine's load.
//
//   hot_paths_workload list       one line a case: "<case> | <subject>"
//   hot_paths_workload <n>        runs case n's iterations in Measured
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "nvk/config/ini_file.h"
#include "nvk/core/block_storage.h"
#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"
#include "text_samples.h"

#ifdef NVK_HAVE_INIH
#include <ini.h>
#endif

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

template <int Length>
void FindChaine(int n) {
    const Chaine text(nvk::bench::Record(Length).c_str());
    for (int i = 0; i < n; ++i) {
        int hit = text.Find("key");
        Escape(hit);
    }
}

template <int Length>
void FindString(int n) {
    const std::string text = nvk::bench::Record(Length);
    for (int i = 0; i < n; ++i) {
        std::size_t hit = text.find("key");
        Escape(hit);
    }
}

template <int Length>
void ReplaceChaine(int n) {
    const Chaine text(nvk::bench::Record(Length).c_str());
    for (int i = 0; i < n; ++i) {
        Chaine copy(text);
        copy.Replace("ab", "xyz");
        Escape(copy);
    }
}

template <int Length>
void ReplaceString(int n) {
    const std::string text = nvk::bench::Record(Length);
    for (int i = 0; i < n; ++i) {
        std::string result = nvk::bench::ReplaceAll(text);
        Escape(result);
    }
}

template <int Length>
void SplitChaine(int n) {
    const Chaine text(nvk::bench::Record(Length).c_str());
    PTableau<Chaine> fields;
    for (int i = 0; i < n; ++i) {
        text.SplitSimple(fields, ';');
        Escape(fields);
    }
}

template <int Length>
void SplitString(int n) {
    const std::string text = nvk::bench::Record(Length);
    std::vector<std::string> fields;
    for (int i = 0; i < n; ++i) {
        nvk::bench::SplitFields(text, fields);
        Escape(fields);
    }
}

// The INI sample: 1 MB, a tenth of the timed benchmark's, which callgrind
// goes through in seconds. Made by the warm-up run, outside the count.
constexpr std::size_t kIniSize = 1u << 20;

const std::string& IniSample() {
    static const std::string sample = nvk::bench::IniSample(kIniSize);
    return sample;
}

void IniChaine(int n) {
    const std::string& sample = IniSample();
    const Chaine text(sample.data(), static_cast<int>(sample.size()));
    for (int i = 0; i < n; ++i) {
        EIniFile ini;
        ini.ReadInData(text);
        Chaine rewritten = ini.AsChaine();
        Escape(rewritten);
    }
}

#ifdef NVK_HAVE_INIH
void IniInih(int n) {
    const std::string& sample = IniSample();
    for (int i = 0; i < n; ++i) {
        nvk::bench::IniSections sections;
        ini_parse_string(sample.c_str(), nvk::bench::IniSections::Handle, &sections);
        std::string rewritten = sections.Text();
        Escape(rewritten);
    }
}
#endif

struct Case {
    std::string Name;
    void (*Body)(int);
    int OperationsPerIteration;
    int Iterations = kIterations;
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
    const auto addText = [&](const char* name, int length, void (*ours)(int), void (*peer)(int)) {
        const std::string base = std::string(name) + " " + std::to_string(length) + " bytes | ";
        cases.push_back({base + "Chaine", ours, 1, kIterations / 10});
        cases.push_back({base + "std::string", peer, 1, kIterations / 10});
    };
    addText("Find", 64, FindChaine<64>, FindString<64>);
    addText("Find", 1000, FindChaine<1000>, FindString<1000>);
    addText("Replace", 64, ReplaceChaine<64>, ReplaceString<64>);
    addText("Replace", 1000, ReplaceChaine<1000>, ReplaceString<1000>);
    addText("Split", 64, SplitChaine<64>, SplitString<64>);
    addText("Split", 1000, SplitChaine<1000>, SplitString<1000>);
#ifdef NVK_HAVE_INIH
    // Instructions per byte of the sample.
    cases.push_back(
        {"parse and rewrite 1 MB (per byte) | EIniFile", IniChaine, static_cast<int>(kIniSize), 1});
    cases.push_back(
        {"parse and rewrite 1 MB (per byte) | inih", IniInih, static_cast<int>(kIniSize), 1});
#endif
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
    c.Body(std::max(c.Iterations / 10, 1));
    Measured(c.Body, c.Iterations);
    std::printf("%lld\n", static_cast<long long>(c.Iterations) * c.OperationsPerIteration);
    return 0;
}
