// Names, existence tests, long names, disk space and moves.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "files_test_support.h"
#include "nvk/afx/message_box.h"
#include "nvk/files/file_operations.h"

namespace {

namespace fs = std::filesystem;
using nvk::files::test::ScopedEnv;
using nvk::files::test::TempTree;

TEST(PathNames, SplitAtTheLastSeparatorOfAnyKind) {
    EXPECT_EQ(GetFileName("a/b:c", nullptr, 0), 2u);
    char out[8];
    EXPECT_EQ(GetFileName("x\\long.name", out, 4), 10u);
    EXPECT_STREQ(out, "lon");
    EXPECT_EQ(GetPathName("a\\b/c.txt", out, sizeof out), 4u);
    EXPECT_STREQ(out, "a\\b/");
    EXPECT_EQ(GetPathName("C:x", out, 2), 2u);
    EXPECT_STREQ(out, "C");
    EXPECT_EQ(GetPathName("name", out, sizeof out), 0u);
    EXPECT_STREQ(out, "");
}

TEST(PathTests, AnswerForFilesFoldersDrivesAndMissingPaths) {
    TempTree tree;
    tree.File("f.txt");
    tree.File("full/x");
    tree.Folder("empty");
    tree.Folder("parent/child");
    ScopedEnv drives("NVK_DRIVES", "C=" + tree.Native());

    EXPECT_EQ(IsDirectory("C:"), 1);
    EXPECT_EQ(IsDirectory("nonsense\\"), 1);
    EXPECT_EQ(IsDirectory(tree.Path("empty")), 1);
    EXPECT_EQ(IsDirectory(tree.Path("f.txt")), 0);
    EXPECT_EQ(IsDirectory(tree.Path("nothing")), 0);
    EXPECT_EQ(IsDirectory(""), 0);
    EXPECT_EQ(IsDirectory(nullptr), 0);

    EXPECT_EQ(IsFileExist("C:\\"), 1);
    EXPECT_EQ(IsFileExist(tree.Path("f.txt")), 1);
    EXPECT_EQ(IsFileExist(tree.Path("empty")), 1);
    EXPECT_EQ(IsFileExist(tree.Path("nothing")), 0);
    EXPECT_EQ(IsFileExist(""), 0);

    EXPECT_EQ(HasSubDirectories(""), 1);
    EXPECT_EQ(IsDirectoryEmpty(""), 1);
    EXPECT_EQ(HasSubDirectories(tree.Path("nothing")), 0);
    EXPECT_EQ(IsDirectoryEmpty(tree.Path("nothing")), 0);
    EXPECT_EQ(HasSubDirectories(tree.Path("parent")), 1);
    EXPECT_EQ(HasSubDirectories(tree.Path("full")), 0);
    EXPECT_EQ(IsDirectoryEmpty(tree.Path("empty")), 1);
    EXPECT_EQ(IsDirectoryEmpty(tree.Path("full")), 0);
}

TEST(LongNames, TakeEachComponentAsTheFolderSpellsIt) {
    TempTree tree;
    tree.File("Mixed Case/File.TXT");
    const std::string root = tree.Path().c_str();
    const std::string spelt = root + "\\Mixed Case\\File.TXT";
    char out[nvk::os::MAX_PATH];
    EXPECT_EQ(TranslateIntoLongName((root + "\\MIXED CASE\\file.txt").c_str(), out, sizeof out),
              spelt.size());
    EXPECT_EQ(out, spelt);
    // Too small a buffer is left alone; the length tells the size needed.
    std::strcpy(out, "untouched");
    const std::string missing = root + "\\mixed case\\missing";
    EXPECT_EQ(
        TranslateIntoLongName(missing.c_str(), out, static_cast<unsigned>(missing.size() - 1)),
        missing.size());
    EXPECT_STREQ(out, "untouched");
    EXPECT_EQ(AreEqualsFiles((root + "\\MIXED CASE\\FILE.TXT").c_str(),
                             (root + "\\mixed case\\file.txt").c_str()),
              1);
    EXPECT_EQ(AreEqualsFiles(spelt.c_str(), (root + "\\Mixed Case\\Other.TXT").c_str()), 0);
}

TEST(DiskSpace, BothFormsAgreeAndTheVolumeKnowsLongNames) {
    TempTree tree;
    nvk::os::ULARGE_INTEGER free{}, total{}, totalFree{};
    ASSERT_EQ(GetDiskSpace(tree.Path(), &free, &total, &totalFree), 1);
    EXPECT_GT(total.QuadPart, 0u);
    EXPECT_LE(totalFree.QuadPart, total.QuadPart);
    unsigned long long total64 = 0;
    ASSERT_EQ(GetDiskSpace(tree.Path(), nullptr, &total64, nullptr), 1);
    EXPECT_EQ(total64, total.QuadPart);
    EXPECT_EQ(GetDiskSpace(tree.Path("missing\\deeper"), &free, nullptr, nullptr), 0);
    EXPECT_EQ(GetDirectoryMaxNamesSize("Z:\\tmp"), 255u);
    EXPECT_EQ(GetDirectoryMaxNamesSize("Q:\\unmapped"), 8u);
}

TEST(SafeMoveFileEx, ReplacesOnlyWhenAsked) {
    TempTree tree;
    tree.File("a", "a");
    tree.File("b", "b");
    EXPECT_EQ(SafeMoveFileEx(tree.Path("a"), tree.Path("b"), 0), 0);
    EXPECT_NE(SafeMoveFileEx(tree.Path("a"), tree.Path("b"), nvk::os::MOVEFILE_REPLACE_EXISTING),
              0);
    EXPECT_EQ(tree.Read("b"), "a");
}

std::string g_Question;
int g_Answer = IDYES;
int Answer(const char* text, unsigned type, unsigned) {
    g_Question = text;
    EXPECT_EQ(type, MB_YESNO | MB_ICONQUESTION);
    return g_Answer;
}

TEST(CheckFiles, AsksBeforeEachFileThatExists) {
    TempTree tree;
    tree.File("b");
    const Chaine folder = tree.Path();
    const auto previous = nvk::afx::SetMessageBoxHook(Answer);
    EXPECT_EQ(CheckFiles("", folder, 0), 1);
    EXPECT_EQ(CheckFiles("a\n", folder, 0), 1);
    EXPECT_EQ(CheckFiles("a\nb\n", folder, 0), 0);
    EXPECT_TRUE(g_Question.empty());
    g_Answer = IDYES;
    EXPECT_EQ(CheckFiles("a\nb\n", folder, 1), 1);
    EXPECT_NE(g_Question.find(std::string(folder.c_str()) + "\\b"), std::string::npos);
    g_Answer = IDNO;
    EXPECT_EQ(CheckFiles("b", folder, 1), 0);
    nvk::afx::SetMessageBoxHook(previous);
}

}  // namespace
