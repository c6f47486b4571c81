// nvk zip as scripts use it: the archive the options ask for, exit 0 or 2,
// and the front-end's error in the user's language.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "zip_test_support.h"

namespace {

using nvk::ziptest::Python;
using nvk::ziptest::Scratch;
using nvk::ziptest::Shell;

// The tool is built beside the test programs' folder.
std::string Nvk() {
    auto self = std::filesystem::read_symlink("/proc/self/exe");
    return (self.parent_path().parent_path() / "tools/nvk/nvk").string();
}

TEST(ZipTool, MakesChangesAndEncryptsArchivesQuietlyOffATerminal) {
    Scratch scratch;
    scratch.Put("d/a.txt", std::string(1000, 'a'));
    scratch.Put("d/sub/b.txt", "b");
    std::string in = "cd '" + scratch.str() + "' && LC_ALL=C.UTF-8 '" + Nvk() + "' zip ";
    auto made = Shell(in + "x.zip d -r -0 --comment 'été'");
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(made.text, "");
    std::string archive = scratch / "x.zip";
    EXPECT_EQ(Python(archive,
                     "sorted(z.namelist()), set(i.compress_type for i in z.infolist()), "
                     "z.comment.decode()")
                  .text,
              "['d/', 'd/a.txt', 'd/sub/', 'd/sub/b.txt'] {0} été\n");
    EXPECT_EQ(Shell(in + "x.zip 'd/sub/*' --delete").status, 0);
    EXPECT_EQ(Python(archive, "sorted(z.namelist())").text, "['d/', 'd/a.txt']\n");

    EXPECT_EQ(Shell(in + "s.zip d/a.txt --password 'p w'").status, 0);
    EXPECT_EQ(Shell("unzip -P 'p w' -t '" + (scratch / "s.zip") + "'").status, 0);
    EXPECT_EQ(Shell(in + "s.zip d/a.txt --freshen --update").status, 2);
}

TEST(ZipTool, FailsWithTheFrontEndsTextInTheUsersLanguage) {
    Scratch scratch;
    std::string zip = "' zip '" + (scratch / "x.zip") + "' '" + (scratch / "none") + "'";
    auto french = Shell("LC_ALL=fr_FR.UTF-8 '" + Nvk() + zip);
    EXPECT_EQ(french.status, 2);
    EXPECT_EQ(french.text,
              "nvk: Erreur lors de la compression ! Il n'y a rien à mettre dans l'archive !\n");
    auto swiss = Shell("LC_ALL=de_CH.UTF-8 '" + Nvk() + zip);
    EXPECT_EQ(swiss.status, 2);
    EXPECT_TRUE(swiss.text.starts_with("nvk: Fehler beim Komprimieren!")) << swiss.text;
    EXPECT_FALSE(std::filesystem::exists(scratch / "x.zip"));
}

}  // namespace
