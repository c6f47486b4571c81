// Parsing, and parsing then rewriting, a 10 MB INI file. Peers: inih's parser
// (its handler filling a dictionary of values and the order of names per
// section, as EIniFile keeps them) and Python's configparser, timed inside one
// python3 run when there is one. MB/s are the bytes_per_second column.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "nvk/config/ini_file.h"
#include "os/api/process.h"
#include "os/api/sync.h"
#include "ratio.h"
#include "text_samples.h"

#ifdef NVK_HAVE_INIH
#include <ini.h>
#endif

namespace {

constexpr std::size_t kSampleSize = 10u << 20;

const std::string& Sample() {
    static const std::string text = nvk::bench::IniSample(kSampleSize);
    return text;
}

void SetBytes(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(Sample().size()));
}

// Every case is timed by hand, as configparser's times come from its own run:
// the cases then carry the same name suffix and meet in the ratios. The time
// is the processor time of this single-threaded program, which a busy machine
// disturbs less than the wall clock.
template <class Body>
void Timed(benchmark::State& state, Body body) {
    for (auto _ : state) {
        const std::clock_t start = std::clock();
        body();
        state.SetIterationTime(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    SetBytes(state);
}

const Chaine& SampleChaine() {
    static const Chaine text(Sample().data(), static_cast<int>(Sample().size()));
    return text;
}

void ParseOurs(benchmark::State& state) {
    Timed(state, [] {
        EIniFile ini;
        ini.ReadInData(SampleChaine());
        benchmark::DoNotOptimize(ini.GetSectionNB());
    });
}

void RewriteOurs(benchmark::State& state) {
    Timed(state, [] {
        EIniFile ini;
        ini.ReadInData(SampleChaine());
        benchmark::DoNotOptimize(ini.AsChaine().Length());
    });
}

#ifdef NVK_HAVE_INIH
using nvk::bench::IniSections;

void ParseInih(benchmark::State& state) {
    Timed(state, [] {
        IniSections sections;
        ini_parse_string(Sample().c_str(), IniSections::Handle, &sections);
        benchmark::DoNotOptimize(sections.order.size());
    });
}

void RewriteInih(benchmark::State& state) {
    Timed(state, [] {
        IniSections sections;
        ini_parse_string(Sample().c_str(), IniSections::Handle, &sections);
        benchmark::DoNotOptimize(sections.Text().size());
    });
}
#endif

// Processor seconds that configparser took to parse, and to parse and write, the sample;
// empty when there is no python3 to ask.
struct PythonTimes {
    bool ok = false;
    double parse = 0;
    double rewrite = 0;
};

const PythonTimes& Python() {
    static const PythonTimes times = [] {
        PythonTimes result;
        const auto folder = std::filesystem::temp_directory_path() /
                            ("nvk_bench_ini_" + std::to_string(nvk::os::GetCurrentProcessId()));
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "sample.ini", std::ios::binary) << Sample();
        std::ofstream(folder / "time.py") << R"(import configparser, io, sys, time
text = open(sys.argv[1], encoding="latin-1").read()
def parse():
    ini = configparser.ConfigParser(interpolation=None, strict=False, allow_no_value=True)
    ini.read_string(text)
    return ini
start = time.process_time()
parse()
parsed = time.process_time() - start
start = time.process_time()
parse().write(io.StringIO())
rewritten = time.process_time() - start
open(sys.argv[2], "w").write("%f %f" % (parsed, rewritten))
)";
        std::string line = "python3 \"" + (folder / "time.py").string() + "\" \"" +
                           (folder / "sample.ini").string() + "\" \"" +
                           (folder / "times.txt").string() + "\"";
        nvk::os::STARTUPINFOA startup = {};
        startup.cb = sizeof startup;
        nvk::os::PROCESS_INFORMATION process = {};
        if (nvk::os::CreateProcessA(nullptr, line.data(), nullptr, nullptr, nvk::os::FALSE, 0,
                                    nullptr, nullptr, &startup, &process)) {
            nvk::os::WaitForSingleObject(process.hProcess, nvk::os::INFINITE);
            nvk::os::CloseHandle(process.hThread);
            nvk::os::CloseHandle(process.hProcess);
            result.ok = static_cast<bool>(std::ifstream(folder / "times.txt") >> result.parse >>
                                          result.rewrite);
        }
        std::filesystem::remove_all(folder);
        return result;
    }();
    return times;
}

void RunPython(benchmark::State& state, double PythonTimes::*seconds) {
    const PythonTimes& times = Python();
    for (auto _ : state) {
        if (!times.ok) {
            state.SkipWithError("no python3 with configparser");
            break;
        }
        state.SetIterationTime(times.*seconds);
    }
    SetBytes(state);
}

void ParsePython(benchmark::State& state) {
    RunPython(state, &PythonTimes::parse);
}

void RewritePython(benchmark::State& state) {
    RunPython(state, &PythonTimes::rewrite);
}

// The same options for every case, so that the cases' names end alike.
void Options(benchmark::internal::Benchmark* bench) {
    bench->UseManualTime()->MinTime(2)->Unit(benchmark::kMillisecond);
}

BENCHMARK(ParseOurs)->Name("parse 10 MB | EIniFile")->Apply(Options);
BENCHMARK(RewriteOurs)->Name("parse and rewrite 10 MB | EIniFile")->Apply(Options);
#ifdef NVK_HAVE_INIH
BENCHMARK(ParseInih)->Name("parse 10 MB | inih")->Apply(Options);
BENCHMARK(RewriteInih)->Name("parse and rewrite 10 MB | inih")->Apply(Options);
#endif
BENCHMARK(ParsePython)->Name("parse 10 MB | configparser")->Apply(Options);
BENCHMARK(RewritePython)->Name("parse and rewrite 10 MB | configparser")->Apply(Options);

}  // namespace

int main(int argc, char** argv) {
    return nvk::bench::RunWithRatios(argc, argv, "EIniFile");
}
