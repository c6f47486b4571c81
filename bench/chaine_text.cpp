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

namespace {

// Fields of words separated by ';', "key" near the end.
std::string Record(int length) {
    std::string text;
    for (int i = 0; static_cast<int>(text.size()) < length; ++i) {
        text += "field" + std::to_string(i) + ";ab;";
    }
    text.resize(static_cast<std::size_t>(length));
    text.replace(text.size() - 8, 3, "key");
    return text;
}

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
        std::string result;
        std::size_t last = 0;
        for (std::size_t hit; (hit = text.find("ab", last)) != std::string::npos; last = hit + 2) {
            result.append(text, last, hit - last);
            result += "xyz";
        }
        result.append(text, last);
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
        fields.clear();
        std::size_t start = 0;
        for (std::size_t hit; (hit = text.find(';', start)) != std::string::npos; start = hit + 1) {
            fields.emplace_back(text, start, hit - start);
        }
        fields.emplace_back(text, start);
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
