// The block storage's pool against the C library's allocator, for the short
// buffers it serves, on one thread and on two.
#include <cstdlib>

#include "nvk/core/block_storage.h"
#include "ratio.h"

namespace {

// A burst of live blocks, as a function building a few strings holds them.
constexpr int kBurst = 16;

void Pool(benchmark::State& state) {
    const auto size = static_cast<std::uint32_t>(state.range(0));
    ChaineBuffer* blocks[kBurst];
    for (auto _ : state) {
        FBlockStorage* storage = BlockStorage();
        for (auto& block : blocks) {
            block = storage->PoolAlloc(size);
        }
        benchmark::DoNotOptimize(blocks);
        for (ChaineBuffer* block : blocks) {
            storage->PoolFree(block);
        }
    }
    state.SetItemsProcessed(state.iterations() * kBurst);
}

void Malloc(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0)) + 12;
    void* blocks[kBurst];
    for (auto _ : state) {
        for (auto& block : blocks) {
            block = std::malloc(size);
        }
        benchmark::DoNotOptimize(blocks);
        for (void* block : blocks) {
            std::free(block);
        }
    }
    state.SetItemsProcessed(state.iterations() * kBurst);
}

}  // namespace

int main(int argc, char** argv) {
    BlockStorage();  // made before the timed runs
    for (int size : {16, 32, 64}) {
        for (int threads : {1, 2}) {
            const std::string base = "alloc+free " + std::to_string(size) + " bytes | ";
            benchmark::RegisterBenchmark((base + "PoolAlloc").c_str(), Pool)
                ->Arg(size)
                ->Threads(threads)
                ->UseRealTime();
            benchmark::RegisterBenchmark((base + "malloc").c_str(), Malloc)
                ->Arg(size)
                ->Threads(threads)
                ->UseRealTime();
        }
    }
    return nvk::bench::RunWithRatios(argc, argv, "PoolAlloc");
}
