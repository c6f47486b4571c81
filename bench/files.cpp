// Walking, measuring, copying and deleting a tree of 100,000 files in 5,000
// folders, warm in the cache, against the system's own tools and the C++
// library on the same tree in the same run: the walk against "find -type f"
// and std::filesystem::recursive_directory_iterator, GetDirectorySize against
// "du -sb", CopyDirectory against "cp -r", DelTree against "rm -rf".
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "nvk/files/file_iterator.h"
#include "nvk/files/file_operations.h"
#include "ratio.h"

namespace {

namespace fs = std::filesystem;

constexpr int kTops = 50;
constexpr int kSubs = 99;  // 50 + 50 x 99 = 5,000 folders
constexpr int kFilesPerFolder = 20;
constexpr const char* kOurs = "nvkutil";

std::string Quoted(const std::string& path) {
    return "'" + path + "'";
}

void Shell(benchmark::State& state, const std::string& command) {
    if (std::system(command.c_str()) != 0) {
        state.SkipWithError(("failed: " + command).c_str());
    }
}

// The tree, made once in a folder of its own and removed at the end.
class Tree {
public:
    Tree() {
        std::string pattern = (fs::temp_directory_path() / "nvk_bench_files_XXXXXX").string();
        m_Base = mkdtemp(pattern.data());
        const std::string content(100, 'x');
        for (int top = 0; top < kTops; ++top) {
            const std::string topFolder = Native() + "/top" + std::to_string(top);
            Fill(topFolder, content);
            for (int sub = 0; sub < kSubs; ++sub) {
                Fill(topFolder + "/sub" + std::to_string(sub), content);
            }
        }
        // Warm the cache.
        std::system(("find " + Quoted(Native()) + " -type f > /dev/null").c_str());
    }
    ~Tree() { fs::remove_all(m_Base); }

    std::string Native(const char* name = "tree") const { return m_Base + "/" + name; }
    // The drive form the library works in.
    Chaine Library(const char* name = "tree") const {
        std::string path = "Z:" + Native(name);
        for (char& c : path) {
            c = c == '/' ? '\\' : c;
        }
        return path.c_str();
    }

private:
    static void Fill(const std::string& folder, const std::string& content) {
        fs::create_directories(folder);
        for (int file = 0; file < kFilesPerFolder; ++file) {
            std::ofstream(folder + "/file" + std::to_string(file) + ".dat") << content;
        }
    }
    std::string m_Base;
};

const Tree& TheTree() {
    static const Tree tree;
    return tree;
}

void WalkFileIterator(benchmark::State& state) {
    const Tree& tree = TheTree();
    for (auto _ : state) {
        FileIterator walk;
        long files = 0;
        for (bool more = walk.GetFirst(tree.Library()); more; more = walk.GetNext()) {
            ++files;
        }
        if (files != kTops * (kSubs + 1) * kFilesPerFolder) {
            state.SkipWithError("the walk missed files");
        }
    }
}
BENCHMARK(WalkFileIterator)->Name("walk | nvkutil")->Unit(benchmark::kMillisecond);

void WalkFind(benchmark::State& state) {
    const std::string command = "find " + Quoted(TheTree().Native()) + " -type f > /dev/null";
    for (auto _ : state) {
        Shell(state, command);
    }
}
BENCHMARK(WalkFind)->Name("walk | find -type f")->Unit(benchmark::kMillisecond);

void WalkStd(benchmark::State& state) {
    const std::string root = TheTree().Native();
    for (auto _ : state) {
        long files = 0;
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            files += entry.is_regular_file() ? 1 : 0;
        }
        benchmark::DoNotOptimize(files);
    }
}
BENCHMARK(WalkStd)->Name("walk | recursive_directory_iterator")->Unit(benchmark::kMillisecond);

void SizeOurs(benchmark::State& state) {
    const Tree& tree = TheTree();
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetDirectorySize(tree.Library()));
    }
}
BENCHMARK(SizeOurs)->Name("size | nvkutil")->Unit(benchmark::kMillisecond);

void SizeDu(benchmark::State& state) {
    const std::string command = "du -sb " + Quoted(TheTree().Native()) + " > /dev/null";
    for (auto _ : state) {
        Shell(state, command);
    }
}
BENCHMARK(SizeDu)->Name("size | du -sb")->Unit(benchmark::kMillisecond);

// Copies go to a fresh target each time, removed outside the timing.
void CopyOurs(benchmark::State& state) {
    const Tree& tree = TheTree();
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove_all(tree.Native("copy"));
        fs::create_directory(tree.Native("copy"));
        state.ResumeTiming();
        if (!CopyDirectory(tree.Library(), tree.Library("copy"), 1)) {
            state.SkipWithError("the copy failed");
        }
    }
    fs::remove_all(tree.Native("copy"));
}
BENCHMARK(CopyOurs)->Name("copy | nvkutil")->Unit(benchmark::kMillisecond)->Iterations(1);

void CopyCp(benchmark::State& state) {
    const Tree& tree = TheTree();
    const std::string command =
        "cp -r " + Quoted(tree.Native()) + " " + Quoted(tree.Native("copy"));
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove_all(tree.Native("copy"));
        state.ResumeTiming();
        Shell(state, command);
    }
    fs::remove_all(tree.Native("copy"));
}
BENCHMARK(CopyCp)->Name("copy | cp -r")->Unit(benchmark::kMillisecond)->Iterations(1);

// Each deletion takes a copy made outside the timing.
void DeleteOurs(benchmark::State& state) {
    const Tree& tree = TheTree();
    const std::string copy = "cp -r " + Quoted(tree.Native()) + " " + Quoted(tree.Native("gone"));
    for (auto _ : state) {
        state.PauseTiming();
        Shell(state, copy);
        state.ResumeTiming();
        if (!DelTree(tree.Library("gone"), true)) {
            state.SkipWithError("the deletion failed");
        }
    }
}
BENCHMARK(DeleteOurs)->Name("delete | nvkutil")->Unit(benchmark::kMillisecond)->Iterations(1);

void DeleteRm(benchmark::State& state) {
    const Tree& tree = TheTree();
    const std::string copy = "cp -r " + Quoted(tree.Native()) + " " + Quoted(tree.Native("gone"));
    const std::string remove = "rm -rf " + Quoted(tree.Native("gone"));
    for (auto _ : state) {
        state.PauseTiming();
        Shell(state, copy);
        state.ResumeTiming();
        Shell(state, remove);
    }
}
BENCHMARK(DeleteRm)->Name("delete | rm -rf")->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace

int main(int argc, char** argv) {
    return nvk::bench::RunWithRatios(argc, argv, kOurs);
}
