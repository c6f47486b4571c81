// The engine behind EZipCmd: what its functions and flags do to an archive,
// its temporary file, its callbacks and its log. Archives are read back with
// Python's zipfile, a reader of its own.
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "zip_test_support.h"

namespace {

using nvk::ziptest::Python;
using nvk::ziptest::RootedZip;
using nvk::ziptest::Scratch;

std::string Names(std::string const& archive) {
    return Python(archive, "\" \".join(sorted(z.namelist()))").text;
}

void Age(std::string const& path, int hours) {
    std::filesystem::last_write_time(
        path, std::filesystem::last_write_time(path) - std::chrono::hours(hours));
}

TEST(ZipEngine, FreshenUpdateAndDeleteChangeTheEntriesTheyShould) {
    Scratch scratch;
    std::string a = scratch.Put("d/a.txt", "old a");
    std::string b = scratch.Put("d/b.txt", "old b");
    Age(a, 48);
    Age(b, 48);
    std::string archive = scratch / "x.zip";
    RootedZip add(archive, "\"" + a + "\" \"" + b + "\"", scratch.str());
    ASSERT_EQ(add.dzip(), 0);

    scratch.Put("d/a.txt", "new a");
    std::string c = scratch.Put("d/c.txt", "c");
    std::string all = "\"" + (scratch / "d/*.txt") + "\"";
    RootedZip freshen(archive, all, scratch.str());
    freshen.function = ZIP_FRESHEN;
    ASSERT_EQ(freshen.dzip(), 0);
    EXPECT_EQ(Names(archive), "d/a.txt d/b.txt\n");
    EXPECT_EQ(Python(archive, "z.read(\"d/a.txt\")").text, "b'new a'\n");

    scratch.Put("d/b.txt", "new b");
    Age(b, 72);  // older than its entry: update leaves it
    RootedZip update(archive, all, scratch.str());
    update.function = ZIP_UPDATE;
    ASSERT_EQ(update.dzip(), 0);
    EXPECT_EQ(Names(archive), "d/a.txt d/b.txt d/c.txt\n");
    EXPECT_EQ(Python(archive, "z.read(\"d/b.txt\")").text, "b'old b'\n");

    EZipCmd remove(archive.c_str(), "d/b.txt \"d/?.txt\"");
    remove.function = ZIP_DELETE;
    ASSERT_EQ(remove.dzip(), 0);
    EXPECT_FALSE(std::filesystem::exists(archive));  // the last entry took the archive
    EXPECT_EQ(remove.dzip(), ZE_OPEN);
}

TEST(ZipEngine, FlagsChooseTheFilesTheirNamesAndTheirMethod) {
    Scratch scratch;
    scratch.Put("d/keep.dat", std::string(5000, 'k'));
    scratch.Put("d/photo.JPG", std::string(5000, 'p'));
    scratch.Put("d/skip.tmp", "t");
    scratch.Put("d/sub/deep.dat", std::string(5000, 'd'));
    scratch.Put("d/.hidden.dat", "h");
    Age(scratch.Put("d/sub/old.dat", "o"), 24 * 400);
    std::string archive = scratch / "x.zip";
    RootedZip command(archive, "\"" + (scratch / "d") + "\"", scratch.str());
    command.recurseFlag = 1;
    command.excludeFollowingFlag = 1;
    command.lpszExludeFollowing = const_cast<char*>("*.tmp");
    command.dontCompressTheseSuffixesFlag = 1;
    command.lpszStoreSuffixes = const_cast<char*>(".zip:.jpg");
    command.afterDateFlag = 1;
    std::time_t monthAgo = std::time(nullptr) - 30 * 86400;
    std::tm local = *std::localtime(&monthAgo);
    char after[40];
    std::snprintf(after, sizeof(after), "%02d%02d%04d", local.tm_mon + 1, local.tm_mday,
                  local.tm_year + 1900);
    command.lpszDate = after;
    ASSERT_EQ(command.dzip(), 0);
    EXPECT_EQ(Names(archive), "d/ d/keep.dat d/photo.JPG d/sub/ d/sub/deep.dat\n");
    EXPECT_EQ(Python(archive,
                     "z.getinfo(\"d/keep.dat\").compress_type, "
                     "z.getinfo(\"d/photo.JPG\").compress_type")
                  .text,
              "8 0\n");

    std::string flat = scratch / "flat.zip";
    EZipCmd junk(flat.c_str(), ("\"" + (scratch / "d") + "\"").c_str());
    junk.recurseFlag = 1;
    junk.noDirectoryNamesFlag = 1;
    junk.includeSysHiddenFlag = 1;
    junk.includeOnlyFollowingFlag = 1;
    junk.lpszIncludeFollowing = const_cast<char*>("*.dat");
    junk.compFactor = 0;
    ASSERT_EQ(junk.dzip(), 0);
    EXPECT_EQ(Names(flat), ".hidden.dat deep.dat keep.dat old.dat\n");
    EXPECT_EQ(Python(flat, "set(i.compress_type for i in z.infolist())").text, "{0}\n");
}

// Watches the scratch folders while the engine writes.
struct Watch {
    std::string tempFolder;
    std::string archiveFolder;
    std::set<std::string> seenInTemp;
    std::size_t filesBesideArchive = 0;
    std::vector<unsigned long> major;
    std::vector<unsigned long> minor;
    bool abort = false;
};

int WatchMinor(char*, unsigned long percent, void* data) {
    Watch& watch = *static_cast<Watch*>(data);
    watch.minor.push_back(percent);
    for (auto const& entry : std::filesystem::directory_iterator(watch.tempFolder)) {
        watch.seenInTemp.insert(entry.path().filename().string());
    }
    std::size_t files = 0;
    for (auto const& entry : std::filesystem::directory_iterator(watch.archiveFolder)) {
        files += entry.is_regular_file() ? 1 : 0;
    }
    watch.filesBesideArchive = std::max(watch.filesBesideArchive, files);
    return watch.abort ? 1 : 0;
}

int WatchMajor(char*, unsigned long percent, void* data) {
    static_cast<Watch*>(data)->major.push_back(percent);
    return 0;
}

TEST(ZipEngine, WritesInTheTemporaryFolderAndMovesTheArchiveIntoPlace) {
    Scratch scratch;
    Scratch temp;
    std::filesystem::create_directories(scratch / "out");
    std::string archive = scratch / "out/x.zip";
    std::string items = "\"" + scratch.Put("d/a.dat", std::string(300000, 'a')) + "\" \"" +
                        scratch.Put("d/b.dat", "b") + "\"";
    Watch watch;
    watch.tempFolder = temp.str();
    watch.archiveFolder = scratch / "out";
    RootedZip command(archive, items, scratch.str());
    command.lpszTempPath = const_cast<char*>(temp.str().c_str());
    command.lpMinorStatus = WatchMinor;
    command.lpMinorUserData = &watch;
    command.lpMajorStatus = WatchMajor;
    command.lpMajorUserData = &watch;
    ASSERT_EQ(command.dzip(), 0);
    EXPECT_EQ(watch.seenInTemp.size(), 1u);
    EXPECT_EQ(watch.filesBesideArchive, 0u);
    EXPECT_TRUE(std::filesystem::is_empty(temp.str()));
    EXPECT_EQ(watch.major.back(), 100u);
    EXPECT_EQ(watch.minor.back(), 100u);

    // A failed or stopped run leaves the old archive as it was, byte for
    // byte, and no file behind.
    auto bytes = [&archive] {
        std::ifstream in(archive, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    const std::string before = bytes();
    watch.abort = true;
    scratch.Put("d/b.dat", "changed");
    EXPECT_EQ(command.dzip(), ZE_ABORTED);
    EXPECT_TRUE(std::filesystem::is_empty(temp.str()));
    command.lpszTempPath = const_cast<char*>("/nonexistent/folder");
    watch.abort = false;
    EXPECT_EQ(command.dzip(), ZE_TEMP);
    EXPECT_EQ(bytes(), before);
}

// Records what the engine asks of the front-end.
class Recording : public RootedZip {
public:
    using RootedZip::RootedZip;
    int DisplayMessage(unsigned kind, unsigned x, int id, int y, char* buffer, char* z) override {
        asked.insert(id);
        return RootedZip::DisplayMessage(kind, x, id, y, buffer, z);
    }
    std::set<int> asked;
};

TEST(ZipEngine, AsksTheFrontEndForItsTextsAndWritesItsLog) {
    Scratch scratch;
    std::string file = scratch.Put("d/a.dat", "a");
    std::string archive = scratch / "x.zip";
    Recording command(archive, "\"" + file + "\" \"" + (scratch / "missing.dat") + "\"",
                      scratch.str());
    command.wZipSubOptions |= ZSO_LOGZIPTOFILE;
    command.quietFlag = 0;  // warnings are asked for only to be shown
    ASSERT_EQ(command.dzip(), 0);
    for (int id : {132, 150, 155, 391, 701, 702, 703}) {
        EXPECT_TRUE(command.asked.contains(id)) << id;
    }
    std::ifstream log(scratch / "DZIPLOG.TXT", std::ios::binary);
    std::stringstream text;
    text << log.rdbuf();
    EXPECT_TRUE(text.str().starts_with("--- DynaZIP ZIP Log - ")) << text.str();
    EXPECT_NE(text.str().find("---\r\nd/a.dat [Added]\r\n"), std::string::npos) << text.str();
}

TEST(ZipEngine, WritesAMemoryBlockUnderItsAnsiName) {
    Scratch scratch;
    std::string archive = scratch / "x.zip";
    EZipCmd memory(archive.c_str(), "\"mem/\xE9t\xE9.txt\"");
    std::string block = "from memory";
    memory.function = ZIP_MEMTOFILE;
    memory.lpMemBlock = block.data();
    memory.lMemBlockSize = static_cast<std::int32_t>(block.size());
    ASSERT_EQ(memory.dzip(), 0);
    EXPECT_EQ(Python(archive, "z.read(\"mem/\xC3\xA9t\xC3\xA9.txt\")").text, "b'from memory'\n");
}

TEST(ZipEngine, BadCommandsGiveTheirReturnCodes) {
    Scratch scratch;
    std::string file = scratch.Put("a.dat", "a");
    EXPECT_EQ(EZipCmd((scratch / "x.zip").c_str(), (scratch / "none*").c_str()).dzip(), ZE_NONE);
    EXPECT_EQ(EZipCmd("", file.c_str()).dzip(), ZE_NAME);
    EZipCmd noPassword((scratch / "x.zip").c_str(), file.c_str());
    noPassword.encryptFlag = 1;
    EXPECT_EQ(noPassword.dzip(), ZE_PARMS);
    EZipCmd badLevel((scratch / "x.zip").c_str(), file.c_str());
    badLevel.compFactor = 10;
    EXPECT_EQ(badLevel.dzip(), ZE_PARMS);
    EZipCmd notZip(file.c_str(), file.c_str());
    EXPECT_EQ(notZip.dzip(), ZE_FORM);
    EXPECT_FALSE(std::filesystem::exists(scratch / "x.zip"));
}

}  // namespace
