// The unzip engine on archives from elsewhere: what common writers make, and
// what an attacker or a broken disk makes.
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include "nvk/archive/unzip_engine.h"
#include "unzip_support.h"

#ifdef _WIN32
// Last: its macros (DELETE, ...) would clash with the OS layer's names.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <winioctl.h>
#endif

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

// Names that leave the destination, some only where a path loses the trailing
// dots and spaces of its names (Windows), and a link member.
TEST(UnzipSafety, NothingIsWrittenOutsideTheDestination) {
    Scratch s;
    fs::create_directories(s / "dest");
    std::vector<Member> members;
    for (const char* name :
         {"../up.txt", "/abs.txt", "C:/drive.txt", "a/../../up2.txt", "ok/good.txt", "..\\up3.txt",
          ".. /up4.txt", "a/.. /.. /up5.txt", "a/.../up6.txt", ".. "}) {
        members.push_back({name, "x"});
    }
    members.push_back({"link", "/etc/passwd", Member{}.DosDate, 3, 0120777u << 16});
    WriteStored(s / "evil.zip", members);
    Command command(s / "evil.zip", s / "dest");
    EXPECT_EQ(command.dunzip(), kUnzipSkipped);
    EXPECT_EQ(Read(s / "dest/ok/good.txt"), "x");
    EXPECT_FALSE(fs::exists(s / "up.txt"));
    EXPECT_FALSE(fs::exists(s / "up2.txt"));
    EXPECT_FALSE(fs::exists(s / "up3.txt"));
    EXPECT_FALSE(fs::exists(s / "up4.txt"));
    EXPECT_FALSE(fs::exists(s / "up5.txt"));
    EXPECT_FALSE(fs::exists(s / "up6.txt"));
    EXPECT_FALSE(fs::exists(s / "dest/link"));
    EXPECT_FALSE(fs::exists(fs::path("/abs.txt")));
    // No temporary file is left behind.
    for (const auto& entry : fs::recursive_directory_iterator(s / "dest")) {
        EXPECT_NE(entry.path().filename().string().rfind(".dunzip", 0), 0u) << entry.path();
    }
}

// A link that is already in the destination is never gone through, neither
// as a folder of a member's path nor as the member itself.
TEST(UnzipSafety, APreExistingLinkIsNotGoneThrough) {
    Scratch s;
    fs::create_directories(s / "outside");
    fs::create_directories(s / "dest");
    fs::create_directory_symlink(s / "outside", s / "dest/trap");
    std::ofstream(s / "outside/target.txt") << "kept";
    fs::create_symlink(s / "outside/target.txt", s / "dest/file.txt");
    WriteStored(s / "a.zip", {{"trap/through.txt", "x"}, {"file.txt", "x"}, {"ok.txt", "x"}});
    Command command(s / "a.zip", s / "dest");
    command.overWriteFlag = 1;
    EXPECT_EQ(command.dunzip(), kUnzipSkipped);
    EXPECT_EQ(Read(s / "dest/ok.txt"), "x");
    EXPECT_FALSE(fs::exists(s / "outside/through.txt"));
    EXPECT_EQ(Read(s / "outside/target.txt"), "kept");
}

// Names as old archivers stored them, in the DOS code page (437): Windows
// names files with characters, so the member goes there as "caf\u00e9.txt"; a
// POSIX name is bytes, which are kept as they were stored. A UTF-8 name is
// the same on both.
TEST(UnzipNames, DiskNamesKeepTheMembersCharactersOrBytes) {
    Scratch s;
    WriteStored(s / "a.zip",
                {{"caf\x82.txt", "dos"}, {"d\xc3\xa9j\xc3\xa0/\xc3\xa9t\xc3\xa9", "utf"}});
    Command command(s / "a.zip", s / "dest");
    ASSERT_EQ(command.dunzip(), 0);
#ifdef _WIN32
    EXPECT_EQ(Read(s / "dest" / fs::path(u8"caf\u00e9.txt")), "dos");
#else
    EXPECT_EQ(Read(s / "dest/caf\x82.txt"), "dos");
#endif
    EXPECT_EQ(Read(s / "dest" / fs::path(u8"d\u00e9j\u00e0/\u00e9t\u00e9")), "utf");
}

#ifdef _WIN32
// Makes `link` a junction to the folder `target`, as mklink /J does.
bool MakeJunction(const fs::path& link, const fs::path& target) {
    const std::wstring substitute = L"\\??\\" + fs::absolute(target).wstring();
    const std::wstring print = fs::absolute(target).wstring();
    // The mount point's reparse data: tag, sizes, then both names, each
    // ending in a null.
    std::vector<WORD> data(8 + substitute.size() + print.size() + 2);
    const WORD substituteBytes = static_cast<WORD>(substitute.size() * sizeof(WCHAR));
    const WORD printBytes = static_cast<WORD>(print.size() * sizeof(WCHAR));
    auto* header = reinterpret_cast<DWORD*>(data.data());
    header[0] = IO_REPARSE_TAG_MOUNT_POINT;
    data[2] = static_cast<WORD>(8 + substituteBytes + printBytes + 2 * sizeof(WCHAR));
    data[4] = 0;
    data[5] = substituteBytes;
    data[6] = static_cast<WORD>(substituteBytes + sizeof(WCHAR));
    data[7] = printBytes;
    std::copy(substitute.begin(), substitute.end(), data.begin() + 8);
    std::copy(print.begin(), print.end(), data.begin() + 8 + substitute.size() + 1);
    if (!CreateDirectoryW(link.c_str(), nullptr)) {
        return false;
    }
    HANDLE folder = CreateFileW(link.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    DWORD returned = 0;
    const bool made =
        folder != INVALID_HANDLE_VALUE &&
        DeviceIoControl(folder, FSCTL_SET_REPARSE_POINT, data.data(),
                        static_cast<DWORD>(8 + data[2]), nullptr, 0, &returned, nullptr);
    if (folder != INVALID_HANDLE_VALUE) {
        CloseHandle(folder);
    }
    return made && (GetFileAttributesW(link.c_str()) & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

TEST(UnzipSafety, AJunctionInTheDestinationIsNotGoneThrough) {
    Scratch s;
    fs::create_directories(s / "outside");
    fs::create_directories(s / "dest");
    ASSERT_TRUE(MakeJunction(s / "dest/trap", s / "outside")) << GetLastError();
    WriteStored(s / "a.zip",
                {{"trap/through.txt", "x"}, {"trap/deeper/more.txt", "x"}, {"ok/good.txt", "x"}});
    Command command(s / "a.zip", s / "dest");
    EXPECT_EQ(command.dunzip(), kUnzipSkipped);
    EXPECT_EQ(Read(s / "dest/ok/good.txt"), "x");
    EXPECT_TRUE(fs::is_empty(s / "outside"));
    RemoveDirectoryW((s / "dest/trap").c_str());
}
#endif

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
    std::string data(200000, '\0');
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<char>((i * 7919) % 50);
    }
    WriteStored(s / "a.zip", {{"f", data}});
    const std::string whole = Read(s / "a.zip");
    std::string bad = whole;
    bad[5000] = static_cast<char>(bad[5000] ^ 0xFF);
    std::ofstream(s / "cut.zip", std::ios::binary) << whole.substr(0, whole.size() / 2);
    std::ofstream(s / "tail.zip", std::ios::binary) << whole.substr(0, whole.size() - 30);
    std::ofstream(s / "bad.zip", std::ios::binary) << bad;
    std::ofstream(s / "empty.zip", std::ios::binary);
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
    constexpr std::uint16_t k2001 = (21 << 9) | (1 << 5) | 1;
    constexpr std::uint32_t kReadOnly = 0x01;
    WriteStored(s / "a.zip", {{"old.txt", "archive", k2001},
                              {"new.txt", "archive", k2001},
                              {"ro.txt", "archive", k2001, 0, kReadOnly}});
    fs::create_directory(s / "d");
    std::ofstream(s / "d/old.txt") << "disk";
    // Older than the members' 2001.
    fs::last_write_time(s / "d/old.txt",
                        fs::file_time_type::clock::now() - std::chrono::hours(24 * 366 * 30));
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
    // A read-only member is read-only on disk, and is overwritten all the
    // same.
    EXPECT_EQ(fs::status(s / "d/ro.txt").permissions() & fs::perms::owner_write, fs::perms::none);
    Command readOnly(s / "a.zip", s / "d", "ro.txt");
    readOnly.overWriteFlag = 1;
    EXPECT_EQ(readOnly.dunzip(), 0);
    fs::permissions(s / "d/ro.txt", fs::perms::owner_write, fs::perm_options::add);
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
    WriteStored(s / "a.zip", {{"dir/a.txt", "a"}, {"dir/b.txt", "b"}, {"dir/c.txt", "c"}});
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
