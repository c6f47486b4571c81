// The stand-in for the variable editor in the launch tests: writes its
// arguments, one a line, to "args.txt" beside itself, whole once it is there.
#include <filesystem>
#include <fstream>

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    // The POSIX layer names the program in the drive form in argv[0].
#ifdef _WIN32
    const fs::path folder = fs::path(argv[0]).parent_path();
#else
    const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
#endif
    {
        std::ofstream out(folder / "args.tmp", std::ios::binary);
        for (int i = 1; i < argc; ++i) {
            out << argv[i] << '\n';
        }
    }
    std::error_code error;
    fs::rename(folder / "args.tmp", folder / "args.txt", error);
    return error ? 1 : 0;
}
