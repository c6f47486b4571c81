// nvk unzip as scripts use it: quiet when its output is not a terminal, the
// front-end's message and status 2 on failure, also without an engine.
#include "unzip_support.h"

namespace {

using namespace unzip_test;

// The tool of this build, beside the test programs' folder.
fs::path Tool() {
    return fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "tools/nvk/nvk";
}

int Shell(const std::string& command, const fs::path& errors) {
    int status = std::system((command + " >/dev/null 2>'" + errors.string() + "'").c_str());
    // The wait status: the exit code above the signal number.
    return (status & 0x7F) == 0 ? (status >> 8) & 0xFF : -1;
}

TEST(UnzipTool, ExtractsQuietlyAndFailsWithTheFrontEndsText) {
    if (!fs::exists(Tool())) {
        GTEST_SKIP() << "the tool is not built";
    }
    Scratch s;
    Python(s.Path(), "with z.ZipFile('a.zip', 'w') as a: a.writestr('f.txt', 'text')");
    const std::string nvk = "'" + Tool().string() + "' unzip ";
    EXPECT_EQ(Shell(nvk + "'" + (s / "a.zip").string() + "' -d '" + (s / "out").string() + "'",
                    s / "err"),
              0);
    EXPECT_EQ(Read(s / "out/f.txt"), "text");
    EXPECT_EQ(Read(s / "err"), "");

    EXPECT_EQ(Shell("LANG=fr_FR.UTF-8 " + nvk + "'" + (s / "none.zip").string() + "'", s / "err"),
              2);
    EXPECT_EQ(Read(s / "err"),
              "nvk: Erreur lors de la d\xc3\xa9"
              "compression ! Fichier non trouv\xc3\xa9\n");

    // Without the engine where the OS layer looks for it: the layer's copy
    // lives in a folder of its own.
    fs::path layer =
        fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "libnvkos.so.0";
    fs::create_directory(s / "alone");
    fs::copy_file(layer, s / "alone/libnvkos.so.0");
    EXPECT_EQ(Shell("LANG=fr_FR.UTF-8 LD_LIBRARY_PATH='" + (s / "alone").string() + "' " + nvk +
                        "'" + (s / "a.zip").string() + "'",
                    s / "err"),
              2);
    EXPECT_NE(Read(s / "err").find("dunzip32.dll n'a pas"), std::string::npos) << Read(s / "err");
}

}  // namespace
