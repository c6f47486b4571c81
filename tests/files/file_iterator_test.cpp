// The walk's order, its filters, its flags, the drive mode, and its safety on
// trees with links, odd names and folders it may not read.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "files/drive_kind.h"
#include "files_test_support.h"
#include "nvk/files/file_iterator.h"

namespace {

namespace fs = std::filesystem;
using nvk::files::test::ScopedEnv;
using nvk::files::test::TempTree;
using Names = std::vector<std::string>;

// The entries of a walk, relative to the tree, folders marked with a "/".
Names Walk(FileIterator& walk, const TempTree& tree) {
    Names names;
    const std::string root = tree.Path().c_str();
    for (bool more = walk.GetFirst(tree.Path()); more; more = walk.GetNext()) {
        std::string path = walk.PathName().c_str();
        path = path.substr(root.size() + 1);
        names.push_back(walk.CurrentIsFolder() ? path + "/" : path);
    }
    return names;
}

class FileWalk : public testing::Test {
protected:
    void SetUp() override {
        for (const char* name : {"b.txt", "a.txt", "README", "sub/c.txt", "sub/deep/d.txt",
                                 "Temp/t.txt", "file1.log", "filex.log"}) {
            m_Tree.File(name);
        }
    }
    TempTree m_Tree;
    FileIterator m_Walk;
};

TEST_F(FileWalk, GoesFilesFirstThenFoldersThenBelowEachFolder) {
    EXPECT_EQ(Walk(m_Walk, m_Tree), (Names{"a.txt", "b.txt", "file1.log", "filex.log", "README",
                                           "sub\\c.txt", "sub\\deep\\d.txt", "Temp\\t.txt"}));
    m_Walk.IncludeFolders(false);
    EXPECT_EQ(Walk(m_Walk, m_Tree),
              (Names{"a.txt", "b.txt", "file1.log", "filex.log", "README", "sub/", "Temp/",
                     "sub\\c.txt", "sub\\deep/", "sub\\deep\\d.txt", "Temp\\t.txt"}));
    m_Walk.SetMaxDepth(1);
    EXPECT_EQ(Walk(m_Walk, m_Tree),
              (Names{"a.txt", "b.txt", "file1.log", "filex.log", "README", "sub/", "Temp/",
                     "sub\\c.txt", "sub\\deep/", "Temp\\t.txt"}));
    // GetFiles lists the folders among the files, and closes the walk.
    m_Walk.SetRoot(m_Tree.Path("sub"));
    PTableau<Chaine> files = m_Walk.GetFiles();
    ASSERT_EQ(files.Size(), 3);
    EXPECT_STREQ(files[1], m_Tree.Path("sub/deep"));
    EXPECT_STREQ(m_Walk.FileName(), "");
}

TEST_F(FileWalk, FiltersNamesWithThePatternLanguage) {
    // "*.*" brings "*" along, so a name without a dot passes.
    m_Walk.AddNameInclude("*.*");
    m_Walk.DontRecurse();
    EXPECT_EQ(Walk(m_Walk, m_Tree).size(), 5u);

    m_Walk.ResetFilters();
    m_Walk.SetMaxDepth(-1);
    m_Walk.AddNameInclude("FILE#.LOG");
    EXPECT_EQ(Walk(m_Walk, m_Tree), Names{"file1.log"});
    m_Walk.ResetFilters();
    m_Walk.AddNameInclude("[!b-z].txt");
    EXPECT_EQ(Walk(m_Walk, m_Tree), Names{"a.txt"});

    // A single include without recursion goes to the system's search, with
    // the same result as the walk's own filter on a flat folder.
    m_Walk.ResetFilters();
    m_Walk.DontRecurse();
    m_Walk.AddNameInclude("*.txt");
    Names flat = Walk(m_Walk, m_Tree);
    EXPECT_EQ(flat, (Names{"a.txt", "b.txt"}));
    m_Walk.SetMaxDepth(-1);
    m_Walk.AddNameExclude("[cdt].txt");
    EXPECT_EQ(Walk(m_Walk, m_Tree), flat);
}

TEST_F(FileWalk, PathExclusionStopsASubtreeWhileNameFiltersDoNot) {
    m_Walk.IncludeFolders(true);
    m_Walk.AddNameInclude("*.txt");
    m_Walk.AddPathExclude("*\\Temp");
    EXPECT_EQ(Walk(m_Walk, m_Tree), (Names{"a.txt", "b.txt", "sub\\c.txt", "sub\\deep\\d.txt"}));

    // A path include limits delivery only: the walk still goes through sub.
    m_Walk.ResetFilters();
    m_Walk.IncludeFolders(false);
    m_Walk.AddPathInclude("*\\DEEP");
    EXPECT_EQ(Walk(m_Walk, m_Tree), Names{"sub\\deep\\d.txt"});
}

// A derived class sees the short name that systems keeping one report.
class ShortNames : public FileIterator {
public:
    bool Passes(const char* name, const char* alternate) const {
        return CheckFileName(name, alternate);
    }
};

TEST(FileIteratorNames, TheAlternateNameCanLetAFileThrough) {
    ShortNames names;
    names.AddNameInclude("*.htm");
    EXPECT_TRUE(names.Passes("index.html", "INDEX~1.HTM"));
    EXPECT_FALSE(names.Passes("index.html", ""));
    names.AddNameExclude("INDEX~*");
    EXPECT_FALSE(names.Passes("other.htm", "INDEX~2.HTM"));
}

TEST_F(FileWalk, HiddenFilesAreLeftOutForOneWalkOnly) {
    m_Tree.File(".hidden");
    m_Tree.File(".cache/inside.txt");
    m_Walk.DontRecurse();
    m_Walk.ExcludeHidden();
    EXPECT_EQ(Walk(m_Walk, m_Tree).size(), 5u);
    // The end of the walk cleared the flag; stopping half way does too.
    EXPECT_EQ(Walk(m_Walk, m_Tree).size(), 6u);
    m_Walk.ExcludeHidden();
    ASSERT_TRUE(m_Walk.GetFirst());
    m_Walk.Close();
    EXPECT_EQ(Walk(m_Walk, m_Tree).size(), 6u);
}

// A derived class's check sees each file described in full, as the walk of
// the class itself shows it when asked.
class LargeFiles : public FileIterator {
protected:
    bool CheckFile(const Chaine& path, const nvk::os::WIN32_FIND_DATAA& data) const override {
        return data.nFileSizeLow > 2 && FileIterator::CheckFile(path, data);
    }
};

TEST_F(FileWalk, EntriesAreDescribedInFullWhenAsked) {
    m_Tree.File("big.dat", "12345");
    fs::permissions(m_Tree.Native("big.dat"), fs::perms::owner_read);
    m_Walk.DontRecurse();
    std::map<std::string, nvk::os::DWORD> sizes;
    for (bool more = m_Walk.GetFirst(m_Tree.Path()); more; more = m_Walk.GetNext()) {
        const nvk::os::WIN32_FIND_DATAA data = m_Walk.GetFileInfos();
        sizes[m_Walk.FileName().c_str()] = data.nFileSizeLow;
        if (m_Walk.FileName() == "big.dat") {
            EXPECT_EQ(m_Walk.CurrentAttributes(),
                      nvk::os::FILE_ATTRIBUTE_ARCHIVE | nvk::os::FILE_ATTRIBUTE_READONLY);
            EXPECT_NE(data.ftLastWriteTime.dwLowDateTime | data.ftLastWriteTime.dwHighDateTime, 0u);
        }
    }
    EXPECT_EQ(sizes["big.dat"], 5u);
    EXPECT_EQ(sizes["a.txt"], 1u);
    LargeFiles large;
    large.DontRecurse();
    EXPECT_EQ(Walk(large, m_Tree), (Names{"big.dat"}));
}

// A name ending in a dot, which a search does not find again, is described
// all the same (only a POSIX file system keeps such a name).
TEST_F(FileWalk, ANameEndingInADotIsDescribedToo) {
    m_Tree.File("odd.", "123456");
    m_Walk.DontRecurse();
    std::map<std::string, nvk::os::DWORD> sizes;
    for (bool more = m_Walk.GetFirst(m_Tree.Path()); more; more = m_Walk.GetNext()) {
        sizes[m_Walk.FileName().c_str()] = m_Walk.GetFileInfos().nFileSizeLow;
    }
    EXPECT_EQ(sizes["odd."], 6u);
    LargeFiles large;
    large.DontRecurse();
    EXPECT_EQ(Walk(large, m_Tree), (Names{"odd."}));
}

TEST(FileIteratorDrives, TheKindsTakeTheDrivesOfTheTable) {
    using namespace nvk::os;
    const Chaine hard = "<HardDrives>", local = "<LocalDrives>", any = "<Other>";
    for (UINT type : {DRIVE_UNKNOWN, DRIVE_NO_ROOT_DIR}) {
        EXPECT_FALSE(nvk::files::DriveOfKind(any, type));
    }
    for (UINT type : {DRIVE_FIXED, UINT{7}}) {
        EXPECT_TRUE(nvk::files::DriveOfKind(hard, type));
    }
    for (UINT type : {DRIVE_REMOVABLE, DRIVE_CDROM, DRIVE_RAMDISK}) {
        EXPECT_FALSE(nvk::files::DriveOfKind(hard, type));
        EXPECT_TRUE(nvk::files::DriveOfKind(local, type));
    }
    EXPECT_FALSE(nvk::files::DriveOfKind(local, DRIVE_REMOTE));
    EXPECT_TRUE(nvk::files::DriveOfKind(any, DRIVE_REMOTE));
}

TEST(FileIteratorDrives, WalksTheMappedDrives) {
    TempTree tree;
    tree.File("c/one.txt");
    tree.File("d/sub/two.txt");
    ScopedEnv drives("NVK_DRIVES", "C=" + tree.Native("c") + ";D=" + tree.Native("d") + ";Z=");
    FileIterator walk;
    walk.IncludeFolders(false);
    PTableau<Chaine> found;
    for (bool more = walk.GetFirst("<HardDrives>"); more; more = walk.GetNext()) {
        found.Add(walk.PathName());
    }
    ASSERT_EQ(found.Size(), 5);
    EXPECT_STREQ(found[0], "C:\\");
    EXPECT_STREQ(found[1], "D:\\");
    EXPECT_STREQ(found[2], "C:\\one.txt");
    EXPECT_STREQ(found[4], "D:\\sub\\two.txt");
    walk.DontRecurse();
    EXPECT_FALSE(walk.GetFirst());
}

TEST(FileIteratorSafety, NeverGoesThroughALink) {
    TempTree outside;
    outside.File("precious.txt");
    TempTree tree;
    tree.File("sub/a.txt");
    fs::create_directory_symlink(outside.Native(), tree.Native("sub/out"));
    fs::create_directory_symlink(tree.Native(), tree.Native("sub/loop"));
    fs::create_symlink(outside.Native("precious.txt"), tree.Native("file-link"));
    FileIterator walk;
    walk.IncludeFolders(false);
    EXPECT_EQ(Walk(walk, tree),
              (Names{"file-link", "sub/", "sub\\a.txt", "sub\\loop/", "sub\\out/"}));
}

TEST(FileIteratorSafety, OddNamesAndUnreadableFoldersEndTheWalkCleanly) {
    TempTree tree;
    const std::string longName(255, 'n');
    tree.File("bad\xff\xfe.txt");
    tree.File(longName);
    tree.File("locked/secret.txt");
    std::string deep;  // deep, yet short enough for every system
    for (int i = 0; i < 30; ++i) {
        deep += std::to_string(i) + "/";
    }
    tree.File(deep + "far.txt");
    fs::permissions(tree.Native("locked"), fs::perms::none);
    std::error_code readable;
    fs::directory_iterator probe(tree.Native("locked"), readable);

    FileIterator walk;
    Names names = Walk(walk, tree);
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names[0], "bad\xff\xfe.txt");
    EXPECT_NE(std::find(names.begin(), names.end(), longName), names.end());
    std::string far = deep + "far.txt";
    std::replace(far.begin(), far.end(), '/', '\\');
    EXPECT_NE(std::find(names.begin(), names.end(), far), names.end());
    if (readable) {
        EXPECT_EQ(std::find(names.begin(), names.end(), "locked\\secret.txt"), names.end());
    }
}

// Paths longer than MAX_PATH, which Windows' ANSI calls refuse.
TEST(FileIteratorSafety, WalksPathsLongerThanMaxPath) {
    TempTree tree;
    std::string deep;
    for (int i = 0; i < 30; ++i) {
        deep += "folder_of_a_long_name_" + std::to_string(i) + "/";
    }
    tree.File(deep + "far.txt");
    FileIterator walk;
    Names names = Walk(walk, tree);
    std::string far = deep + "far.txt";
    std::replace(far.begin(), far.end(), '/', '\\');
    EXPECT_NE(std::find(names.begin(), names.end(), far), names.end());
}

}  // namespace
