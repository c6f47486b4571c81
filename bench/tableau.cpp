// Middle insertion of 200-byte elements: PTableau shifts a pointer per
// element, std::vector moves the elements themselves.
#include <benchmark/benchmark.h>

#include <vector>

#include "nvk/core/tableau.h"
#include "ratio.h"

namespace {

struct Record {
    char bytes[200];
};

void InsertMiddlePTableau(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const Record record{};
    for (auto _ : state) {
        PTableau<Record> table;
        for (int i = 0; i < n; ++i) {
            table.InsertAt(table.Size() / 2, record);
        }
        benchmark::DoNotOptimize(table.Body());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void InsertMiddleVector(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const Record record{};
    for (auto _ : state) {
        std::vector<Record> table;
        for (int i = 0; i < n; ++i) {
            table.insert(table.begin() + static_cast<long>(table.size() / 2), record);
        }
        benchmark::DoNotOptimize(table.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

BENCHMARK(InsertMiddlePTableau)
    ->Name("insert 200-byte records in the middle | PTableau")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000);
BENCHMARK(InsertMiddleVector)
    ->Name("insert 200-byte records in the middle | std::vector")
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000);

}  // namespace

int main(int argc, char** argv) {
    return nvk::bench::RunWithRatios(argc, argv, "PTableau");
}
