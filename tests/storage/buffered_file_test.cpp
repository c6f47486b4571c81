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

// A line read on into the next window writes the window it leaves, and a
// window past the end holds nothing to write.
TEST(BufferedFile, LineReadsKeepWritesAndAddNoBytes) {
    TempPath path("changed.txt");
    WriteText(path.c_str(), std::string(5000, 'a') + "\n");
    EBufferedFile file;
    ASSERT_EQ(1, file.Open(path.c_str(), 3, 1));
    file.SetBufferSize(4096);
    file.Seek(3100, 0);
    ASSERT_EQ(1, file.Write(const_cast<char*>("XY"), 2));
    EXPECT_EQ(5000 - 3102, file.ReadLine(Chaine("\r\n")).Length());
    file.Close();
    std::string written = Text(ReadAll(path.c_str()));
    EXPECT_EQ(5001u, written.size());
    EXPECT_EQ("XY", written.substr(3100, 2));

    TempPath other("lines.txt");
    ASSERT_EQ(1, file.Open(other.c_str(), 19, 0));
    const Chaine crlf("\r\n");
    file.WriteLine(Chaine("abc"), crlf);
    file.WriteLine(Chaine("def"), crlf);
    file.Seek(0, 0);
    EXPECT_STREQ("abc", file.ReadLine(crlf).c_str());
    EXPECT_STREQ("def", file.ReadLine(crlf).c_str());
    EXPECT_STREQ("", file.ReadLine(crlf).c_str());
    file.Close();
    EXPECT_EQ("abc\r\ndef\r\n", Text(ReadAll(other.c_str())));
}

// Copies of an object that holds a window share it, and the last one frees it.
TEST(BufferedFile, CopiesOfAClosedObjectShareItsWindow) {
    EBufferedFile a;
    a.SetBufferSize(8192);
    {
        EBufferedFile b(a);
        EBufferedFile c;
        c = a;
    }
    EBufferedFile d(a);
    a.SetBufferSize(4096);
    TempPath path("copy.txt");
    WriteText(path.c_str(), "line\r\n");
    ASSERT_EQ(1, d.Open(path.c_str(), 3, 1));
    EXPECT_STREQ("line", d.ReadLine(Chaine("\r\n")).c_str());
}

// After Close the object answers as a closed file, whatever it held.
TEST(BufferedFile, ClosedObjectHoldsNothing) {
    TempPath path("closed.txt");
    EBufferedFile file;
    ASSERT_EQ(1, file.Open(path.c_str(), 19, 0));
    file.WriteLine(Chaine("hello"), Chaine("\r\n"));
    file.Close();
    EXPECT_EQ(0u, file.Taille());
    EXPECT_EQ(0u, file.Seek(0, 0));
    char buffer[4] = {};
    EXPECT_EQ(0, file.Read(buffer, 2));
    EXPECT_STREQ("", file.ReadLine(Chaine("\r\n")).c_str());
    file.Seek(0, 0);
    EXPECT_EQ(0, file.Write(const_cast<char*>("x"), 1));
    EXPECT_EQ(0u, file.Taille());
    ASSERT_EQ(1, file.Open(path.c_str(), 3, 1));
    EXPECT_STREQ("hello", file.ReadLine(Chaine("\r\n")).c_str());
    file.Close();
    EXPECT_EQ("hello\r\n", Text(ReadAll(path.c_str())));
}

}  // namespace
}  // namespace nvk::test
