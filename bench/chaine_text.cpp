// Chaine's text operations against std::string and <algorithm>: searching,
// replacing all occurrences, splitting into fields and comparing without
// case.
#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "nvk/core/chaine.h"
#include "nvk/core/tableau.h"
#include "ratio.h"
#include "text_samples.h"

namespace {

using nvk::bench::Record;

void FindChaine(benchmark::State& state) {
    const Chaine text(Record(static_cast<int>(state.range(0))).c_str());
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.Find("key"));
    }
}

void FindString(benchmark::State& state) {
    const std::string text = Record(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(text.find("key"));
    }
}

void ReplaceChaine(benchmark::State& state) {
    const Chaine text(Record(static_cast<int>(state.range(0))).c_str());
    for (auto _ : state) {
        Chaine copy(text);
        copy.Replace("ab", "xyz");
        benchmark::DoNotOptimize(copy);
    }
}

void ReplaceString(benchmark::State& state) {
    const std::string text = Record(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        std::string result = nvk::bench::ReplaceAll(text);
        benchmark::DoNotOptimize(result);
    }
}

void SplitChaine(benchmark::State& state) {
    const Chaine text(Record(static_cast<int>(state.range(0))).c_str());
    PTableau<Chaine> fields;
    for (auto _ : state) {
        text.SplitSimple(fields, ';');
        benchmark::DoNotOptimize(fields);
    }
}

void SplitString(benchmark::State& state) {
    const std::string text = Record(static_cast<int>(state.range(0)));
    std::vector<std::string> fields;
    for (auto _ : state) {
        nvk::bench::SplitFields(text, fields);
        benchmark::DoNotOptimize(fields);
    }
}

std::string Mixed(int length, bool upper) {
    std::string text = Record(length);
    if (upper) {
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    }
    return text;
}

void CompareNoCaseChaine(benchmark::State& state) {
    const Chaine a(Mixed(static_cast<int>(state.range(0)), false).c_str());
    const Chaine b(Mixed(static_cast<int>(state.range(0)), true).c_str());
    for (auto _ : state) {
        benchmark::DoNotOptimize(a.CompareNoCase(b));
    }
}

void CompareNoCaseString(benchmark::State& state) {
    const std::string a = Mixed(static_cast<int>(state.range(0)), false);
    const std::string b = Mixed(static_cast<int>(state.range(0)), true);
    for (auto _ : state) {
        const bool less = std::lexicographical_compare(
            a.begin(), a.end(), b.begin(), b.end(),
            [](unsigned char x, unsigned char y) { return std::toupper(x) < std::toupper(y); });
        benchmark::DoNotOptimize(less);
    }
}

void Register(const char* name, void (*ours)(benchmark::State&), void (*peer)(benchmark::State&),
              const char* peerName) {
    for (int length : {64, 1000}) {
        const std::string base = std::string(name) + " " + std::to_string(length) + " bytes | ";
        benchmark::RegisterBenchmark((base + "Chaine").c_str(), ours)->Arg(length);
        benchmark::RegisterBenchmark((base + peerName).c_str(), peer)->Arg(length);
    }
}

}  // namespace

int main(int argc, char** argv) {
    Register("Find", FindChaine, FindString, "std::string");
    Register("Replace", ReplaceChaine, ReplaceString, "std::string");
    Register("Split", SplitChaine, SplitString, "std::string");
    Register("CompareNoCase", CompareNoCaseChaine, CompareNoCaseString, "std::algorithm");
    return nvk::bench::RunWithRatios(argc, argv, "Chaine");
}
