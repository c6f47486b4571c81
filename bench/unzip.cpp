// Extracting and testing an accounting dossier of 2,000 files and 300 MB
// (bench/make_dossier.py), zipped by Info-ZIP zip -r -6, with our engine
// through EUnzipCmd and with Info-ZIP unzip, the peer, on the same archive.
// Times are wall-clock (the peer is a process of its own); a set
// NVK_BENCH_DOSSIER names a folder to keep the dossier and archive in between
// runs.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench_dossier.h"
#include "nvk/archive/unzip_cmd.h"
#include "nvk/archive/unzip_engine.h"
#include "ratio.h"

namespace {

namespace fs = std::filesystem;

const fs::path& Work() {
    return nvk::bench::Work("nvk-bench-unzip");
}

const fs::path& Archive() {
    static const fs::path archive = [] {
        fs::path zip = Work() / "dossier.zip";
        if (!fs::exists(zip)) {
            nvk::bench::Dossier(Work());
            nvk::bench::MakeOrExit("cd '" + Work().string() + "' && zip -q -r -6 dossier.zip Soc",
                                   "dossier archive");
        }
        return zip;
    }();
    return archive;
}

fs::path Output() {
    return Work() / "out";
}

void Extract(benchmark::State& state, bool ours, bool test) {
    const std::string archive = Archive().string();
    const std::string out = Output().string();
    const std::string peer =
        test ? "unzip -tqq '" + archive + "'" : "unzip -qq -o '" + archive + "' -d '" + out + "'";
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove_all(Output());
        state.ResumeTiming();
        int code = 0;
        if (ours) {
            EUnzipCmd command(archive.c_str(), out.c_str(), "*");
            command.function = test ? nvk::unzip::kTestNamed : nvk::unzip::kExtract;
            command.overWriteFlag = 1;
            code = command.dunzip();
        } else {
            code = std::system(peer.c_str());
        }
        if (code != 0) {
            state.SkipWithError("extraction failed");
            break;
        }
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(fs::file_size(Archive())));
}

void ExtractOurs(benchmark::State& state) {
    Extract(state, true, false);
}
void ExtractPeer(benchmark::State& state) {
    Extract(state, false, false);
}
void TestOurs(benchmark::State& state) {
    Extract(state, true, true);
}
void TestPeer(benchmark::State& state) {
    Extract(state, false, true);
}

BENCHMARK(ExtractOurs)
    ->Name("extract dossier | dunzip")
    ->Iterations(3)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(ExtractPeer)
    ->Name("extract dossier | unzip")
    ->Iterations(3)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(TestOurs)
    ->Name("test dossier | dunzip")
    ->Iterations(3)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(TestPeer)
    ->Name("test dossier | unzip")
    ->Iterations(3)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    // The engine stays loaded for the run, as an application that unzips
    // often would keep it.
    EUnzipCmd::LoadLibraryA();
    const int result = nvk::bench::RunWithRatios(argc, argv, "dunzip");
    fs::remove_all(Output());
    return result;
}
