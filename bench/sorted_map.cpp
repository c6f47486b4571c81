// Sorted-map searches against std::map and a sorted std::vector searched with
// std::lower_bound: random hits, random misses, and every key in ascending
// order, where the remembered cursor keeps each search near the last.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <random>
#include <utility>
#include <vector>

#include "nvk/core/sorted_map.h"
#include "ratio.h"

namespace {

constexpr int kKeys = 10000;

// Even keys are stored; odd ones miss.
struct Data {
    std::vector<unsigned> sorted;
    std::vector<unsigned> hits;
    std::vector<unsigned> misses;

    Data() {
        std::mt19937 random(1);
        for (unsigned i = 0; i < kKeys; ++i) {
            sorted.push_back(i * 2);
        }
        hits = sorted;
        std::shuffle(hits.begin(), hits.end(), random);
        for (unsigned key : hits) {
            misses.push_back(key + 1);
        }
    }

    const std::vector<unsigned>& Queries(int which) const {
        return which == 0 ? hits : (which == 1 ? misses : sorted);
    }
};

const Data& TheData() {
    static const Data data;
    return data;
}

const char* const kCases[] = {"find hits", "find misses", "find in key order"};

void SortedMap(benchmark::State& state, int which) {
    FSortedMap<unsigned, int> map;
    for (unsigned key : TheData().sorted) {
        map[key] = 1;
    }
    const auto& queries = TheData().Queries(which);
    for (auto _ : state) {
        int found = 0;
        for (unsigned key : queries) {
            found += map.Find(key) != -1;
        }
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(queries.size()));
}

void StdMap(benchmark::State& state, int which) {
    std::map<unsigned, int> map;
    for (unsigned key : TheData().sorted) {
        map[key] = 1;
    }
    const auto& queries = TheData().Queries(which);
    for (auto _ : state) {
        int found = 0;
        for (unsigned key : queries) {
            found += map.find(key) != map.end();
        }
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(queries.size()));
}

void SortedVector(benchmark::State& state, int which) {
    std::vector<std::pair<unsigned, int>> vector;
    for (unsigned key : TheData().sorted) {
        vector.emplace_back(key, 1);
    }
    const auto& queries = TheData().Queries(which);
    for (auto _ : state) {
        int found = 0;
        for (unsigned key : queries) {
            auto at = std::lower_bound(vector.begin(), vector.end(), key,
                                       [](const auto& pair, unsigned k) { return pair.first < k; });
            found += at != vector.end() && at->first == key;
        }
        benchmark::DoNotOptimize(found);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long>(queries.size()));
}

const int kRegistered = [] {
    for (int which = 0; which < 3; ++which) {
        const std::string name = std::string(kCases[which]) + ", 10000 keys | ";
        benchmark::RegisterBenchmark((name + "FSortedMap").c_str(), SortedMap, which);
        benchmark::RegisterBenchmark((name + "std::map").c_str(), StdMap, which);
        benchmark::RegisterBenchmark((name + "sorted std::vector").c_str(), SortedVector, which);
    }
    return 0;
}();

}  // namespace

int main(int argc, char** argv) {
    return nvk::bench::RunWithRatios(argc, argv, "FSortedMap");
}
