// Get(ID) for every identifier, with and without a Paths.ini, against the
// floor of the design: Paths.ini is read again on every call, so no Get can
// be faster than reading the file once. The peer "read Paths.ini" reads it
// (or, without the file, fails to open it) once for each identifier; the
// ratio says how close the whole resolution comes to that floor. Calls per
// second are the items_per_second column.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "nvk/config/ini_file.h"
#include "nvk/paths/special_nvk_path.h"
#include "nvk/services/global_dico.h"
#include "os/api/path_map.h"
#include "os/api/sync.h"
#include "ratio.h"

namespace {

namespace fs = std::filesystem;
using namespace SpecialNVKPath;

struct Installation {
    fs::path root;
    Installation() {
        root = fs::temp_directory_path() /
               ("nvk_bench_paths_" + std::to_string(nvk::os::GetCurrentProcessId()));
        fs::create_directories(root / "app");
        fs::create_directories(root / "docs");
        setenv("XDG_DATA_HOME", (root / "data").c_str(), 1);
        setenv("XDG_DOCUMENTS_DIR", (root / "docs").c_str(), 1);
        SetAppFolder(Windows(root / "app"));
        GlobalDico::Get().SetValue("App.Name", "Compta");
        GlobalDico::Get().SetValue("App.SocietyID", "NVK-BENCH");
    }
    ~Installation() {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    static Chaine Windows(const fs::path& path) {
        return nvk::os::ToWindowsPath(path.c_str()).c_str();
    }
    // A Paths.ini of an installation that moved its documents and shared
    // data (so that nothing is made in the system's folders), with the lines
    // of other keys that such files carry.
    void WritePathsIni() const {
        std::ofstream out(root / "app/Paths.ini", std::ios::binary);
        out << "; moved by the installer\r\n[Paths]\r\nDocumentsRootID="
            << Windows(root / "docs").c_str()
            << "\r\nConfigInetShared=inet\r\nSocietyDataShared=shared\r\n";
        for (int i = 0; i < 20; ++i) {
            out << "Own" << i << "=own\\" << i << "\r\n";
        }
        out << "[DBServers]\r\nShare=SQL1\r\n";
    }
    void RemovePathsIni() const { fs::remove(root / "app/Paths.ini"); }
};

Installation& Setup() {
    static Installation installation;
    return installation;
}

void GetEvery(benchmark::State& state, bool withFile) {
    Installation& setup = Setup();
    withFile ? setup.WritePathsIni() : setup.RemovePathsIni();
    const PTableau<ID>& ids = AllIDs();
    if (withFile) {
        // Made once, so that the runs measure finding, not making.
        for (int i = 0; i < ids.Size(); ++i) {
            Get(ids[i], CreateIfMissing);
        }
    }
    for (auto _ : state) {
        for (int i = 0; i < ids.Size(); ++i) {
            benchmark::DoNotOptimize(Get(ids[i], EmptyIfMissing));
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * ids.Size());
}

void ReadOnce(benchmark::State& state, bool withFile) {
    Installation& setup = Setup();
    withFile ? setup.WritePathsIni() : setup.RemovePathsIni();
    const Chaine path = Installation::Windows(setup.root / "app/Paths.ini");
    const int count = AllIDs().Size();
    for (auto _ : state) {
        for (int i = 0; i < count; ++i) {
            EIniFile ini;
            ini.Open(path, true);
            benchmark::DoNotOptimize(ini.SectionExist("Paths"));
        }
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * count);
}

}  // namespace

int main(int argc, char** argv) {
    for (const bool withFile : {true, false}) {
        const std::string what = withFile ? "with Paths.ini" : "without Paths.ini";
        benchmark::RegisterBenchmark(("every ID " + what + " | Get(ID)").c_str(), GetEvery,
                                     withFile);
        benchmark::RegisterBenchmark(("every ID " + what + " | read Paths.ini").c_str(), ReadOnce,
                                     withFile);
    }
    return nvk::bench::RunWithRatios(argc, argv, "Get(ID)");
}
