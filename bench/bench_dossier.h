// The accounting dossier that the archive benchmarks work on: 2,000 files and
// 300 MB made by bench/make_dossier.py, in a folder that a set
// NVK_BENCH_DOSSIER keeps between runs.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace nvk::bench {

// The benchmark's folder: NVK_BENCH_DOSSIER, or `name` in the temporary folder.
inline const std::filesystem::path& Work(const char* name) {
    static const std::filesystem::path folder = [name] {
        const char* kept = std::getenv("NVK_BENCH_DOSSIER");
        std::filesystem::path path = kept != nullptr
                                         ? std::filesystem::path(kept)
                                         : std::filesystem::temp_directory_path() / name;
        std::filesystem::create_directories(path);
        return path;
    }();
    return folder;
}

// Runs a shell command that makes an input, or ends the program saying so.
inline void MakeOrExit(const std::string& command, const char* what) {
    if (std::system(command.c_str()) != 0) {
        std::fprintf(stderr, "cannot make the %s\n", what);
        std::exit(1);
    }
}

// The dossier "Soc" in `folder`, made when it is missing.
inline std::filesystem::path Dossier(const std::filesystem::path& folder) {
    std::filesystem::path soc = folder / "Soc";
    if (!std::filesystem::exists(soc)) {
        MakeOrExit(
            "python3 '" NVK_SOURCE_DIR "/bench/make_dossier.py' '" + soc.string() + "' >/dev/null",
            "dossier");
    }
    return soc;
}

}  // namespace nvk::bench
