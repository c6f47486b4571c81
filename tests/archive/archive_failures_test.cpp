// The archive tools when the system fails them: a file-size limit standing
// for a full disk, and a process killed while it writes. Whatever stops them,
// the archive or file that was there before is whole afterwards, and no
// half-written file is left under a real name.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "zip_test_support.h"

namespace {

namespace fs = std::filesystem;
using nvk::ziptest::Python;
using nvk::ziptest::Scratch;
using nvk::ziptest::Shell;

std::string Nvk() {
    auto self = fs::read_symlink("/proc/self/exe");
    return (self.parent_path().parent_path() / "tools/nvk/nvk").string();
}

// Runs the tool in `folder` with writes limited to `kilobytes` per file; the
// signal is ignored so that the writes fail as on a full disk.
nvk::ziptest::Output Limited(const Scratch& folder, int kilobytes, const std::string& arguments) {
    return Shell("cd '" + folder.str() + "' && bash -c \"trap '' XFSZ; ulimit -f " +
                 std::to_string(kilobytes) + "; exec '" + Nvk() + "' " + arguments + "\"");
}

// Names in the folder, to see that nothing was left behind.
std::string Listing(const Scratch& folder) {
    return Shell("cd '" + folder.str() + "' && ls -A").text;
}

// Random bytes do not compress: the archive is as large as its input.
void PutRandom(const Scratch& folder, const std::string& name, int megabytes) {
    Shell("head -c " + std::to_string(megabytes) + "M /dev/urandom > '" + (folder / name) + "'");
}

TEST(ArchiveFailures, AFullDiskKeepsTheArchiveThatWasThere) {
    Scratch scratch;
    scratch.Put("old.txt", "the customer's data");
    ASSERT_EQ(Shell("cd '" + scratch.str() + "' && '" + Nvk() + "' zip x.zip old.txt").status, 0);
    PutRandom(scratch, "big.bin", 2);
    const std::string before = Listing(scratch);

    EXPECT_EQ(Limited(scratch, 512, "zip x.zip big.bin").status, 2);
    EXPECT_EQ(
        Python(scratch / "x.zip", "z.namelist(), z.testzip(), z.read(\"old.txt\").decode()").text,
        "['old.txt'] None the customer's data\n");
    EXPECT_EQ(Listing(scratch), before);
}

TEST(ArchiveFailures, AFullDiskLeavesNoHalfExtractedFile) {
    Scratch scratch;
    PutRandom(scratch, "big.bin", 2);
    ASSERT_EQ(Shell("cd '" + scratch.str() + "' && '" + Nvk() + "' zip x.zip big.bin -0").status,
              0);
    Shell("mkdir '" + (scratch / "out") + "'");
    scratch.Put("out/big.bin", "the file that was there");

    EXPECT_NE(Limited(scratch, 512, "unzip x.zip -d out --overwrite").status, 0);
    EXPECT_EQ(Shell("cat '" + (scratch / "out/big.bin") + "'").text, "the file that was there");
    EXPECT_EQ(Shell("ls -A '" + (scratch / "out") + "'").text, "big.bin\n");
}

TEST(ArchiveFailures, AKilledWriterKeepsTheArchiveThatWasThere) {
    Scratch scratch;
    scratch.Put("old.txt", "the customer's data");
    ASSERT_EQ(Shell("cd '" + scratch.str() + "' && '" + Nvk() + "' zip x.zip old.txt").status, 0);
    PutRandom(scratch, "big.bin", 64);

    // Killed a moment into compressing 64 MB; the new archive is only ever
    // a temporary file until it is whole.
    Shell("cd '" + scratch.str() + "' && { '" + Nvk() +
          "' zip x.zip big.bin -9 & pid=$!; sleep 0.3; kill -9 $pid; wait $pid; }");
    const std::string names = Python(scratch / "x.zip", "sorted(z.namelist()), z.testzip()").text;
    EXPECT_TRUE(names == "['old.txt'] None\n" || names == "['big.bin', 'old.txt'] None\n") << names;
}

}  // namespace
