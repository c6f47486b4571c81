// The unzip engine on archives from elsewhere: what common writers make, and
// what an attacker or a broken disk makes.
#include <cstring>
#include <string>
#include <vector>

#include "nvk/archive/unzip_engine.h"
#include "unzip_support.h"

namespace {

using namespace unzip_test;
using namespace nvk::unzip;

bool Have(const char* program) {
    return std::system((std::string("command -v ") + program + " >/dev/null").c_str()) == 0;
}

void Shell(const fs::path& folder, const std::string& command) {
    ASSERT_EQ(std::system(("cd '" + folder.string() + "' && " + command).c_str()), 0) << command;
}

TEST(UnzipReaders, InfoZipArchivesWithFoldersPasswordsAndComments) {
    if (!Have("zip")) {
        GTEST_SKIP() << "no Info-ZIP zip";
    }
    Scratch s;
    Shell(s.Path(),
          "mkdir -p in/dir && seq 1 20000 > in/dir/big.txt && echo small > in/small.txt && "
          "cd in && zip -qr -0 ../stored.zip . && zip -qr -9 ../deflated.zip . && "
          "zip -qr -P Secret ../locked.zip . && "
          "printf 'Commentaire \\303\\251t\\303\\251' | zip -qz ../deflated.zip");
    const std::string big = Read(s / "in/dir/big.txt");
    for (const char* name : {"stored", "deflated"}) {
        Command command(s / (std::string(name) + ".zip"), s / name);
        ASSERT_EQ(command.dunzip(), 0) << name;
        EXPECT_EQ(Read(s / name / "dir/big.txt"), big);
        EXPECT_EQ(Read(s / name / "small.txt"), "small\n");
    }
    Command comment(s / "deflated.zip", s.Path());
    comment.function = kCommentSize;
    ASSERT_EQ(comment.dunzip(), 0);
    std::string text(static_cast<std::size_t>(comment.returnCount) + 1, '\0');
    comment.function = kComment;
    comment.lpszReturnString = text.data();
    ASSERT_EQ(comment.dunzip(), 0);
    EXPECT_STREQ(text.c_str(), "Commentaire \xe9t\xe9");

    Command locked(s / "locked.zip", s / "locked");
    EXPECT_EQ(locked.dunzip(), kUnzipEncrypted);
    locked.decryptFlag = 1;
    char wrong[] = "Wrong";
    locked.lpszDecryptCode = wrong;
    EXPECT_EQ(locked.function = kTestNamed, kTestNamed);
    // The encryption header checks one byte: one wrong password in 256 gets
    // past it, and the member then fails as damaged data of whatever kind.
    EXPECT_NE(locked.dunzip(), 0);
    char right[] = "Secret";
    locked.lpszDecryptCode = right;
    locked.function = kExtract;
    ASSERT_EQ(locked.dunzip(), 0);
    EXPECT_EQ(Read(s / "locked/dir/big.txt"), big);
    EXPECT_FALSE(fs::exists(s / "locked/DUNZLOG.TXT"));
}

TEST(UnzipReaders, AesMembersAndMemberInformation) {
    if (!Have("7zz")) {
        GTEST_SKIP() << "no 7zz";
    }
    Scratch s;
    Shell(s.Path(), "echo secret > a.txt && 7zz a -bso0 -tzip -mem=AES256 -pClef aes.zip a.txt");
    Command command(s / "aes.zip", s / "out");
    command.decryptFlag = 1;
    char password[] = "Clef";
    command.lpszDecryptCode = password;
    command.wUnzipSubOptions = kUnzipLogOperations;
    ASSERT_EQ(command.dunzip(), 0);
    EXPECT_EQ(Read(s / "out/a.txt"), "secret\n");
    std::string log = Read(s / "out/DUNZLOG.TXT");
    EXPECT_EQ(log.rfind("--- DynaZIP UnZIP Log - ", 0), 0u) << log;
    EXPECT_NE(log.find("a.txt [Extracted]\r\n"), std::string::npos) << log;

    UnzipMemberInfo info{};
    command.zInfo = &info;
    command.function = kIndexedInfo;
    command.index = 0;
    ASSERT_EQ(command.dunzip(), 0);
    EXPECT_STREQ(info.szFileName, "a.txt");
    EXPECT_EQ(info.uncompressedSize, 7u);
    EXPECT_EQ(info.encryption, 4u);
    command.index = 1;
    EXPECT_EQ(command.dunzip(), kUnzipBadIndex);
}

TEST(UnzipReaders, PythonArchivesWithAPreambleAndZip64) {
    Scratch s;
    Python(
        s.Path(),
        "with z.ZipFile('p.zip', 'w', z.ZIP_DEFLATED) as a:\n"
        "    a.writestr('d\\u00e9j\\u00e0/f.txt', 'abc' * 1000)\n"
        "open('pre.zip', 'wb').write(b'#!/bin/sh\\nexit 0\\n' * 50 + open('p.zip', 'rb').read())\n"
        "with z.ZipFile('many.zip', 'w') as a:\n"
        "    for i in range(65600): a.writestr('e%d' % i, '')\n");
    Command prefixed(s / "pre.zip", s / "pre");
    ASSERT_EQ(prefixed.dunzip(), 0);
    EXPECT_EQ(Read(s / "pre/d\xc3\xa9j\xc3\xa0/f.txt").size(), 3000u);
    Command offset(s / "pre.zip", s / "offset");
    offset.lStartingOffset = 17 * 50;
    ASSERT_EQ(offset.dunzip(), 0);
    // The library's text of a member name is Windows-1252.
    UnzipMemberInfo info{};
    offset.zInfo = &info;
    offset.function = kNextInfo;
    // A function that doesn't work on items runs once more for each batch of
    // items it is given: the walk takes none.
    offset.lpszFilespec = nullptr;
    ASSERT_EQ(offset.dunzip(), 0);
    EXPECT_STREQ(info.szFileName, "d\xe9j\xe0/f.txt");
    EXPECT_EQ(offset.index, 1);

    Command many(s / "many.zip", s.Path(), "e655*");
    many.function = kCountAll;
    ASSERT_EQ(many.dunzip(), 0);
    EXPECT_EQ(many.returnCount, 65600);
    many.function = kCountNamed;
    ASSERT_EQ(many.dunzip(), 0);
    EXPECT_EQ(many.returnCount, 111);  // e655, e6550-e6559, e65500-e65599
}

// Names that leave the destination, links, and a pre-existing link.
TEST(UnzipSafety, NothingIsWrittenOutsideTheDestination) {
    Scratch s;
    fs::create_directories(s / "outside");
    fs::create_directories(s / "dest");
    fs::create_directory_symlink(s / "outside", s / "dest/trap");
    Python(s.Path(),
           "with z.ZipFile('evil.zip', 'w') as a:\n"
           "    for n in ['../up.txt', '/abs.txt', 'C:/drive.txt', 'a/../../up2.txt',\n"
           "              'trap/through.txt', 'ok/good.txt']:\n"
           "        a.writestr(n, 'x')\n"
           "    i = z.ZipInfo('link'); i.create_system = 3\n"
           "    i.external_attr = 0o120777 << 16\n"
           "    a.writestr(i, '/etc/passwd')\n");
    Command command(s / "evil.zip", s / "dest");
    EXPECT_EQ(command.dunzip(), kUnzipSkipped);
    EXPECT_EQ(Read(s / "dest/ok/good.txt"), "x");
    EXPECT_TRUE(fs::is_empty(s / "outside"));
    EXPECT_FALSE(fs::exists(s / "up.txt"));
    EXPECT_FALSE(fs::exists(s / "up2.txt"));
    EXPECT_FALSE(fs::exists(s / "dest/link"));
    EXPECT_FALSE(fs::exists(fs::path("/abs.txt")));
}

TEST(UnzipSafety, BombsStopAtTheLimitsAndLeaveNoFile) {
    Scratch s;
    Python(s.Path(),
           "with z.ZipFile('bomb.zip', 'w', z.ZIP_DEFLATED) as a:\n"
           "    a.writestr('zeros', bytes(8 << 20))\n");
    for (int limit : {1, 2}) {
        Command command(s / "bomb.zip", s / "dest");
        (limit == 1 ? command.lResv1 : command.lResv2) = 1 + (limit == 2 ? 9 : 0);
        EXPECT_EQ(command.dunzip(), kUnzipAborted);
        EXPECT_TRUE(fs::is_empty(s / "dest"));
    }
    Command memory(s / "bomb.zip", s.Path());
    memory.function = kFileToMemory;
    std::vector<char> block(1 << 20);
    memory.lpMemBlock = block.data();
    memory.lMemBlockSize = static_cast<nvk::os::LONG>(block.size());
    EXPECT_EQ(memory.dunzip(), kUnzipNoMemory);
    Command whole(s / "bomb.zip", s / "dest");
    EXPECT_EQ(whole.dunzip(), 0);
    EXPECT_EQ(fs::file_size(s / "dest/zeros"), 8u << 20);
}

TEST(UnzipSafety, DamagedArchivesGiveTheirCodes) {
    Scratch s;
    Python(s.Path(),
           "import random\n"
           "r = random.Random(1)\n"
           "with z.ZipFile('a.zip', 'w', z.ZIP_DEFLATED) as a:\n"
           "    a.writestr('f', bytes(r.randrange(50) for _ in range(200000)))\n"
           "d = open('a.zip', 'rb').read()\n"
           "open('cut.zip', 'wb').write(d[:len(d) // 2])\n"
           "open('tail.zip', 'wb').write(d[:len(d) - 30])\n"
           "b = bytearray(d); b[5000] ^= 0xFF\n"
           "open('bad.zip', 'wb').write(b)\n"
           "open('empty.zip', 'wb').write(b'')\n");
    for (const char* name : {"cut.zip", "tail.zip", "empty.zip", "bad.zip"}) {
        Command command(s / name, s / "dest");
        command.function = kTestNamed;
        int code = command.dunzip();
        EXPECT_TRUE(code == kUnzipBadStructure || code == kUnzipUnexpectedEnd ||
                    code == kUnzipBadCrc)
            << name << ": " << code;
        EXPECT_FALSE(fs::exists(s / "dest/f")) << name;
    }
    Command missing(s / "none.zip", s / "dest");
    EXPECT_EQ(missing.dunzip(), kUnzipNothingFound);
}

TEST(UnzipFlags, OverwriteFreshenAndUpdate) {
    Scratch s;
    Python(s.Path(),
           "with z.ZipFile('a.zip', 'w') as a:\n"
           "    a.writestr(z.ZipInfo('old.txt', (2001, 1, 1, 0, 0, 0)), 'archive')\n"
           "    a.writestr(z.ZipInfo('new.txt', (2001, 1, 1, 0, 0, 0)), 'archive')\n"
           "os.makedirs('d'); open('d/old.txt', 'w').write('disk')\n"
           "os.utime('d/old.txt', (0, 0))\n");
    Command keep(s / "a.zip", s / "d");
    ASSERT_EQ(keep.dunzip(), 0);
    EXPECT_EQ(Read(s / "d/old.txt"), "disk");
    fs::remove(s / "d/new.txt");
    Command freshen(s / "a.zip", s / "d");
    freshen.freshenFlag = 1;
    ASSERT_EQ(freshen.dunzip(), 0);
    EXPECT_EQ(Read(s / "d/old.txt"), "archive");
    EXPECT_FALSE(fs::exists(s / "d/new.txt"));
    Command update(s / "a.zip", s / "d");
    update.updateFlag = 1;
    ASSERT_EQ(update.dunzip(), 0);
    EXPECT_EQ(Read(s / "d/new.txt"), "archive");
    std::ofstream(s / "d/new.txt") << "changed";
    Command overwrite(s / "a.zip", s / "d", "new.txt");
    overwrite.overWriteFlag = 1;
    ASSERT_EQ(overwrite.dunzip(), 0);
    EXPECT_EQ(Read(s / "d/new.txt"), "archive");
}

}  // namespace

namespace {

// Moves a.txt into a folder, skips b.txt, and sends c.txt out of the
// destination, which the engine refuses.
int Rename(void* record, void*) {
    auto& rename = *static_cast<nvk::unzip::UnzipRenameRecord*>(record);
    std::string source = rename.szSourceName;
    if (source == "dir/b.txt") {
        return 1;
    }
    std::strcpy(rename.szNewName, source == "dir/a.txt" ? "moved\\a.txt" : "..\\c.txt");
    return 0;
}

TEST(UnzipFlags, RenamingAndFlatExtraction) {
    Scratch s;
    Python(s.Path(),
           "with z.ZipFile('a.zip', 'w') as a:\n"
           "    for n in 'abc': a.writestr('dir/%s.txt' % n, n)\n");
    Command renamed(s / "a.zip", s / "r");
    renamed.lpRenameProc = Rename;
    EXPECT_EQ(renamed.dunzip(), nvk::unzip::kUnzipSkipped);
    EXPECT_EQ(Read(s / "r/moved/a.txt"), "a");
    EXPECT_FALSE(fs::exists(s / "r/dir"));
    EXPECT_FALSE(fs::exists(s / "c.txt"));

    Command flat(s / "a.zip", s / "f", "dir/b.txt");
    flat.noDirectoryNamesFlag = 1;
    ASSERT_EQ(flat.dunzip(), 0);
    EXPECT_EQ(Read(s / "f/b.txt"), "b");
}

}  // namespace
