// Opening a file and reading its attributes through the OS layer, by its exact
// name and by a name in another case, which Windows finds too. Peers: the
// system calls alone (open and close, lstat) on the same file, the floor of
// what the layer can cost.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "os/api/file.h"
#include "os/api/file_attributes.h"
#include "os/api/sync.h"
#include "ratio.h"

namespace {

namespace fs = std::filesystem;

// A folder of 200 files mapped as drive T:, the one measured among them.
struct Folder {
    Folder() {
        std::string pattern = (fs::temp_directory_path() / "nvk_bench_XXXXXX").string();
        path = mkdtemp(pattern.data());
        for (int i = 0; i < 200; ++i) {
            std::ofstream(path + "/file" + std::to_string(i) + ".dat") << "x";
        }
        std::ofstream(path + "/compta.dat") << "data";
        setenv("NVK_DRIVES", ("T=" + path).c_str(), 1);
    }
    ~Folder() { fs::remove_all(path); }
    std::string path;
};

const Folder& TheFolder() {
    static const Folder folder;
    return folder;
}

void OpenByLayer(benchmark::State& state, const char* name) {
    TheFolder();
    for (auto _ : state) {
        nvk::os::HANDLE file =
            nvk::os::CreateFileA(name, nvk::os::GENERIC_READ, nvk::os::FILE_SHARE_READ, nullptr,
                                 nvk::os::OPEN_EXISTING, nvk::os::FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == nvk::os::INVALID_HANDLE_VALUE) {
            state.SkipWithError("not found");
            break;
        }
        nvk::os::CloseHandle(file);
    }
}

void AttributesByLayer(benchmark::State& state, const char* name) {
    TheFolder();
    for (auto _ : state) {
        benchmark::DoNotOptimize(nvk::os::GetFileAttributesA(name));
    }
}

void OpenExact(benchmark::State& state) {
    OpenByLayer(state, "T:\\compta.dat");
}
void OpenOtherCase(benchmark::State& state) {
    OpenByLayer(state, "T:\\COMPTA.DAT");
}
void OpenSystem(benchmark::State& state) {
    const std::string path = TheFolder().path + "/compta.dat";
    for (auto _ : state) {
        close(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    }
}

void AttributesExact(benchmark::State& state) {
    AttributesByLayer(state, "T:\\compta.dat");
}
void AttributesOtherCase(benchmark::State& state) {
    AttributesByLayer(state, "T:\\COMPTA.DAT");
}
void AttributesSystem(benchmark::State& state) {
    const std::string path = TheFolder().path + "/compta.dat";
    struct stat info;
    for (auto _ : state) {
        benchmark::DoNotOptimize(lstat(path.c_str(), &info));
    }
}

BENCHMARK(OpenExact)->Name("open | exact case");
BENCHMARK(OpenOtherCase)->Name("open | another case");
BENCHMARK(OpenSystem)->Name("open | open and close");
BENCHMARK(AttributesExact)->Name("attributes | exact case");
BENCHMARK(AttributesOtherCase)->Name("attributes | another case");
BENCHMARK(AttributesSystem)->Name("attributes | lstat");

}  // namespace

int main(int argc, char** argv) {
    return nvk::bench::RunWithRatios(argc, argv, "exact case");
}
