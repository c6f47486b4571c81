// Our archives as readers we did not write see them: Info-ZIP's unzip and
// zipinfo, 7-Zip, Python's zipfile and libarchive's bsdtar.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "zip_test_support.h"

namespace {

using nvk::ziptest::Python;
using nvk::ziptest::RootedZip;
using nvk::ziptest::Scratch;
using nvk::ziptest::Shell;

std::string Records(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += "ECR;" + std::to_string(100000 + i) + ";411000;VENTE;" +
                std::to_string(i * 7 % 991) + ",50\r\n";
    }
    return text;
}

std::string Noise(std::size_t size) {
    std::mt19937 random(7);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

// Dates and times are given by the rename procedure; the engine must carry
// them to encrypted entries too.
int DatedRename(ZIPRENAMEREC* record, void* root) {
    std::string source = record->szSourcePath;
    std::string prefix = *static_cast<std::string*>(root) + "/";
    std::snprintf(record->szNewName, sizeof(record->szNewName), "%s",
                  source.substr(prefix.size()).c_str());
    record->dosDate = ((2001 - 1980) << 9) | (2 << 5) | 3;
    record->dosTime = (10 << 11) | (20 << 5) | (30 / 2);
    return 0;
}

TEST(ZipReaders, AcceptATreeWithFoldersACommentAndAccentedNames) {
    Scratch scratch;
    scratch.Put("Soc/main.dat", Records(2000));
    scratch.Put("Soc/COMPTA.2012/x.dat", Records(300));
    scratch.Put("Soc/COMPTA.2012/sub/blob.bin", Noise(100000));
    scratch.Put("Soc/\xC3\x89lan.txt", "accent");  // a name this system's programs give
    scratch.Put("Soc/\xC9t\xE9.txt", "accent");    // a name the applications give
    std::string archive = scratch / "out.zip";
    RootedZip command(archive, "\"" + (scratch / "Soc") + "\"", scratch.str());
    command.recurseFlag = 1;
    command.addCommentFlag = 1;
    std::string comment = "Compte \xE9t\xE9";  // Windows-1252, as the callers write
    command.lpszComment = comment.data();
    ASSERT_EQ(command.dzip(), 0);

    EXPECT_EQ(Shell("unzip -t '" + archive + "'").status, 0);
    auto listing = Shell("LC_ALL=C.UTF-8 zipinfo -1 '" + archive + "'");
    EXPECT_EQ(listing.status, 0);
    for (char const* name :
         {"Soc/", "Soc/main.dat", "Soc/COMPTA.2012/", "Soc/COMPTA.2012/x.dat",
          "Soc/COMPTA.2012/sub/blob.bin", "Soc/\xC3\x89lan.txt", "Soc/\xC3\x89t\xC3\xA9.txt"}) {
        EXPECT_NE(listing.text.find(std::string(name) + "\n"), std::string::npos)
            << name << listing.text;
    }
    EXPECT_EQ(Shell("7zz t '" + archive + "'").status, 0);
    auto python = Python(archive, "z.testzip(), z.comment.decode(\"utf-8\"), len(z.namelist())");
    EXPECT_EQ(python.text, "None Compte \xC3\xA9t\xC3\xA9 8\n");
    auto tar = Shell("bsdtar -tf '" + archive + "'");
    EXPECT_EQ(tar.status, 0);
    EXPECT_NE(tar.text.find("Soc/COMPTA.2012/sub/blob.bin"), std::string::npos);
}

TEST(ZipReaders, OpenEncryptedEntriesWithTheirPasswordAndTime) {
    Scratch scratch;
    std::string content = Records(500);
    scratch.Put("d/a.dat", content);
    scratch.Put("d/b.bin", Noise(5000));
    std::string archive = scratch / "secret.zip";
    std::string root = scratch.str();
    EZipCmd command(archive.c_str(), (scratch / "d/*.*").c_str());
    command.lpRenameProc = DatedRename;
    command.lpRenameUserData = &root;
    command.encryptFlag = 1;
    std::string password = "s3cret";
    command.lpszEncryptCode = password.data();
    ASSERT_EQ(command.dzip(), 0);

    EXPECT_EQ(Shell("unzip -P s3cret -t '" + archive + "'").status, 0);
    EXPECT_NE(Shell("unzip -P wrong -t '" + archive + "'").status, 0);
    EXPECT_EQ(Shell("7zz t -ps3cret '" + archive + "'").status, 0);
    auto python = Python(archive,
                         "z.read(\"d/a.dat\", pwd=b\"s3cret\") == open(sys.argv[1][:-10] + "
                         "\"d/a.dat\", \"rb\").read(), z.getinfo(\"d/a.dat\").date_time, "
                         "z.getinfo(\"d/b.bin\").flag_bits & 1");
    EXPECT_EQ(python.text, "True (2001, 2, 3, 10, 20, 30) 1\n");
}

}  // namespace
