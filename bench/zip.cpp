// Archiving an accounting dossier of 2,000 files and 300 MB
// (bench/make_dossier.py) with our engine through EZipCmd and with Info-ZIP
// zip, the peer, at levels 9 and 6, on the same folder. Times are wall-clock
// (the peer is a process of its own); the archives' sizes are compared at the
// end. A set NVK_BENCH_DOSSIER names a folder to keep the dossier in between
// runs.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>

#include "bench_dossier.h"
#include "nvk/archive/zip_cmd.h"
#include "ratio.h"

namespace {

namespace fs = std::filesystem;

const fs::path& Work() {
    return nvk::bench::Work("nvk-bench-zip");
}

const fs::path& Dossier() {
    static const fs::path dossier = nvk::bench::Dossier(Work());
    return dossier;
}

std::map<std::string, std::uintmax_t>& Sizes() {
    static std::map<std::string, std::uintmax_t> sizes;
    return sizes;
}

void Archive(benchmark::State& state, bool ours, int level) {
    const fs::path archive = Work() / (std::string(ours ? "dzip" : "zip") + ".zip");
    const std::string folder = Dossier().string();
    const std::string peer = "cd '" + Work().string() + "' && zip -q -r -" + std::to_string(level) +
                             " '" + archive.string() + "' Soc";
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove(archive);
        state.ResumeTiming();
        int code = 0;
        if (ours) {
            EZipCmd command(archive.string().c_str(), ("\"" + folder + "\"").c_str());
            command.recurseFlag = 1;
            command.compFactor = level;
            code = command.dzip();
        } else {
            code = std::system(peer.c_str());
        }
        if (code != 0) {
            state.SkipWithError("archiving failed");
            break;
        }
    }
    Sizes()[std::string(ours ? "dzip" : "zip") + " -" + std::to_string(level)] =
        fs::file_size(archive);
    state.counters["archive MB"] = static_cast<double>(fs::file_size(archive)) / 1e6;
    fs::remove(archive);
}

void Ours9(benchmark::State& state) {
    Archive(state, true, 9);
}
void Peer9(benchmark::State& state) {
    Archive(state, false, 9);
}
void Ours6(benchmark::State& state) {
    Archive(state, true, 6);
}
void Peer6(benchmark::State& state) {
    Archive(state, false, 6);
}

BENCHMARK(Ours9)
    ->Name("archive dossier -9 | dzip")
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Peer9)
    ->Name("archive dossier -9 | zip")
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Ours6)
    ->Name("archive dossier -6 | dzip")
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Peer6)
    ->Name("archive dossier -6 | zip")
    ->Iterations(1)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    // The engine stays loaded for the run, as an application that archives
    // often would keep it.
    EZipCmd::LoadLibraryA();
    const int result = nvk::bench::RunWithRatios(argc, argv, "dzip");
    std::printf("\nsizes (our archive over the peer's, same run):\n");
    for (int level : {9, 6}) {
        std::string suffix = " -" + std::to_string(level);
        if (Sizes().contains("dzip" + suffix) && Sizes().contains("zip" + suffix)) {
            std::printf("  level %d: dzip %ju bytes, zip %ju bytes, %.4fx\n", level,
                        Sizes()["dzip" + suffix], Sizes()["zip" + suffix],
                        static_cast<double>(Sizes()["dzip" + suffix]) /
                            static_cast<double>(Sizes()["zip" + suffix]));
        }
    }
    return result;
}
