#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "nvk/storage/buffered_file.h"
#include "storage_support.h"

namespace nvk::test {
namespace {

void WriteText(const char* path, const std::string& text) {
    WriteAll(path, std::vector<char>(text.begin(), text.end()));
}

std::string Text(const std::vector<char>& bytes) {
    return std::string(bytes.begin(), bytes.end());
}

TEST(BufferedFile, ReadsLinesAcrossWindows) {
    TempPath path("lines.txt");
    // A "\r\n" cut by the end of the first 4096-byte window, then lines ended
    // by "\n", "\r" and "\n\r", and a last "\r" that ends the file.
    std::string first(4095, 'a');
    WriteText(path.c_str(), first + "\r\nsecond\nthird\rfourth\n\rfifth\r");
    EBufferedFile file;
    ASSERT_EQ(1, file.Open(path.c_str(), 3, 1));
    file.SetBufferSize(1);
    const Chaine crlf("\r\n");
    EXPECT_EQ(4095, file.ReadLine(crlf).Length());
    EXPECT_EQ(4097u, file.GetPosition());
    EXPECT_STREQ("second", file.ReadLine(crlf).c_str());
    EXPECT_STREQ("third", file.ReadLine(crlf).c_str());
    EXPECT_STREQ("fourth", file.ReadLine(crlf).c_str());
    EXPECT_STREQ("", file.ReadLine(crlf).c_str());  // the "\r" of "\n\r"
    EXPECT_STREQ("fifth", file.ReadLine(crlf).c_str());
    EXPECT_EQ(file.Taille(), file.GetPosition());
    EXPECT_STREQ("", file.ReadLine(crlf).c_str());
    // Any other separator is matched whole.
    file.Seek(0, 0);
    file.Seek(4097, 0);
    EXPECT_STREQ("second\nthird\rfourth\n\rfifth\r", file.ReadLine(Chaine("::")).c_str());
}

TEST(BufferedFile, WritesThroughTheWindowAndStraight) {
    TempPath path("out.bin");
    EBufferedFile file;
    ASSERT_EQ(1, file.Open(path.c_str(), 19, 0));
    // The first transfer goes out straight, and still reports the failure
    // noted at construction.
    std::vector<char> block(16384, 'x');
    EXPECT_EQ(0, file.Write(block.data(), block.size()));
    EXPECT_EQ(1, file.WriteLine(Chaine("line"), Chaine("\r\n")));
    EXPECT_EQ(16390u, file.Taille());
    EXPECT_EQ(16390u, file.Seek(0, 2));
    char byte = 0;
    EXPECT_EQ(0, file.Read(&byte, 1));
    EXPECT_EQ(1, file.Write(const_cast<char*>("!"), 1));
    EXPECT_EQ(16390u, file.Seek(1, 2));  // whence 2 counts back from the end
    file.Close();
    const std::string written = Text(ReadAll(path.c_str()));
    EXPECT_EQ(16391u, written.size());
    EXPECT_EQ("line\r\n!", written.substr(16384));
}

TEST(BufferedFile, AppendOnlyFollowsTheContentAtOpen) {
    TempPath path("log.txt");
    WriteText(path.c_str(), "old\r\n");
    EBufferedFile file;
    ASSERT_EQ(1, file.Open(path.c_str(), 2, 0));
    char buffer[4] = {};
    EXPECT_EQ(0, file.Read(buffer, 2));
    EXPECT_STREQ("", file.ReadLine(Chaine("\r\n")).c_str());
    file.Seek(0, 0);
    EXPECT_EQ(1, file.WriteLine(Chaine("new"), Chaine("\r\n")));
    file.Flush();
    EXPECT_EQ(10u, file.Taille());
    file.Close();
    EXPECT_EQ("old\r\nnew\r\n", Text(ReadAll(path.c_str())));
}

TEST(BufferedFile, NeverOpenedReadsNothing) {
    EBufferedFile file;
    char byte = 0;
    EXPECT_EQ(0, file.Read(&byte, 1));
    EXPECT_EQ(1, file.Read(&byte, 0));
    EXPECT_EQ(0u, file.Taille());
    file.SetBufferSize(4097);
    EXPECT_STREQ("", file.ReadLine(Chaine("\r\n")).c_str());
}

}  // namespace
}  // namespace nvk::test
