// Backups, copies, deletions and sizes of trees, on trees the library did not
// make: links out of the tree, read-only files, folders in the way.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "files_test_support.h"
#include "nvk/files/file_operations.h"

namespace {

namespace fs = std::filesystem;
using nvk::files::test::TempTree;

TEST(BackupFile, RotatesItsNumberedCopies) {
    TempTree tree;
    const Chaine file = tree.Path("data.dat");
    EXPECT_EQ(BackupFile(file, 0, 3), 1);  // nothing to back up yet
    for (int round = 0; round < 4; ++round) {
        tree.File("data.dat", "v" + std::to_string(round));
        ASSERT_EQ(BackupFile(file, 0, 3), 1);
    }
    EXPECT_EQ(tree.Read("data.dat.0.bak"), "v1");
    EXPECT_EQ(tree.Read("data.dat.1.bak"), "v2");
    EXPECT_EQ(tree.Read("data.dat.2.bak"), "v3");
    EXPECT_FALSE(tree.Exists("data.dat.3.bak"));
    EXPECT_EQ(BackupFile(file, 0, 0), 1);

    // Bit 0: the copies go to "Backups" beside the file, and rotate there.
    for (int round = 0; round < 3; ++round) {
        tree.File("data.dat", "b" + std::to_string(round));
        ASSERT_EQ(BackupFile(file, 1, 2), 1);
    }
    EXPECT_EQ(tree.Read("Backups/data.dat.0.bak"), "b1");
    EXPECT_EQ(tree.Read("Backups/data.dat.1.bak"), "b2");
    // A copy that can't be removed stops the rotation.
    fs::remove(tree.Native("Backups/data.dat.0.bak"));
    tree.Folder("Backups/data.dat.0.bak/held");
    EXPECT_EQ(BackupFile(file, 1, 1), 0);
}

TEST(CopyDirectory, CopiesATreeAndStopsWhereTheTargetIsInTheWay) {
    TempTree tree;
    tree.File("from/a.txt", "a");
    tree.File("from/sub/b.txt", "b");
    tree.File("from/_SGVAULT/kept.txt");
    tree.File("from/.hidden/c.txt", "c");
    tree.Folder("to");
    ASSERT_EQ(CopyDirectory(tree.Path("from"), tree.Path("to"), 1), 1);
    EXPECT_EQ(tree.Read("to/sub/b.txt"), "b");
    EXPECT_EQ(tree.Read("to/.hidden/c.txt"), "c");
    EXPECT_TRUE(tree.Exists("to/_SGVAULT/kept.txt"));  // visible, so copied

    // failIfExists holds at the top: a second copy fails on a.txt ...
    EXPECT_EQ(CopyDirectory(tree.Path("from"), tree.Path("to"), 1), 0);
    // ... and without it, on the first subfolder that exists already.
    EXPECT_EQ(CopyDirectory(tree.Path("from"), tree.Path("to"), 0), 0);
    EXPECT_EQ(CopyDirectory("", tree.Path("to"), 0), 0);
    EXPECT_EQ(CopyDirectory(tree.Path("missing"), tree.Path("to"), 0), 0);
}

TEST(CopyFiles, CopiesTheMatchesOverTheirTargets) {
    TempTree tree;
    tree.File("from/a.x", "new");
    tree.File("from/b.y");
    tree.File("to/a.x", "old");
    EXPECT_EQ(CopyFiles("*.z", tree.Path("from"), tree.Path("to")), 1);
    EXPECT_EQ(CopyFiles("*.x", tree.Path("from"), tree.Path("to")), 1);
    EXPECT_EQ(tree.Read("to/a.x"), "new");
    EXPECT_FALSE(tree.Exists("to/b.y"));
    EXPECT_EQ(CopyFiles("", tree.Path("from"), tree.Path("to")), 0);
    EXPECT_EQ(CopyFiles("*.x", "", ""), 0);
}

TEST(DelTree, EmptiesOrRemovesATreeWithReadOnlyFiles) {
    TempTree tree;
    tree.File("p/a.txt");
    tree.File("p/sub/deep/b.txt");
    fs::permissions(tree.Native("p/sub/deep/b.txt"), fs::perms::owner_read);
    EXPECT_EQ(DelTree(tree.Path("p") + "\\", false), 1);
    EXPECT_TRUE(fs::is_empty(tree.Native("p")));
    EXPECT_EQ(DelTree(tree.Path("p"), true), 1);
    EXPECT_FALSE(tree.Exists("p"));
    EXPECT_EQ(DelTree(tree.Path("p"), false), 1);
    EXPECT_EQ(DelTree(tree.Path("p"), true), 0);
    EXPECT_EQ(DelTree("", true), 0);
}

TEST(TreeSafety, LinksAreCopiedAndRemovedAsLinksAndNeverCounted) {
    TempTree outside;
    outside.File("precious/keep.txt", "12345");
    fs::permissions(outside.Native("precious/keep.txt"), fs::perms::owner_read);
    TempTree tree;
    tree.File("p/a.txt", "abc");
    tree.File("p/bad\xff\xfe/" + std::string(255, 'n'));  // not UTF-8, longest name
    fs::create_directory_symlink(outside.Native("precious"), tree.Native("p/out"));
    fs::create_directory_symlink(tree.Native("p"), tree.Native("p/loop"));
    fs::create_symlink(outside.Native("precious/keep.txt"), tree.Native("p/file-link"));

    EXPECT_EQ(GetDirectorySize(tree.Path("p")), 4u);
    tree.Folder("copy");
    ASSERT_EQ(CopyDirectory(tree.Path("p"), tree.Path("copy"), 1), 1);
    EXPECT_TRUE(fs::is_symlink(tree.Native("copy/out")));
    EXPECT_TRUE(fs::is_symlink(tree.Native("copy/loop")));
    // An earlier build's raw name is copied under its UTF-8 form.
    EXPECT_EQ(tree.Read("copy/bad\xc3\xbf\xc3\xbe/" + std::string(255, 'n')), "x");
    EXPECT_EQ(fs::read_symlink(tree.Native("copy/file-link")),
              fs::path(outside.Native("precious/keep.txt")));

    EXPECT_EQ(DelTree(tree.Path("p"), true), 1);
    EXPECT_EQ(DelTree(tree.Path("copy"), true), 1);
    EXPECT_EQ(outside.Read("precious/keep.txt"), "12345");
    // The target's read-only bit was left alone too.
    EXPECT_EQ(
        fs::status(outside.Native("precious/keep.txt")).permissions() & fs::perms::owner_write,
        fs::perms::none);
}

TEST(GetDirectorySize, AddsTheLowHalvesOfAllSizes) {
    TempTree tree;
    tree.File("a", std::string(1000, 'a'));
    tree.File("s/b", std::string(24, 'b'));
    EXPECT_EQ(GetDirectorySize(tree.Path()), 1024u);
    EXPECT_EQ(GetDirectorySize(tree.Path("missing")), 0u);
    // 4 GiB and 16 bytes, sparse: its low half is 16.
    fs::resize_file(tree.Native("a"), (1ULL << 32) + 16);
    EXPECT_EQ(GetDirectorySize(tree.Path()), 40u);
    EXPECT_EQ(GetLongFileSize(tree.Path("a")), (1ULL << 32) + 16);
    EXPECT_EQ(GetFileSize(tree.Path("a")), 16u);
}

}  // namespace
